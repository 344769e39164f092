#include <gtest/gtest.h>

#include <string>

#include "modules/tidalform/StripEffectTidalform.h"
#include "modules/tidalform/TidalformFamily.h"
#include "modules/tidalform/TidalformTable.h"
#include "tests/modules/tidalform/PlainTidalform.h"
#include "tests/rig/ModuleRig.h"

namespace corvane {
namespace {

using namespace rig;
using namespace tidalform;

constexpr double kRate = 48000.0;
constexpr int kGain = 2, kIndicator = 3;

ModuleRig ready(std::initializer_list<std::pair<int, double>> physical, double rateHz = kRate) {
  ModuleRig rig(kTidalformFamily, 1, rateHz);
  for (const auto& [offset, value] : physical) rig.setPhysical(offset, value);
  rig.reset();
  return rig;
}

double gainDb(ModuleRig& rig) { return 48.0 * rig.meter(kGain) - 24.0; }

/// Sets `rig` and its plain form alike.
void setBoth(ModuleRig& rig, PlainTidalform& plain, int offset, double p) {
  rig.set(offset, p);
  const double v = physicalValue(kTidalformFamily, offset, p);
  switch (offset) {
    case kThreshold: plain.thresholdDb = v; break;
    case kTime: plain.time = v; break;
    case kFrequency: plain.hz = v; break;
    case kAbove: plain.above = v; break;
    case kBelow: plain.below = v; break;
    case kQ: plain.peakQ = v, plain.shelfQ = 0.35 * std::pow(4.0, p); break;
    case kTransition: plain.halfDb = v; break;
    case kFilterType: plain.filterType = static_cast<int>(v); break;
    case kControlMode: plain.controlMode = static_cast<int>(v); break;
    default: break;
  }
}

PlainTidalform plainOf(ModuleRig& rig, int channels, double rateHz) {
  PlainTidalform plain(channels);
  plain.rateHz = rateHz;
  for (int offset = kThreshold; offset <= kControlMode; ++offset) setBoth(rig, plain, offset, 0.5);
  return plain;
}

// Every form of the module in one walk: standing and moving bands, gains that move and that rest, types and
// modes changed on the way, blocks cut anyhow, not-a-number in signal and key.
// 1e-9 of full scale: sine, cosine and the like are within 1e-15 of the library's; a section at 100 Hz and
// 96 kHz multiplies an error of its coefficients by (fs / 2 pi f)^2, 2e4, and a narrow one by its Q again.
TEST(Tidalform, SoundsLikeItsPlainForm) {
  for (const double rateHz : {44100.0, 96000.0})
    for (const double type : {0.0, 0.5, 1.0})
      for (const double mode : {0.0, 0.5, 1.0}) {
        ModuleRig rig(kTidalformFamily, 1, rateHz);
        PlainTidalform plain = plainOf(rig, 1, rateHz);
        setBoth(rig, plain, kFilterType, type), setBoth(rig, plain, kControlMode, mode);
        setBoth(rig, plain, kAbove, 0.1), setBoth(rig, plain, kBelow, 0.8), setBoth(rig, plain, kTime, 0.2);
        rig.reset();
        plain.snap();
        for (int part = 0; part < 6; ++part) {
          if (part == 1) setBoth(rig, plain, kFrequency, 0.9), setBoth(rig, plain, kQ, 0.8);
          if (part == 2) setBoth(rig, plain, kFrequency, 0.25), setBoth(rig, plain, kQ, 0.1);
          if (part == 4) setBoth(rig, plain, kAbove, 0.5), setBoth(rig, plain, kBelow, 0.5);
          if (part == 5) rig.set(kMonitorOffset, 1.0), plain.monitor = true;
          // part 3 lasts until the band stands to the last bit
          Samples x = noise(0.5, part == 3 ? 0.5 : 0.05, rateHz, 5u + static_cast<unsigned>(part));
          if (part == 1) x[700] = std::nan("");
          const Samples y = rig.runMono(x, nullptr, part % 2 ? 61 : 64);
          for (std::size_t n = 0; n < x.size(); ++n) {
            double expected = 0.0;
            plain.run(&x[n], &x[n], &expected);
            ASSERT_NEAR(y[n], expected, 1e-9)
                << "type " << type << " mode " << mode << " part " << part << " at " << n;
          }
          ASSERT_NEAR(gainDb(rig), std::clamp(plain.gainDb, -24.0, 24.0), 1e-12);
          ASSERT_NEAR(rig.meter(kIndicator), (plain.indicator + 1.0) * 0.5, 1e-12);
        }
      }
}

TEST(Tidalform, DetectsEachOfTwoChannelsAndDrivesBothWithTheMean) {
  ModuleRig rig(kTidalformFamily, 1);
  PlainTidalform plain = plainOf(rig, 2, kRate);
  setBoth(rig, plain, kAbove, 0.9), setBoth(rig, plain, kBelow, 0.2);
  rig.reset();
  plain.snap();
  const Samples left = noise(0.5, 0.1, kRate, 2), right = noise(0.005, 0.1, kRate, 3);
  const auto [a, b] = rig.runPair(left, right);
  for (std::size_t n = 0; n < left.size(); ++n) {
    const double x[2] = {left[n], right[n]};
    double expected[2];
    plain.run(x, x, expected);
    ASSERT_NEAR(a[n], expected[0], 1e-10) << n;  // as above, at a middle frequency
    ASSERT_NEAR(b[n], expected[1], 1e-10) << n;
  }
  ASSERT_NEAR(gainDb(rig), plain.gainDb, 1e-12);
}

TEST(Tidalform, NotANumberClearsTheOutputsOfASectionAlone) {
  const BiquadCoefficients c{1.0, -0.5, 0.25, 0.2, 0.3, 0.4};
  BiquadHistory h{0.0, 1.0, 2.0, 0.0, INFINITY, INFINITY};
  EXPECT_EQ(processDirect(3.0, c, h), 0.0);  // infinity minus infinity
  EXPECT_EQ(h.x1, 3.0);
  EXPECT_EQ(h.x2, 1.0);
  EXPECT_EQ(h.y1, 0.0);
  EXPECT_EQ(h.y2, 0.0);
  EXPECT_EQ(processDirect(std::nan(""), c, h), 0.3 * 3.0 + 0.4 * 1.0) << "as an input it counts as 0";
}

TEST(Tidalform, StandingDesignsAreThoseOfEverySample) {
  // A module whose designs are thrown away with every block against one that keeps them: the same bits.
  ModuleRig kept = ready({{kAbove, -12.0}, {kBelow, 6.0}}), renewed = ready({{kAbove, -12.0}, {kBelow, 6.0}});
  const Samples x = noise(0.5, 0.2, kRate);
  const Samples expected = kept.runMono(x);
  Samples y;
  for (std::size_t at = 0; at < x.size(); at += 64) {
    renewed.setPhysical(kFilterType, 1.0);  // the same value, which makes all designs stale
    const Samples part(x.begin() + static_cast<long>(at),
                       x.begin() + static_cast<long>(std::min(at + 64, x.size())));
    y = joined(y, renewed.runMono(part));
  }
  EXPECT_EQ(y, expected);
}

TEST(Tidalform, IsFlatWhereAboveAndBelowAreNothing) {
  for (const double type : {0.0, 1.0, 2.0}) {
    ModuleRig rig = ready({{kFilterType, type}});
    const Samples x = noise(0.9, 0.5, kRate), y = rig.runMono(x);
    // 1e-11: numerator and denominator are the same; what is left is the rounding of the recursion
    for (std::size_t n = 0; n < x.size(); ++n) ASSERT_NEAR(y[n], x[n], 1e-11);
    EXPECT_EQ(rig.meter(kGain), 0.5);
  }
}

TEST(Tidalform, GivesTheGainOfItsLawAtEveryLevel) {
  // A constant key, full band, has one level; after seconds the follower has arrived.
  for (const double halfDb : {6.0, 24.0})
    for (const double overDb : {-60.0, -24.0, -12.0, -3.0, 0.0, 3.0, 12.0, 24.0, 49.0}) {
      ModuleRig rig = ready({{kControlMode, 0.0},
                             {kThreshold, -50.0},
                             {kAbove, -18.0},
                             {kBelow, 10.0},
                             {kTransition, halfDb},
                             {kTime, 0.1}});
      rig.runMono(constant(fromDb(overDb - 50.0) - 1e-7, 1.0, kRate));
      const double share = 0.5 * (1.0 + std::tanh(overDb / halfDb));  // from Below to Above
      EXPECT_NEAR(gainDb(rig), 10.0 + share * (-18.0 - 10.0), 1e-9) << overDb << " dB, half-width " << halfDb;
    }
}

TEST(Tidalform, TransitionOfNothingIsAHardSwitch) {
  const auto settled = [](double key) {
    ModuleRig rig =
        ready({{kControlMode, 0.0}, {kThreshold, -20.0}, {kAbove, 12.0}, {kBelow, -6.0}, {kTransition, 0.0}});
    rig.runMono(constant(key, 2.0, kRate));
    return gainDb(rig);
  };
  EXPECT_NEAR(settled(0.1 * (1.0 + 1e-6)), 12.0, 1e-9);
  EXPECT_NEAR(settled(0.1 * (1.0 - 3e-6)), -6.0, 1e-9);
  // Exactly on the threshold the law is asked for the level alone: the mean, and a number.
  const GainLaw law{.thresholdDb = 0.0, .aboveDb = 12.0, .belowDb = -6.0, .halfWidthDb = 0.0};
  const double onIt = 1.0 - 1e-7;
  double over = 1.0, goal = 0.0;
  followLaw(law, &onIt, &over, &goal, 1);
  ASSERT_EQ(over, 0.0);
  EXPECT_EQ(goal, 3.0);
}

TEST(Tidalform, ListensInItsBandOrInTheRest) {
  // Monitor plays what the control filter passes: its response, from an impulse.
  struct Case {
    double type, mode, keptHz, lostHz;
  };
  for (const Case& c : {Case{0.0, 1.0, 60.0, 6000.0},
                        {0.0, 2.0, 6000.0, 60.0},
                        {1.0, 1.0, 632.0, 6000.0},
                        {1.0, 2.0, 6000.0, 632.456},
                        {2.0, 1.0, 6000.0, 60.0},
                        {2.0, 2.0, 60.0, 6000.0}}) {
    ModuleRig rig = ready({{kFilterType, c.type}, {kControlMode, c.mode}});
    rig.set(kMonitorOffset, 1.0);
    const Samples h = rig.runMono(impulse(1.0, 1.0, kRate));
    // kept within 1 dB a decade from the corner, lost by 12 dB and more in two sections
    EXPECT_NEAR(db(std::abs(fourierSum(h, c.keptHz, kRate))), 0.0, 1.0) << c.type << " " << c.mode;
    EXPECT_LT(db(std::abs(fourierSum(h, c.lostHz, kRate))), -12.0) << c.type << " " << c.mode;
  }
  ModuleRig off = ready({{kControlMode, 0.0}});
  off.set(kMonitorOffset, 1.0);
  const Samples x = noise(0.5, 0.1, kRate);
  EXPECT_EQ(off.runMono(x), x) << "without a control filter the key itself is heard";
}

TEST(Tidalform, MonitorLeavesTheGainRunning) {
  ModuleRig heard = ready({{kAbove, -12.0}}), plain = ready({{kAbove, -12.0}});
  heard.set(kMonitorOffset, 1.0);
  const Samples x = sine(632.0, 0.5, 0.5, kRate);
  heard.runMono(x), plain.runMono(x);
  EXPECT_EQ(gainDb(heard), gainDb(plain));
  EXPECT_LT(gainDb(plain), -6.0);
}

TEST(Tidalform, ExternalKeyDecidesAlone) {
  ModuleRig rig = ready({{kAbove, -18.0}});
  rig.set(kSideChainOffset, 1.0);
  const Samples loud = sine(632.0, 0.9, 0.5, kRate), quiet = silence(0.5, kRate);
  rig.runMono(loud, &quiet);
  EXPECT_NEAR(gainDb(rig), 0.0, 0.5);  // silence is 110 dB below the threshold
  rig.runMono(quiet, &loud);
  EXPECT_LT(gainDb(rig), -12.0);
}

/// Samples until the gain has gone the share 1 - 1/e of the way from Below to Above (up) or back.
double samplesToMove(double hz, double aboveDb, bool up) {
  ModuleRig rig = ready(
      {{kControlMode, 0.0}, {kTransition, 0.0}, {kThreshold, -40.0}, {kAbove, aboveDb}, {kFrequency, hz}});
  const Samples loud = constant(0.5, 3.0, kRate), quiet = silence(3.0, kRate);
  rig.runMono(up ? quiet : loud);
  const double goal = up ? aboveDb : 0.0, start = gainDb(rig);
  const Samples one = constant(up ? 0.5 : 0.0, 1.0 / kRate, kRate);
  for (int n = 1;; ++n) {
    rig.runMono(one);
    if (std::abs(goal - gainDb(rig)) <= std::abs(goal - start) * std::exp(-1.0)) return n;
  }
}

TEST(Tidalform, MovesFasterTowardsAboveAndInHigherBands) {
  for (const double hz : {60.0, 632.0, 6000.0}) {
    const double towardsAbove = kRate / (6.283 * 0.25 * std::pow(hz, 0.7071));
    const double towardsBelow = kRate / (6.283 * 0.1 * std::sqrt(hz));
    // Rising gain: one stage up, both stages down, which takes 2.146 times as long to 1 - 1/e.
    EXPECT_NEAR(samplesToMove(hz, 12.0, true), towardsAbove, 1.5) << hz;
    EXPECT_NEAR(samplesToMove(hz, 12.0, false), 2.146 * towardsBelow, 2.5 + 0.002 * towardsBelow) << hz;
    // Above under Below: the gain falls fast through two stages when the threshold is passed, and rises
    // slowly.
    EXPECT_NEAR(samplesToMove(hz, -12.0, true), 2.146 * towardsAbove, 2.5 + 0.002 * towardsAbove) << hz;
    EXPECT_NEAR(samplesToMove(hz, -12.0, false), towardsBelow, 1.5) << hz;
  }
}

TEST(Tidalform, TimeStretchesBothWays) {
  const auto halfway = [](double time) {
    ModuleRig rig = ready({{kControlMode, 0.0}, {kTransition, 0.0}, {kAbove, 12.0}, {kTime, time}});
    rig.runMono(constant(0.5, 0.001, kRate));
    return gainDb(rig);
  };
  // 12 (1 - e^(-48 samples / time constant)) in closed form
  for (const double time : {0.1, 1.0, 10.0})
    EXPECT_NEAR(halfway(time),
                12.0 * -std::expm1(-48.0 * 6.283 * 0.25 * std::pow(20.0 * std::sqrt(1000.0), 0.7071) /
                                   (time * kRate)),
                1e-9);
}

TEST(Tidalform, IndicatorTellsTheSideOfTheThreshold) {
  ModuleRig rig = ready({{kControlMode, 0.0}, {kThreshold, -20.0}});
  EXPECT_EQ(rig.meter(kIndicator), 0.5);
  rig.runMono(constant(0.2, 1.0, kRate));
  EXPECT_NEAR(rig.meter(kIndicator), 1.0, 1e-6);
  rig.runMono(constant(0.05, 1.0, kRate));
  EXPECT_NEAR(rig.meter(kIndicator), 0.0, 1e-6);
  rig.reset();
  EXPECT_EQ(rig.meter(kIndicator), 0.5);
}

TEST(Tidalform, ResetKeepsTheGainAndANewRateRestartsIt) {
  ModuleRig rig = ready({{kControlMode, 0.0}, {kAbove, -20.0}, {kTransition, 0.0}});
  rig.runMono(constant(0.9, 1.0, kRate));
  ASSERT_LT(gainDb(rig), -19.0);
  rig.reset();
  rig.runMono(constant(0.9, 1.0 / kRate, kRate));
  EXPECT_LT(gainDb(rig), -19.0);
  rig.module->setSampleRate(96000.0);
  rig.runMono(constant(0.9, 1.0 / kRate, kRate));
  EXPECT_GT(gainDb(rig), -2.0);
}

TEST(Tidalform, TypeStaysAndAnyInsertIndexIsIgnored) {
  ModuleRig rig = ready({{kAbove, 12.0}, {kBelow, 12.0}}), other = ready({{kAbove, 12.0}, {kBelow, 12.0}});
  other.set(kTypeOffset, 0.0);
  const Samples x = noise(0.1, 0.1, kRate);
  EXPECT_EQ(rig.runMono(x), other.runMono(x));
}

TEST(Tidalform, ShowsAndTakesItsValues) {
  const auto shown = [](int offset, double p) {
    char text[kTextBytes];
    valueText(kTidalformFamily, offset, p, text);
    return std::string(text);
  };
  for (const auto& [offset, p, text] : {std::tuple{kThreshold, 0.5, "-30.0"},
                                        {kThreshold, 0.0, "-80.0"},
                                        {kThreshold, 1.0, "20.0"},
                                        {kTime, 0.5, "1.00"},
                                        {kTime, 0.0, "0.10"},
                                        {kFrequency, 0.5, "632"},
                                        {kFrequency, 1.0, "20k"},
                                        {kAbove, 0.5, "0.0dB"},
                                        {kBelow, 0.0, "-24.0dB"},
                                        {kQ, 1.0, "10.00"},
                                        {kTransition, 0.5, "12.0"},
                                        {kFilterType, 0.0, "LowShelf"},
                                        {kFilterType, 0.5, "Peak"},
                                        {kFilterType, 1.0, "HiShelf"},
                                        {kControlMode, 0.2, "Off"},
                                        {kControlMode, 0.25, "Direct"},
                                        {kControlMode, 0.75, "Complement"},
                                        {kMonitorOffset, 1.0, "On"},
                                        {kTypeOffset, 0.0, "Empty"},
                                        {kQ, 1.5, "UNDEF"},
                                        {kTransition, -0.1, "UNDEF"}})
    EXPECT_EQ(shown(offset, p), text) << offset << " " << p;
  const auto typedP = [](int offset, const char* text) {
    double p = -1.0;
    return valueFromText(kTidalformFamily, offset, text, &p) ? p : -1.0;
  };
  for (const auto& [offset, text, p] : {std::tuple{kThreshold, "-30", 0.5},
                                        {kThreshold, "0", 0.8},
                                        {kThreshold, "20.1", -1.0},
                                        {kThreshold, "loud", -1.0},
                                        {kTime, "1", 0.5},
                                        {kTime, "0.09", -1.0},
                                        {kTime, "10", 1.0},
                                        {kQ, "0.1", 0.0},
                                        {kFrequency, "20", 0.0},
                                        {kFrequency, "20k", 1.0},
                                        {kFrequency, "0k632455532033676", 0.5},
                                        {kFrequency, "19", -1.0},
                                        {kAbove, "-24", 0.0},
                                        {kBelow, "0.", 0.5},
                                        {kAbove, "24.5", -1.0},
                                        {kTransition, "12", 0.5},
                                        {kTransition, "0", 0.0},
                                        {kTransition, "wide", -1.0},
                                        {kTransition, "-1", -1.0}})
    EXPECT_NEAR(typedP(offset, text), p, 1e-14) << offset << " " << text;  // rounding of two logarithms
}

TEST(Tidalform, PresetsHoldTheirNineValues) {
  ASSERT_EQ(kTidalformFamily.presets.size(), 10u);
  double values[25];
  char name[kTextBytes];
  modulePreset(kTidalformFamily, 7, values, name);
  EXPECT_STREQ(name, "Plosive Control");
  const double expected[] = {0.6, 0.0, 0.29, 0.0, 0.5, 0.26, 0.25, 0.0, 0.5};
  for (int k = 0; k < 9; ++k) EXPECT_EQ(values[16 + k], expected[k]) << k;
  modulePreset(kTidalformFamily, 9, values, name);
  EXPECT_STREQ(name, "Init");
  EXPECT_EQ(values[kTime], 0.5);
}

}  // namespace
}  // namespace corvane
