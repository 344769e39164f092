#include <gtest/gtest.h>

#include "modules/deesser/DeesserFamily.h"
#include "modules/deesser/DeesserTable.h"
#include "tests/modules/deesser/PlainDeesser.h"
#include "tests/rig/ModuleRig.h"
#include "tests/rig/Voice.h"

namespace corvane {
namespace {

using namespace rig;
using namespace deesser;

constexpr double kRate = 48000.0;
constexpr int kReduction = 2;

/// A de-esser whose gain has risen from its rest.
ModuleRig warmDeesser(double rangeDb = -24.0) {
  ModuleRig rig(kDeesserFamily, 1);
  rig.setPhysical(kRange, rangeDb);
  rig.runMono(silence(0.5, kRate));
  return rig;
}

/// Something like a word: a tone of a voice, and over it a hiss between 5 and 7 kHz.
Samples word(double toneLevel, double hissLevel, double seconds) {
  Samples x = noise(hissLevel, seconds, kRate, 3);
  GlideFilter band(kRate, SectionType::bandPass, 6000.0, 4.0, 0.0);
  band.active = true;
  band.retarget(), band.snapToTarget();
  band.processBuffer(x.data(), static_cast<int>(x.size()));
  const Samples tone = sine(200.0, toneLevel, seconds, kRate);
  for (std::size_t n = 0; n < x.size(); ++n) x[n] += tone[n];
  return x;
}

double reductionDb(ModuleRig& rig) { return -db(1.0 - rig.meter(kReduction)); }

// 1e-13: square roots instead of pow are off by two units in the last place of a gain below 1 at most, and
// the output swings to 4; a section, envelope or order of additions out of place is off by far more.
TEST(Deesser, SoundsLikeItsPlainForm) {
  for (const bool monitor : {false, true})
    for (const int mode : {0, 1, 2, 3}) {
      const bool split = mode % 2 == 1, steep = mode > 1;
      ModuleRig rig(kDeesserFamily, 1);
      PlainDeesser plain(1);
      const auto settle = [&](double frequency, double sensitivity) {
        rig.set(kFrequency, frequency), rig.set(kSensitivity, sensitivity);
        plain.hz = physicalValue(kDeesserFamily, kFrequency, frequency);
        plain.sensitivityDb = physicalValue(kDeesserFamily, kSensitivity, sensitivity);
      };
      rig.set(kMode, split), rig.set(kRatio, steep), rig.set(kMonitorOffset, monitor),
          rig.setPhysical(kRange, -12.0);
      plain.split = split, plain.exponent = steep ? 0.75 : 0.5, plain.monitor = monitor,
      plain.rangeDb = -12.0;
      settle(0.7, 0.8);
      plain.q = physicalValue(kDeesserFamily, kResonance, 0.636715681427498);
      plain.design(true);
      rig.reset();
      for (int part = 0; part < 3; ++part) {
        if (part == 1) settle(0.5, 0.6), plain.design(false);  // glides for 55 of the 100 ms
        const Samples x = word(0.2, 0.8, 0.1);
        const Samples y = rig.runMono(x, nullptr, part == 2 ? 61 : 64);
        for (std::size_t n = 0; n < x.size(); ++n) {
          double expected = 0.0;
          plain.run(&x[n], &expected);
          ASSERT_NEAR(y[n], expected, 1e-13) << "mode " << mode << " part " << part << " sample " << n;
        }
        ASSERT_NEAR(rig.meter(kReduction), 1.0 - plain.applied, 1e-13);
      }
    }
}

TEST(Deesser, LinksTwoChannelsToTheLouderOfEach) {
  ModuleRig rig(kDeesserFamily, 1);
  PlainDeesser plain(2);
  plain.hz = physicalValue(kDeesserFamily, kFrequency, 0.636715681427498);
  plain.q = physicalValue(kDeesserFamily, kResonance, 0.636715681427498);
  plain.design(true);
  const Samples left = word(0.5, 0.05, 0.2), right = word(0.01, 0.5, 0.2);
  const auto [a, b] = rig.runPair(left, right);
  for (std::size_t n = 0; n < left.size(); ++n) {
    const double x[2] = {left[n], right[n]};
    double expected[2];
    plain.run(x, expected);
    ASSERT_NEAR(a[n], expected[0], 1e-14) << n;  // as above, at a level of 0.5
    ASSERT_NEAR(b[n], expected[1], 1e-14) << n;
  }
}

TEST(Deesser, TurnsARecordedVoiceDownInItsSibilantAlone) {
  const Samples voice = recordedVoice();
  ASSERT_FALSE(voice.empty()) << "the package alsa-utils brings the recording";
  ModuleRig rig = warmDeesser(-6.0);
  double inSibilant = 100.0, inVowel = 0.0;
  for (std::size_t at = 0; at + 960 < voice.size(); at += 960) {
    rig.runMono({voice.begin() + static_cast<long>(at), voice.begin() + static_cast<long>(at) + 960});
    const double seconds = static_cast<double>(at) / kRate;
    if (seconds >= 0.80 && seconds < 0.89)
      inSibilant = std::min(inSibilant, reductionDb(rig));  // the C of "centre"
    if (seconds >= 0.94 && seconds < 1.06) inVowel = std::max(inVowel, reductionDb(rig));  // its first E
    if (seconds >= 0.12 && seconds < 0.30) inVowel = std::max(inVowel, reductionDb(rig));  // the O of "front"
  }
  // by ear the C loses its edge from 2 dB on, and 0.05 dB in a vowel is below any step that is heard
  EXPECT_GT(inSibilant, 2.0);
  EXPECT_LT(inVowel, 0.05);
}

TEST(Deesser, ActsOnlyWhereTheBandDominates) {
  ModuleRig voiced = warmDeesser();
  voiced.runMono(word(0.5, 0.02, 0.3));
  EXPECT_LT(reductionDb(voiced), 0.05);
  ModuleRig loudVoiced = warmDeesser();  // level alone does nothing: the same balance, 20 dB up
  loudVoiced.runMono(word(5.0, 0.2, 0.3));
  EXPECT_LT(reductionDb(loudVoiced), 0.05);
  ModuleRig hissing = warmDeesser();
  hissing.runMono(word(0.02, 0.5, 0.3));
  EXPECT_GT(reductionDb(hissing), 3.0);
  ModuleRig silent = warmDeesser();
  EXPECT_LT(reductionDb(silent), 1e-9);
}

TEST(Deesser, FallsFasterThanItRises) {
  // A hiss of full range switched on and off: down to 90 % of the way within 2 ms, back not before 10 ms.
  ModuleRig rig = warmDeesser(-12.0);
  rig.set(kSensitivity, 1.0);
  double full = 0.0;
  const Samples hiss = word(0.0, 0.8, 0.2);
  rig.runMono({hiss.begin(), hiss.begin() + 192});
  const double early = reductionDb(rig);
  rig.runMono(hiss);
  full = reductionDb(rig);
  EXPECT_GT(full, 8.0);
  EXPECT_GT(early, 0.75 * full);
  rig.runMono(silence(0.005, kRate));
  EXPECT_GT(reductionDb(rig), 0.3 * full);
  rig.runMono(silence(0.3, kRate));
  EXPECT_LT(reductionDb(rig), 0.05);
}

TEST(Deesser, RangeIsTheFloorOfTheGain) {
  for (const double rangeDb : {-24.0, -12.0, -3.0})
    for (const double ratio : {0.0, 1.0}) {
      ModuleRig rig = warmDeesser(rangeDb);
      rig.set(kRatio, ratio), rig.set(kSensitivity, 1.0);
      rig.runMono(word(0.0, 8.0, 0.2));
      EXPECT_LE(reductionDb(rig), -rangeDb);
      EXPECT_GT(reductionDb(rig), -0.6 * rangeDb) << rangeDb;  // the hiss drives it most of the way
    }
  ModuleRig gentle = warmDeesser(), steep = warmDeesser();
  steep.set(kRatio, 1.0);
  gentle.runMono(word(0.1, 0.5, 0.2)), steep.runMono(word(0.1, 0.5, 0.2));
  EXPECT_GT(reductionDb(steep), reductionDb(gentle) + 1.0);
}

TEST(Deesser, FullRangePassesUntouchedInFullBand) {
  ModuleRig rig(kDeesserFamily, 1);
  rig.set(kRange, 1.0), rig.set(kSensitivity, 1.0);
  const Samples x = word(0.1, 0.8, 0.1);
  EXPECT_EQ(rig.runMono(x), x);
  EXPECT_EQ(rig.meter(kReduction), 0.0);
  rig.set(kMode, 1.0);  // the crossover's phase stays
  EXPECT_NE(rig.runMono(x), x);
}

TEST(Deesser, SplitBandLeavesTheLowsAlone) {
  // The tone of 200 Hz lies three octaves below the crossover at 1950 Hz; the hiss above is turned down.
  const auto toneIn = [](double mode, double hiss) {
    ModuleRig rig = warmDeesser(-18.0);
    rig.set(kMode, mode), rig.set(kSensitivity, 1.0);
    const Samples y = rig.runMono(word(0.1, hiss, 0.5));
    EXPECT_GT(reductionDb(rig), hiss > 0.0 ? 6.0 : -1.0);
    return db(partial(y, 200.0, kRate, y.size() / 2) / 0.1);
  };
  // 0.1 dB: what of the tone leaks through the upper path, -80 dB, and of the hiss into 200 Hz
  EXPECT_NEAR(toneIn(1.0, 0.8), toneIn(1.0, 0.0), 0.1);
  EXPECT_LT(toneIn(0.0, 0.8), -6.0);
}

TEST(Deesser, ReductionMeterFollowsTheLastSampleOfABlock) {
  ModuleRig rig(kDeesserFamily, 1);
  EXPECT_EQ(rig.meter(kReduction), 1.0);  // the gain rises from 0 after a reset
  const Samples x = word(0.1, 0.5, 0.1);
  const Samples y = rig.runMono(x);
  // 1e-12: the quotient of two samples near 0.1
  EXPECT_NEAR(rig.meter(kReduction), 1.0 - y.back() / x.back(), 1e-12);
  rig.module->resetMeters();
  EXPECT_EQ(rig.meter(kReduction), 0.0);
  const double held = rig.meter(kReduction);
  rig.module->disable();
  rig.runMono(x);
  EXPECT_EQ(rig.meter(kReduction), held);
}

TEST(Deesser, FadesInAfterAReset) {
  ModuleRig rig = warmDeesser();
  ASSERT_LT(rig.meter(kReduction), 1e-6);
  rig.reset();
  rig.runMono(constant(0.1, 1.0 / kRate, kRate));
  EXPECT_GT(rig.meter(kReduction), 0.85);  // of the 0.94 that the range of 24 dB allows
}

TEST(Deesser, MonitorPlaysWhatTheDetectorHears) {
  ModuleRig rig(kDeesserFamily, 1);
  rig.set(kRange, 1.0), rig.set(kMonitorOffset, 1.0);
  const Samples y = rig.runMono(sine(6000.0, 0.1, 0.5, kRate));
  // 2 sqrt(q) times the detection sections at their centre, behind both high-passes of the crossover
  const auto at6k = [](SectionType type, double hz, double q, double gainDb) {
    return magnitude(designSection(type, hz, q, gainDb, kRate), 6000.0, kRate);
  };
  const double expected = 2.0 * std::sqrt(6.0) * at6k(SectionType::bandPass, 6000.0, 6.0, 0.0) *
                          at6k(SectionType::peaking, 6000.0, 6.0, -6.0) *
                          std::pow(at6k(SectionType::highPass, 1950.0, 0.7, 0.0), 2.0);
  // 1e-8: the knob's default stands for 6 kHz and q 6 to nine digits
  EXPECT_NEAR(partial(y, 6000.0, kRate, y.size() / 2) / 0.1, expected, 1e-8);
  rig.module->setDefaults();
  rig.set(kRange, 1.0);
  rig.reset();
  const Samples x = sine(6000.0, 0.1, 0.1, kRate);
  EXPECT_EQ(rig.runMono(x), x) << "defaults end monitoring";
}

TEST(Deesser, ShowsItsValuesAndStepsItsSensitivity) {
  const auto shown = [](int offset, double p) {
    char text[kTextBytes];
    valueText(kDeesserFamily, offset, p, text);
    return std::string(text);
  };
  const double top = 0.636715681427498;
  // the defaults stand for 6 kHz and 6.0 to nine digits
  EXPECT_NEAR(physicalValue(kDeesserFamily, kFrequency, top), 6000.0, 2e-6);
  EXPECT_NEAR(physicalValue(kDeesserFamily, kResonance, top), 6.0, 2e-9);
  EXPECT_EQ(shown(kFrequency, top) + " " + shown(kFrequency, 0.0) + " " + shown(kFrequency, 1.0),
            "6k 500 16k");
  EXPECT_EQ(shown(kResonance, top) + " " + shown(kResonance, 0.0), "6.00 0.50");
  EXPECT_EQ(shown(kFrequency, 1.01) + shown(kResonance, -0.01), "UNDEFUNDEF");
  EXPECT_EQ(shown(kSensitivity, 0.5) + " " + shown(kRange, 0.5) + " " + shown(kRange, 1.0), "50 -6.0 0.0");
  EXPECT_EQ(
      shown(kRatio, 0.49) + " " + shown(kRatio, 0.5) + " " + shown(kMode, 0.0) + " " + shown(kMode, 1.0),
      "2:1 4:1 Off On");
  EXPECT_EQ(shown(kTypeOffset, 0.0) + " " + shown(kMonitorOffset, 1.0), "Empty On");
  EXPECT_EQ(physicalValue(kDeesserFamily, kSensitivity, 0.5), -12.0);
  EXPECT_EQ(physicalValue(kDeesserFamily, kSensitivity, 0.51), -12.0);  // 12.48 of 48 rounds to 12
  EXPECT_EQ(physicalValue(kDeesserFamily, kSensitivity, 0.52), -11.0);
  for (const int offset : {kFrequency, kResonance, kRange}) {
    const Taper& taper = findRow(kDeesserFamily, offset)->taper;
    for (double p = 0.0; p <= 1.0; p += 1.0 / 64.0)  // 1e-10: a steep start multiplies the rounding of pow
      EXPECT_NEAR(taper.normalised(taper.physical(p)), p, 1e-10) << offset;
  }
}

TEST(Deesser, PresetsKeepDefaultsWhereTheySayNothing) {
  ASSERT_EQ(kDeesserFamily.presets.size(), 10u);
  double values[22];
  char name[kTextBytes];
  modulePreset(kDeesserFamily, 2, values, name);
  EXPECT_STREQ(name, "Voice 2");
  EXPECT_EQ(values[kFrequency], 0.72);
  EXPECT_EQ(values[kResonance], 0.636715681427498);
  EXPECT_EQ(values[kSensitivity], 0.5);
  modulePreset(kDeesserFamily, 9, values, name);
  EXPECT_STREQ(name, "Hi-Hat");
  EXPECT_EQ(values[kRange], 0.29);
  EXPECT_EQ(values[kMode], 1.0);
}

}  // namespace
}  // namespace corvane
