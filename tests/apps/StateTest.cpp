#include "control/FactoryBank.h"
#include "core/ParameterBank.h"
#include "corvane/Presets.h"
#include "corvane/StateFile.h"
#include "corvane/StripRunner.h"
#include "tests/apps/CommandRig.h"

// A session that was stored must come back as it was, or be refused as a whole.

namespace corvane::rig {
namespace {

constexpr int kPreMonitor = 21, kCompType = 112, kCompMonitor = 117, kThreshold = 130, kUnusedInsX = 300;

struct State : CommandLineTest {
  State() { write("in.wav", {48000, {noise(5000)}}); }

  /// The program in a process of its own, so that its strip is always the same unit.
  int program(const std::string& output, const std::string& more) const {
    return WEXITSTATUS(shell(std::string(CORVANE_PROGRAM) + " render -q '" + at("in.wav") + "' -o '" +
                             at(output) + "' " + more + " 2> '" + at("err") + "'"));
  }
};

TEST_F(State, BringsBackTheSoundAndItself) {
  const std::string more =
      "--preset 5 --set 'InsX:Type=De-esser' --set InsX:Position=A --set Comp:Threshold=-31.3 "
      "--raw Comp:Ratio=0.123456789 --raw Comp:Monitor=1 --save-state '" +
      at("a.state") + "'";
  ASSERT_EQ(program("a.wav", more), 0) << bytes("err");
  ASSERT_EQ(program("b.wav", "--state '" + at("a.state") + "' --save-state '" + at("b.state") + "'"), 0)
      << bytes("err");
  EXPECT_EQ(bytes("a.wav"), bytes("b.wav"));
  EXPECT_EQ(bytes("a.state"), bytes("b.state"));
  EXPECT_EQ(bytes("a.state").size(), 56U + 19217U) << "the header of the chunk and its data";
  ASSERT_EQ(program("c.wav", "--state '" + at("a.state") + "' --raw Comp:Monitor=0"), 0);
  EXPECT_NE(bytes("a.wav"), bytes("c.wav")) << "the monitor was on";
}

TEST_F(State, HoldsWhatNobodyHears) {
  cli::StripRunner strip;
  cli::Setting setting = strip.setting();
  setting.store(kCompMonitor, 1.0), setting.store(kPreMonitor, 1.0);  // two monitors: no rule asked
  setting.store(kCompType, 3 / 15.0), setting.store(kUnusedInsX, 0.7);
  strip.load(setting, "By hand");
  cli::StripRunner other;
  other.restore(strip.state());
  other.automate(kThreshold, 0.9);
  other.restore(strip.state());
  const cli::Setting back = other.setting();
  for (int id = 0; id < kParameters; ++id)
    EXPECT_EQ(static_cast<float>(back.value(id)), static_cast<float>(setting.value(id))) << id;
  EXPECT_EQ(other.state().data, strip.state().data);
}

TEST_F(State, OfEveryFactoryPresetIsThePreset) {
  cli::StripRunner strip;
  for (int index = 0; index < kFactoryPlaces; ++index) {
    const cli::LoadedPreset preset = cli::loadPreset(std::to_string(index));
    strip.load(preset.setting, preset.listed.name);
    const cli::Setting held = strip.setting();
    for (int id = 0; id < kParameters; ++id) {
      if ((parameterKind(id) & kKindAnnounced) == 0) continue;
      ASSERT_EQ(static_cast<float>(held.value(id)), static_cast<float>(preset.setting.value(id)))
          << preset.listed.name << ", id " << id;
    }
  }
}

TEST_F(State, ThatIsNoneIsRefusedAndNothingIsWritten) {
  cli::StripRunner strip;
  cli::writeState(at("good"), strip.state());
  const std::string good = bytes("good");
  const auto refusal = [&](const std::string& content) {
    writeBytes("bad", content);
    const auto before = names();
    const Answer answer = render("in.wav", "out.wav", {"--state", at("bad"), "--save-state", at("new")});
    EXPECT_EQ(answer.code, 1) << content.size() << " bytes";
    EXPECT_EQ(names(), before);
    return answer.err;
  };
  const std::string start = "error: --state " + at("bad") + ": ";
  const std::string cut = start + "no stored state, or one cut short; nothing was changed\n";
  for (const std::size_t length : {0U, 1U, 55U, 56U, 57U, 1000U, 19000U, 19272U})
    EXPECT_EQ(refusal(good.substr(0, length)), cut) << length;
  EXPECT_EQ(refusal(good + "x"), cut);
  EXPECT_EQ(refusal(std::string(1 << 20, '\xff')), cut);

  std::string other = good;
  other[8 + 4] = 'X';  // the product, last letter first
  EXPECT_EQ(refusal(other),
            start +
                "holds the chunk \"All \" of a plug-in \"QcMX\", must be \"All \" of \"QcMN\"; "
                "nothing was changed\n");
  std::string broken = good;
  broken.replace(56 + 273 + 168 + 24, 4, "\xff\xff\x7f\x7f");  // the first value of the first preset
  EXPECT_EQ(refusal(broken), start + "the plug-in does not take this state; nothing was changed\n");
  EXPECT_EQ(render("in.wav", "out.wav", {"--state", at("none")}).err,
            "error: --state " + at("none") + ": cannot be read: No such file or directory\n");
  EXPECT_EQ(render("in.wav", "out.wav", {"--state", at("good"), "--preset", "5"}).code, 2) << "two starts";
  EXPECT_FALSE(fs::exists(at("out.wav")));
}

}  // namespace
}  // namespace corvane::rig
