#include "tests/apps/CommandRig.h"

// What is wrong with a command is told with the argument and with what would be right, and nothing is left.

namespace corvane::rig {
namespace {

class Refusal : public CommandLineTest {
 protected:
  Refusal() { write("in.wav", {48000, {noise(1000)}}); }

  void expectRefused(const std::vector<std::string>& more, int code, const std::string& message) {
    const auto before = names();
    const Answer answer = render("in.wav", "out.wav", more);
    EXPECT_EQ(answer.code, code) << message;
    EXPECT_EQ(answer.err, "error: " + message + "\n");
    EXPECT_EQ(answer.out, "");
    EXPECT_EQ(names(), before) << message;
  }
};

TEST_F(Refusal, OfAWordThatIsNoCommandNamesTheCommands) {
  const Answer answer = run({"frobnicate", "in.wav"});
  EXPECT_EQ(answer.code, 2);
  EXPECT_TRUE(answer.err.starts_with("error: no command \"frobnicate\"; there are render, params"))
      << answer.err;
}

TEST_F(Refusal, SendsToAHelpThatShowsHowItIsDone) {
  const Answer answer = run({"frobnicate"});
  const std::string names = answer.err.substr(answer.err.find("there are ") + 10);
  std::istringstream list(names);
  int commands = 0;
  for (std::string name; std::getline(list >> std::ws, name, ',');) {
    name = name.substr(0, name.find('\n'));
    const Answer help = run({name, "--help"});
    EXPECT_EQ(help.code, 0) << name;
    const auto examples = help.out.find("Examples:\n");
    EXPECT_NE(examples, std::string::npos) << name;
    EXPECT_NE(help.out.find("corvane " + name, examples), std::string::npos) << name;
    ++commands;
  }
  EXPECT_GE(commands, 7);
}

TEST_F(Refusal, OfAnArgumentNamesItAndTheWayOut) {
  expectRefused({"--set", "Lim:Ceilling=-20"}, 2,
                "--set Lim:Ceilling=-20: no parameter \"Lim:Ceilling\"; nearest: Lim:Ceiling");
  expectRefused({"--set", "Lim:Ceiling=-60"}, 2, "--set Lim:Ceiling=-60: outside -40.0 to 10.0 dB");
  expectRefused({"--set", "Lim:Ceiling=loud"}, 2,
                "--set Lim:Ceiling=loud: \"loud\" is no value; must be -40.0 to 10.0 dB");
  expectRefused({"--set", "Lim:Type=Wall"}, 2,
                "--set Lim:Type=Wall: \"Wall\" is none of: -, Opto Lim, VCA Lim, BrickWall, Saturator");
  expectRefused({"--set", "Mstr:Position=J"}, 2, "--set Mstr:Position=J: \"J\" is no value; must be A to I");
  expectRefused({"--set", "Lim:Ceiling"}, 2, "--set Lim:Ceiling: must be NAME=TEXT");
  expectRefused({"--set", "qwxz=1"}, 2, "--set qwxz=1: no parameter \"qwxz\"; `corvane params` lists all");
  expectRefused({"--raw", "Lim:Ceiling=1.001"}, 2, "--raw Lim:Ceiling=1.001: outside 0 to 1");
  expectRefused({"--raw", "Lim:Ceiling=nan"}, 2, "--raw Lim:Ceiling=nan: \"nan\" is not a number");
  expectRefused({"--raw", "377=0"}, 2, "--raw 377=0: 377 is the meter Comp:GRMeter, not a parameter");
  expectRefused({"--raw", "comp:grmeter=0"}, 2,
                "--raw comp:grmeter=0: Comp:GRMeter is a meter, not a parameter");
  expectRefused({"--raw", "7=0"}, 2, "--raw 7=0: no parameter has the id 7; `corvane params` lists all");
  expectRefused({"--bypass", "2:1"}, 2,
                "--bypass 2:1: must be FROM or FROM:TO in seconds, FROM 0 or more and TO later");
  expectRefused({"--format", "mp3"}, 2, "--format mp3: must be float, pcm16, pcm24 or flac");
  expectRefused({"--block", "0"}, 2,
                "--block: \"0\" is not a number from 1 to 65536; see `corvane render --help`");
  expectRefused({"--picture", "p.jpg"}, 2, "a picture's name must end in .png or .svg, not \"p.jpg\"");
  const std::string form = "must be WIDTHxHEIGHT, each 480 to 8192 pixels";
  for (const char* size : {"960", "960x", "x600", "960x479", "8193x4000", "960x600.5", "960x600x2"})
    expectRefused({"--picture", "p.png", "--picture-size", size}, 2,
                  std::string("--picture-size ") + size + ": " + form);
  expectRefused({"--picture", "p.png", "--picture-size", "1201x480"}, 2,
                "--picture-size 1201x480: must not be flatter than 2.5:1 nor taller than 1:2");
}

TEST_F(Refusal, ListsTheNearestNamesFirstOfTheSameGroupThenOfOthers) {
  const Answer typo = render("in.wav", "out.wav", {"--set", "Comp:Treshold=-20"});
  EXPECT_NE(typo.err.find("nearest: Comp:Threshold, Gate:Threshold"), std::string::npos) << typo.err;
  const Answer shortened = render("in.wav", "out.wav", {"--set", "Comp:Tresh=-20"});
  EXPECT_NE(shortened.err.find("nearest: Comp:Threshold, Gate:Threshold"), std::string::npos)
      << shortened.err;
  const Answer bare = render("in.wav", "out.wav", {"--set", "ceiling=-20"});
  EXPECT_NE(bare.err.find("nearest: Lim:Ceiling"), std::string::npos) << bare.err;
}

TEST_F(Refusal, OfAFileTellsWhichAndWhy) {
  write("slow.wav", {44100, {noise(1000)}});
  write("three.wav", {48000, {noise(9), noise(9), noise(9)}});
  writeBytes("text.wav", "this is no sound at all");
  writeBytes("empty.wav", "");
  expectRefused({"--key", at("slow.wav")}, 1,
                "--key " + at("slow.wav") + ": 44100 Hz, must be the 48000 Hz of " + at("in.wav"));
  expectRefused({"--key", at("three.wav")}, 1,
                "--key " + at("three.wav") + ": 3 channels, must be 1 or the 1 of " + at("in.wav"));
  expectRefused({"--automation", at("none.csv")}, 1,
                "cannot read " + at("none.csv") + ": No such file or directory");
  for (const char* broken : {"text.wav", "empty.wav"}) {
    const Answer answer = render(broken, "out.wav");
    EXPECT_EQ(answer.code, 1);
    EXPECT_TRUE(answer.err.starts_with("error: cannot read " + at(broken) + ": not a readable audio file"))
        << answer.err;
  }
  EXPECT_EQ(render(".", "out.wav").err, "error: cannot read " + at(".") + ": it is a folder\n");
  EXPECT_EQ(render("gone.wav", "out.wav").err,
            "error: cannot read " + at("gone.wav") + ": No such file or directory\n");
  EXPECT_EQ(render("in.wav", "no/folder/out.wav").err,
            "error: cannot write " + at("no/folder/out.wav") + ": No such file or directory\n");
  EXPECT_EQ(render("in.wav", ".").code, 1);
  EXPECT_EQ(run({"render", at("in.wav"), "-o", "/dev/null"}).err,
            "error: cannot write /dev/null: it is not a regular file\n");
  EXPECT_FALSE(fs::exists(at("out.wav")));
}

TEST_F(Refusal, OfAutomationNamesFileAndLine) {
  const std::pair<const char*, const char*> faults[] = {
      {"0.1,Lim:Ceiling\n", ":1: \"0.1,Lim:Ceiling\" is not a row of seconds,name-or-id,normalised"},
      {"0,0,1\n\n-1,Lim:Ceiling,0\n", ":3: \"-1\" is not a time in seconds, 0 or more"},
      {"seconds,id,value\n0,Lim:Ceiling,1.5\n", ":2: \"1.5\" is not a normalised value, 0 to 1"},
      {"0,Lim:Ceilling,0.5\n", ":1: no parameter \"Lim:Ceilling\"; nearest: Lim:Ceiling"},
  };
  for (const auto& [content, message] : faults) {
    writeBytes("a.csv", content);
    expectRefused({"--automation", at("a.csv")}, 1, at("a.csv") + message);
  }
}

TEST_F(Refusal, OfSeveralInputsThatWouldMeetInOneOutput) {
  fs::create_directory(folder / "other");
  write("other/in.wav", {48000, {noise(10)}});
  const std::string both = at("in.wav"), other = at("other/in.wav");
  EXPECT_EQ(run({"render", both, other, "-o", at("out.wav")}).err,
            "error: -o " + at("out.wav") + ": takes one input, 2 are given; use --out-dir\n");
  EXPECT_EQ(run({"render", both, other, "--out-dir", at("new")}).err,
            "error: --out-dir " + at("new") + ": " + both + " and " + other + " would both become in.wav\n");
  EXPECT_FALSE(fs::exists(at("new")));
  EXPECT_EQ(run({"render", both, "--out-dir", folder.string()}).code, 2) << "would replace its own input";
  EXPECT_EQ(run({"render", both}).err, "error: render needs one of -o FILE and --out-dir FOLDER\n");
  EXPECT_EQ(run({}).code, 2);
  EXPECT_EQ(run({"render", "--help"}).code, 0);
}

TEST_F(Refusal, OfTwoOutputsUnderOneName) {
  const std::string again = (folder / "." / "out.wav").string();
  expectRefused({"--meter-log", again}, 2, "--meter-log " + again + ": -o writes this file as well");
  expectRefused({"--save-preset", at("a"), "--save-state", at("a.qdx")}, 2,
                "--save-state " + at("a.qdx") + ": --save-preset writes this file as well");
}

TEST_F(Refusal, OfOneFileOfManyLeavesTheOthersRendered) {
  writeBytes("bad.wav", "nothing");
  write("more.wav", {48000, {noise(100)}});
  const Answer answer =
      run({"render", at("in.wav"), at("bad.wav"), at("more.wav"), "--out-dir", at("done"), "--jobs", "2"});
  EXPECT_EQ(answer.code, 1);
  EXPECT_TRUE(fs::exists(at("done/in.wav")));
  EXPECT_FALSE(fs::exists(at("done/bad.wav")));
  EXPECT_TRUE(fs::exists(at("done/more.wav")));
}

}  // namespace
}  // namespace corvane::rig
