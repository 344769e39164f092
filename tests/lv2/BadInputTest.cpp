#include <limits>
#include <random>

#include "tests/lv2/Settings.h"

// What comes from a broken cable, a wrong plug-in before us or a full-scale accident.

namespace corvane::lv2 {
namespace {

constexpr float kNan = std::numeric_limits<float>::quiet_NaN(),
                kInfinity = std::numeric_limits<float>::infinity(), kMost = std::numeric_limits<float>::max();
constexpr double kRateHz = 22050.0;  // what takes a second takes few samples
// after one second the saturator still knows at -75 dB
constexpr std::size_t kPauseFrames = 2 * 22050;
constexpr float kVcaClamper = 3.0f;
constexpr int kInsertOpto = 49, kFirstInsertGate = 33;

class Lv2BadInput : public ::testing::Test {
 protected:
  /// `each` by index, for 90 ms.
  template <typename Sample>
  static Floats storm(Sample each) {
    Floats x;
    for (int n = 0; n < 2000; ++n) x.push_back(each(n));
    return x;
  }
  /// What the strip makes of a programme that comes two seconds after `before`; `before` on the key as well.
  Floats soundAfter(std::size_t round, const Floats& before, bool anew = false) {
    RawStrip strip(binary, kRateHz, true);
    fillRackUncoloured(strip, round);
    releaseAtOnce(strip);
    rest(strip);
    for (const float y : strip.render(before, 512, before.data())) {
      EXPECT_TRUE(std::isfinite(y)) << "round " << round;
      if (!std::isfinite(y)) break;
    }
    const Floats pause(kPauseFrames, 0.0f);
    strip.render(pause, 512, pause.data());
    if (anew) rest(strip);
    return strip.render(programme(4410));
  }
  /// Releases at their shortest, and no opto or FET circuit, which take their time at any setting.
  static void releaseAtOnce(RawStrip& strip) {
    strip.control("comp_type") = kVcaClamper;
    for (const char* insert : {"insx", "insy"}) {
      const float type = strip.control(insert + std::string("_type"));
      if (type == kInsertOpto || type == kInsertOpto + 1) fillInsert(strip, insert, kInsertOpto + 2);
      if (type >= kFirstInsertGate && type < kInsertOpto + 16)
        strip.control(insert + std::string("_prm02")) = 0.0f;
    }
    for (const char* release : {"gate_release", "comp_release", "lim_release"}) strip.control(release) = 0.0f;
  }
  Binary binary;
};

TEST_F(Lv2BadInput, SamplesThatAreNoNumbersAreSilence) {
  const Floats broken = storm([](int n) { return n % 3 == 0 ? kNan : n % 3 == 1 ? kInfinity : -kInfinity; });
  const Floats silence(broken.size(), 0.0f);
  for (std::size_t round = 0; round < kRounds; round += 2)
    EXPECT_EQ(soundAfter(round, broken), soundAfter(round, silence)) << "round " << round;
}

TEST_F(Lv2BadInput, IsForgottenWithinTwoSeconds) {
  const Floats loudest = storm([](int n) { return n < 1000 || n % 2 == 0 ? kMost : -kMost; }),
               full = storm([](int n) { return n < 1000 || n / 50 % 2 == 0 ? 1.0f : -1.0f; }),
               tiny = storm([](int) { return 1e-40f; });
  for (std::size_t round = 0; round < kRounds; round += 3) {
    const Floats expected = soundAfter(round, Floats(full.size(), 0.0f));
    for (const Floats* before : {&full, &tiny})
      EXPECT_LE(difference(soundAfter(round, *before), expected), 1e-6f)  // -120 dB
          << "round " << round << " after " << before->front();
    EXPECT_EQ(soundAfter(round, loudest, true), soundAfter(round, full, true)) << "an activation forgets all";
  }
}

TEST_F(Lv2BadInput, AnyKnobOnAnyStormStaysFinite) {
  std::mt19937 dice(11);
  RawStrip strip(binary, kRateHz, true);
  const float odd[] = {kNan, kInfinity, -kInfinity, 1e30f, -1e30f, 1e-40f, 0.37f};
  const float samples[] = {kNan, kInfinity, kMost, -kMost, 1e-40f, 1.0f, -1.0f, 0.1f};
  for (int call = 0; call < 3000; ++call) {
    const std::size_t k = dice() % strip.controls.size();
    const Scale& scale = strip.all.controls[k].scale;
    const float ofItsOwn[] = {scale.lowest, scale.highest, scale.standard};
    strip.controls[k] = dice() % 2 == 0 ? ofItsOwn[dice() % 3] : odd[dice() % std::size(odd)];
    Floats x(dice() % 70), y(x.size());
    for (float& sample : x) sample = samples[dice() % std::size(samples)];
    strip.connect(x.data(), y.data(), x.data());
    strip.run(static_cast<std::uint32_t>(x.size()));
    for (std::size_t n = 0; n < y.size(); ++n) ASSERT_TRUE(std::isfinite(y[n])) << "call " << call;
  }
}

}  // namespace
}  // namespace corvane::lv2
