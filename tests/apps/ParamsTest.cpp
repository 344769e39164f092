#include <cmath>
#include <nlohmann/json.hpp>

#include "core/ParameterBank.h"
#include "corvane/ParameterNames.h"
#include "corvane/Words.h"
#include "tests/apps/CommandRig.h"

namespace corvane::rig {
namespace {

using Params = CommandLineTest;

TEST_F(Params, ListEveryHostParameterOnce) {
  const auto list = nlohmann::json::parse(run({"params", "--json"}).out);
  std::vector<int> expected;
  for (int id = 0; id < kParameters; ++id)
    if (parameterKind(id) & kKindAnnounced) expected.push_back(id);
  std::vector<int> ids;
  for (const auto& entry : list) ids.push_back(entry.at("id"));
  EXPECT_EQ(ids, expected);
  const Answer filtered = run({"params", "lim:CEIL"});
  EXPECT_NE(filtered.out.find("210  Lim:Ceiling"), std::string::npos);
  EXPECT_EQ(std::count(filtered.out.begin(), filtered.out.end(), '\n'), 2) << "headings and one row";
  EXPECT_EQ(run({"params", "nosuchthing"}).code, 1);
}

TEST_F(Params, TextAndParseAreEachOthersInverse) {
  for (const char* value : {"0", "0.25", "0.5", "1"}) {
    const std::string shown = run({"params", "--text", std::string("Lim:Ceiling=") + value}).out;
    const Answer parsed = run({"params", "--parse", "210=" + shown.substr(0, shown.size() - 1)});
    EXPECT_EQ(parsed.out, std::string(value) + "\n") << shown;
  }
  EXPECT_EQ(run({"params", "--parse", "Lim:Ceiling=11"}).err,
            "error: --parse Lim:Ceiling=11: outside -40.0 to 10.0 dB\n");
  EXPECT_EQ(run({"params", "--text", "Lim:Ceiling=1.5"}).code, 2);
}

TEST_F(Params, OfAnInsertGoByTheWordsOfItsModule) {
  const Answer answer =
      run({"params", "--insert", "BrickWall", "--parse", "InsX:Ceiling=-15", "--parse", "274=-15"});
  EXPECT_EQ(answer.out, "0.5\n0.5\n") << answer.err;
  EXPECT_EQ(run({"params", "--parse", "InsX:Ceiling=-15"}).code, 2) << "no module, no words";
}

// Presets

using Presets = CommandLineTest;

TEST_F(Presets, ListTheWholeFactoryBankAndItsGroups) {
  const auto all = nlohmann::json::parse(run({"presets", "--json"}).out);
  EXPECT_EQ(all.size(), 235U);
  const auto vocals = nlohmann::json::parse(run({"presets", "--json", "--category", "vocals"}).out);
  EXPECT_GT(vocals.size(), 5U);
  for (const auto& preset : vocals) EXPECT_EQ(preset.at("category"), "Vocals");
  EXPECT_EQ(run({"presets", "--category", "Vokals"}).code, 2);
}

TEST_F(Presets, AreShownInTheOrderOfTheSound) {
  write("in.wav", {48000, {noise(100)}});
  ASSERT_EQ(render("in.wav", "out.wav",
                   {"--set", "InsX:Type=BrickWall", "--set", "InsX:Ceiling=-15", "--set", "InsX:Position=A",
                    "--set", "EQ:Mute=on", "--save-preset", at("mine")})
                .code,
            0);
  const auto shown = nlohmann::json::parse(run({"show", "--json", at("mine.qdx")}).out);
  EXPECT_EQ(shown.at("name"), "mine");
  const auto& chain = shown.at("chain");
  EXPECT_EQ(chain.at(0).at("module"), "BrickWall");
  EXPECT_EQ(chain.at(1).at("place"), "Pre") << "moved to B by the limiter";
  EXPECT_EQ(chain.at(1).at("position"), "B");
  for (const auto& module : chain)
    EXPECT_EQ(module.at("switches").size(), module.at("place") == "EQ" ? 1U : 0U);
}

TEST_F(Presets, BringBackTheSoundTheyWereSavedFrom) {
  // each run is a process of its own: its strips are then the same units
  write("in.wav", {48000, {noise(20000)}});
  const std::string program = std::string(CORVANE_PROGRAM) + " render -q '" + at("in.wav") + "' -o '";
  ASSERT_EQ(
      shell(program + at("a.wav") + "' --preset 5 --set Pre:Gain=6 --save-preset '" + at("p.qdx") + "'"), 0);
  ASSERT_EQ(shell(program + at("b.wav") + "' --preset '" + at("p.qdx") + "'"), 0);
  EXPECT_EQ(bytes("a.wav"), bytes("b.wav"));
}

TEST_F(Presets, ThatCannotBeFoundOrReadAreRefusedWhole) {
  write("in.wav", {48000, {noise(100)}});
  writeBytes("broken.qdx", "no preset");
  EXPECT_EQ(render("in.wav", "out.wav", {"--preset", at("broken.qdx")}).code, 1);
  EXPECT_EQ(render("in.wav", "out.wav", {"--preset", "235"}).err,
            "error: --preset 235: no preset 235; the factory bank has 0 to 234\n");
  const Answer typo = render("in.wav", "out.wav", {"--preset", "Drum Init"});
  EXPECT_EQ(typo.code, 2);
  EXPECT_NE(typo.err.find("nearest: Drums Init"), std::string::npos) << typo.err;
  EXPECT_FALSE(fs::exists(at("out.wav")));
}

TEST_F(Presets, OfOneNameAreToldApartByIndexAndFile) {
  write("in.wav", {48000, {noise(100)}});
  const fs::path own = fs::path(std::getenv("HOME")) / "Documents/Quadrexa/User Presets/QDX Corvane";
  fs::create_directories(own);
  const std::string file = (own / "Drums Init.qdx").string();
  ASSERT_EQ(render("in.wav", "out.wav", {"--set", "Mstr:Type=Master Control", "--save-preset", file}).code,
            0);
  const auto factory = nlohmann::json::parse(run({"show", "--json", "2"}).out);
  ASSERT_EQ(factory.at("name"), "Drums Init");
  EXPECT_EQ(run({"show", "drums init"}).err,
            "error: several presets have the name \"drums init\": 2, " + file + "\n");
  EXPECT_EQ(render("in.wav", "two.wav", {"--preset", "Drums Init"}).code, 2);
  EXPECT_FALSE(fs::exists(at("two.wav")));
  EXPECT_EQ(nlohmann::json::parse(run({"show", "--json", file}).out).at("file"), file);
  EXPECT_EQ(render("in.wav", "two.wav", {"--preset", "2"}).code, 0);
  fs::remove(file);
  EXPECT_EQ(render("in.wav", "two.wav", {"--preset", "Drums Init"}).code, 0);
}

TEST(Words, DistanceCountsLettersWhateverTheirCase) {
  EXPECT_EQ(cli::editDistance("Treshold", "threshold"), 1U);
  EXPECT_EQ(cli::editDistance("", "abc"), 3U);
  EXPECT_EQ(cli::editDistance("kitten", "sitting"), 3U);
}

TEST(Words, NumbersAreWholeTextsAndFinite) {
  EXPECT_EQ(cli::numberOf("+2.5"), 2.5);
  EXPECT_EQ(cli::numberOf("1e-3"), 1e-3);
  for (const char* text : {"", " 1", "1 ", "1,5", "0x10", "inf", "nan", "+-1", "1e999"})
    EXPECT_FALSE(cli::numberOf(text)) << text;
}

TEST(Words, BrokenUtf8IsReplacedByteByByte) {
  EXPECT_EQ(cli::validUtf8("a\xc3\xa9\xe2\x82\xac"), "a\xc3\xa9\xe2\x82\xac");
  const std::string mark = "\xef\xbf\xbd";
  EXPECT_EQ(cli::validUtf8("\xff"
                           "a\xc3"),
            mark + "a" + mark);
  EXPECT_EQ(cli::validUtf8("\xc0\xaf\xed\xa0\x80"), mark + mark + mark + mark + mark);
}

}  // namespace
}  // namespace corvane::rig
