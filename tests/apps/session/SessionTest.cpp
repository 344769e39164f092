#include <gtest/gtest.h>

#include <fstream>

#include "corvane/session/Commands.h"
#include "corvane/session/SessionCommand.h"
#include "tests/apps/CommandRig.h"

// Scripts with the answers that a person must get.

namespace corvane::rig {
namespace {

struct Step {
  std::string command, answer;
};
using Steps = std::vector<Step>;

class Session : public CommandLineTest {
 protected:
  /// Every step gets its answer.
  void expectAnswers(const Steps& steps) const {
    std::string script;
    for (const Step& step : steps) script += step.command + "\n";
    const std::vector<std::string> answers = answersTo(script);
    ASSERT_EQ(answers.size(), steps.size());
    for (std::size_t k = 0; k < steps.size(); ++k)
      EXPECT_EQ(answers[k], steps[k].answer) << "line " << k + 1 << ": " << steps[k].command;
  }
  std::vector<std::string> answersTo(const std::string& script,
                                     const std::vector<std::string>& options = {}) const {
    writeBytes("script", script);
    std::vector<std::string> arguments{"session", at("script")};
    arguments.insert(arguments.end(), options.begin(), options.end());
    const Answer answer = run(arguments);
    EXPECT_EQ(answer.err, "");
    std::istringstream lines(answer.out);
    std::vector<std::string> answers;
    for (std::string line; std::getline(lines, line);) answers.push_back(line);
    return answers;
  }
  /// What `run` tells of noise behind these commands. The plain gain: colours differ from unit to unit.
  std::string soundOf(const std::string& commands) const {
    if (!fs::exists(at("in.wav"))) write("in.wav", {48000, {noise(24000)}});
    const std::string script = "edit Pre:Type Gain\nwait 100\n" + commands + "run 0.5\n";
    return answersTo(script, {"--input", at("in.wav")}).back();
  }
};

TEST_F(Session, AutomationReachesTheSoundAndNeitherStoreNorUndo) {
  EXPECT_EQ(soundOf("set Comp:Threshold 0.25\n"), soundOf("edit Comp:Threshold -27.5\n"))
      << "both roads sound the same";
  EXPECT_NE(soundOf("set Comp:Threshold 0.25\n"), soundOf(""));
  expectAnswers({{"set Comp:Threshold 0.25", "0.25"},
                 {"get Comp:Threshold", "0.25"},
                 {"text Comp:Threshold", "-27.5"},
                 {"stored Comp:Threshold", "0.5"},
                 {"modified", "no"},
                 {"can-undo", "no"}});
}

TEST_F(Session, AnEditIsHeardByStoreAndRules) {
  expectAnswers({{"edit Comp:Threshold -20", "0.4"},
                 {"stored 130", "0.4"},
                 {"modified", "yes"},
                 {"edit Comp:Monitor on", "1"},
                 {"edit EQ:Monitor on", "1"},
                 {"get Comp:Monitor", "0"},
                 {"edit Gate:Position G", "0.75"},
                 {"positions", "Pre Flt Comp EQ Lim Mstr Gate InsX InsY"},
                 {"edit InsX:Type De-esser", "0.44313726"},
                 {"get InsX:Prm01", "0.6367157"},
                 {"text InsX:Type", "De-esser"}});
}

TEST_F(Session, StepsOfUndoComeFromEditsAndFromTheSessionsOwnClock) {
  expectAnswers({{"edit 128 1.0", "0.33333334"},
                 {"wait 50", "ok"},
                 {"edit Comp:Threshold -20", "0.4"},  // the same gesture
                 {"wait 51", "ok"},
                 {"edit Comp:Threshold -30", "0.2"},
                 {"set Comp:Threshold 0.9", "0.9"},
                 {"undo", "Default"},
                 {"get Comp:Threshold", "0.4"},
                 {"can-redo", "yes"},
                 {"undo", "Default"},
                 {"get 128", "0.5"},
                 {"modified", "no"},
                 {"undo", "error: line 13: nothing to take back"},
                 {"redo", "Default"},
                 {"get Comp:Threshold", "0.4"}});
  const auto answers =
      answersTo("edit Comp:Threshold -20\nrun 0.1\nedit Comp:Threshold -30\nundo\nget 130\n");
  EXPECT_EQ(answers.back(), "0.4") << "sound takes time";
}

TEST_F(Session, APresetIsOneStepAndBringsItsOwnValues) {
  expectAnswers({{"preset All \"Vocal Init\"", "Vocal Init"},
                 {"selection", "category:All 184"},
                 {"get InsX:Prm03", "0.5"},
                 {"get InsX:Position", "0.625"},
                 {"modified", "no"},
                 {"edit Comp:Threshold -20", "0.4"},
                 {"modified", "yes"},
                 {"next", "Organ Saturator"},
                 {"previous", "Vocal Init"},
                 {"preset designer:1 0", "Add Grit"},
                 {"undo", "Vocal Init"},
                 {"selection", "category:All 184"},
                 {"preset bass 17", "Bass"},
                 {"next", "Bass"},
                 {"selection", "category:Bass 17"}});
}

TEST_F(Session, MemoriesAndTheClipboardKeepTheirSettings) {
  expectAnswers({{"edit Comp:Threshold -20", "0.4"},
                 {"copy-memory", "ok"},
                 {"memory B", "B"},
                 {"edit Comp:Threshold -30", "0.2"},
                 {"wait 3723000", "ok"},
                 {"copy", "ok"},
                 {"memory A", "A"},
                 {"get Comp:Threshold", "0.4"},
                 {"paste", "clipboard 01:02:03"},
                 {"get Comp:Threshold", "0.2"},
                 {"selection", "category:All -1"},
                 {"memory", "A"}});
  expectAnswers({{"paste", "clipboard 01:02:03"}, {"get Comp:Threshold", "0.2"}});  // another instance
}

TEST_F(Session, FilesCarryASettingAndAState) {
  const std::string preset = at("my own"), state = at("a.state");
  expectAnswers({{"edit Comp:Threshold -20", "0.4"},
                 {"save \"" + preset + "\"", preset + ".qdx"},
                 {"state-save " + state, "19217 bytes"},
                 {"edit Comp:Threshold -30", "0.2"},
                 {"load \"" + preset + ".qdx\"", "Default"},
                 {"get Comp:Threshold", "0.4"},
                 {"edit Comp:Threshold -30", "0.2"},
                 {"copy-memory", "ok"},
                 {"state-load " + state, "Default"},
                 {"get Comp:Threshold", "0.4"},
                 {"memory B", "B"},
                 {"get Comp:Threshold", "0.4"}});  // both memories are what was stored
  EXPECT_EQ(names(), (std::vector<std::string>{"a.state", "my own.qdx", "script"}));
}

TEST_F(Session, AStateThatIsRestoredSoundsTheSame) {
  const std::string edits =
      "edit Comp:Threshold -30\nedit InsX:Type De-esser\nedit Gate:Position A\nedit \"EQ:HI Gain\" 6\n";
  const std::string sound = soundOf(edits + "state-save " + at("a.state") + "\n");
  EXPECT_NE(sound, soundOf(""));
  EXPECT_EQ(soundOf("preset Drums 5\nstate-load " + at("a.state") + "\n"), sound);
}

TEST_F(Session, ARefusedCommandChangesNothingAndTheSessionGoesOn) {
  writeBytes("broken.qdx", "NMcQ");
  writeBytes("broken.state", std::string(300, 'x'));
  const Steps refused{
      {"edit Comp:Treshold -20", "no parameter \"Comp:Treshold\"; nearest: Comp:Threshold, Gate:Threshold"},
      {"edit Comp:Threshold -60", "outside -40.0 to 10.0 dB"},
      {"set Comp:Threshold 1.5", "\"1.5\" is no number from 0 to 1"},
      {"set Comp:Threshold", "set takes ID VALUE"},
      {"get 361", "361 is the meter Pre:InMeter, not a parameter"},
      {"preset Drum 0", "no list \"Drum\"; nearest: Drums"},
      {"preset Drums 111", "no preset 111; there are 0 to 110"},
      {"preset Drums \"HipHop Kick\"", "several of the name \"HipHop Kick\": 13, 24"},
      {"memory C", "\"C\" must be A or B"},
      {"redo", "nothing to make again"},
      {"load " + at("broken.qdx"), at("broken.qdx") + ": too short for a preset; nothing was changed"},
      {"state-load " + at("broken.state"),
       at("broken.state") + ": no stored state, or one cut short; nothing was changed"},
      {"save " + at("no/such/place"),
       at("no/such/place.qdx") + ": cannot be written: No such file or directory"},
      {"run -1", "\"-1\" is no number from 0 to 3600"},
      {"wait 1.5", "\"1.5\" is no whole number"},
      {"bypass maybe", "\"maybe\" must be on or off"},
      {"undoo", "no command \"undoo\"; nearest: undo"},
      {"name \"Default", "a quote is not closed"}};
  Steps steps{{"edit Comp:Threshold -20", "0.4"}, {"state-save " + at("before"), "19217 bytes"}};
  for (const auto& [command, why] : refused)
    steps.push_back({command, "error: line " + std::to_string(steps.size() + 1) + ": " + why});
  steps.push_back({"state-save " + at("after"), "19217 bytes"});
  steps.push_back({"can-redo", "no"});
  expectAnswers(steps);
  EXPECT_EQ(bytes("after"), bytes("before"));
  EXPECT_EQ(names(), (std::vector<std::string>{"after", "before", "broken.qdx", "broken.state", "script"}));
}

TEST_F(Session, TakesCommentsQuotesAndLinesOfAPipe) {
  writeBytes("script", "# a comment\n\n  name   # behind a command\r\n\"name\"\nfoo\\\nname");
  const std::string program = std::string("'") + CORVANE_PROGRAM + "' session ";
  ASSERT_EQ(shell(program + "--echo < '" + at("script") + "' > '" + at("out") + "'"), 1 << 8)
      << "one was refused";
  EXPECT_EQ(bytes("out"),
            "> name   # behind a command\nDefault\n> \"name\"\nDefault\n"
            "> foo\\\nerror: line 5: no command \"foo\\\"; `help` tells all\n> name\nDefault\n");
  EXPECT_EQ(shell("echo name | " + program + "- > '" + at("out") + "'"), 0);
  EXPECT_EQ(bytes("out"), "Default\n");
}

TEST_F(Session, AnswersAtOnceForWhoeverWaits) {
  // each line is sent only after the answer to the one before has come
  const std::string talk = "coproc '" + std::string(CORVANE_PROGRAM) +
                           "' session; for line in name memory; do echo $line >&${COPROC[1]}; "
                           "read -t 20 -u ${COPROC[0]} answer || exit 9; echo $answer; done > '" +
                           at("out") + "'";
  writeBytes("talk.sh", talk);
  EXPECT_EQ(shell("bash '" + at("talk.sh") + "'"), 0);
  EXPECT_EQ(bytes("out"), "Default\nA\n");
}

TEST_F(Session, WrongUseAndMissingFilesAreTold) {
  EXPECT_EQ(run({"session", at("none")}).code, 1);
  EXPECT_EQ(run({"session", at("none")}).err,
            "error: cannot read " + at("none") + ": No such file or directory\n");
  EXPECT_EQ(run({"session", at("")}).code, 1);
  EXPECT_EQ(run({"session", "--rate", "5", at("none")}).code, 2);
  writeBytes("script", "");
  EXPECT_EQ(run({"session", at("script")}).code, 0);
  EXPECT_EQ(run({"session", "--input", at("script"), at("script")}).code, 1);
}

TEST_F(Session, ItsPageTellsEveryCommandAsTheProgramDoes) {
  std::ifstream file(CORVANE_SOURCE_DIR "/docs/session.md");
  const std::string page{std::istreambuf_iterator<char>(file), {}};
  EXPECT_TRUE(page.ends_with(cli::sessionReference())) << "renew its table with `corvane session --markdown`";
  for (const auto& command : cli::session::commands())
    EXPECT_NE(run({"session", "--help"}).out.find("  " + command.usage() + " "), std::string::npos)
        << command.name;
}

}  // namespace
}  // namespace corvane::rig
