#include <gtest/gtest.h>

#include <string>

#include "modules/master/MasterFamily.h"
#include "modules/master/MasterTable.h"
#include "tests/rig/FamilyText.h"
#include "tests/rig/ModuleRig.h"

namespace corvane {
namespace {

using namespace rig;
using master::kBalance;
using master::kGain;
using master::kMeasurementPoint;
using master::kWidth;

constexpr double kRateHz = 48000.0;
constexpr int kPeak = 2, kRightPeak = 3, kRms = 4, kOver = 6, kRightOver = 7;
constexpr double kMeterScale = 0.316228;  // full scale on a meter that ends 10 dB above it

std::string shown(int offset, double p) { return rig::shownBy(kMasterFamily, offset, p); }

/// Normalised value of a typed text, -1 for one that is refused.
double typedAs(int offset, const char* text) {
  double p = -1.0;
  valueFromText(kMasterFamily, offset, text, &p);
  return p;
}

// Fader, balance, width

TEST(Fader, MovesThroughThreeEqualStages) {
  for (const double rateHz : {44100.0, 96000.0}) {
    ModuleRig rig(kMasterFamily, 1, rateHz);
    rig.set(kGain, 0.0);
    const Samples y = rig.runMono(constant(1.0, 0.1, rateHz));
    const double share = 44.1000020946376 / rateHz, start = master::faderGain({}, 0.7511);
    for (const std::size_t n : {0u, 10u, 441u, 2000u, 4000u}) {
      // Three one-poles of equal share in a row: what is left after m steps of the geometric series
      const double m = static_cast<double>(n) + 1.0, keep = 1.0 - share;
      const double left = std::pow(keep, m) * (1.0 + m * share + m * (m + 1.0) / 2.0 * share * share);
      // 1e-11: 4000 flushes of 1e-14 at most
      EXPECT_NEAR(y[n], start * left, 1e-11) << n << " at " << rateHz;
    }
    EXPECT_LT(y.back(), y.front() * 0.2) << "silence comes by degrees";
  }
}

TEST(Fader, StandsAtItsTargetAfterAReset) {
  ModuleRig rig(kMasterFamily, 1);
  rig.setPhysical(kGain, fromDb(-6.0));
  rig.reset();
  // 1e-12: the law and its inverse each round a few times
  EXPECT_NEAR(rig.runMono({1.0})[0], fromDb(-6.0), 1e-12);
  rig.set(kGain, 0.0);
  rig.reset();
  EXPECT_EQ(rig.runMono({1.0})[0], 0.0);
}

TEST(Fader, SpansFromSilenceTo10DbAboveUnity) {
  EXPECT_EQ(shown(kGain, 0.0), "-oo");
  EXPECT_EQ(shown(kGain, 0.7511), "0.00");
  EXPECT_EQ(shown(kGain, 1.0), "10.00");
  EXPECT_EQ(shown(kGain, 1.1), "UNDEF");
  EXPECT_NEAR(master::faderGain({}, 1e-12), 1e-5, 2e-8) << "just above the stop it is 100 dB down";
  for (double p = 0.05; p <= 1.0; p += 0.05) {
    const double there = findRow(kMasterFamily, kGain)->taper.physical(p);
    // 1e-12: the inverse has its exponent rounded to 16 digits
    EXPECT_NEAR(findRow(kMasterFamily, kGain)->taper.normalised(there), p, 1e-12);
  }
}

TEST(Fader, TakesTypedDecibels) {
  EXPECT_EQ(typedAs(kGain, "-oo"), 0.0);
  EXPECT_EQ(typedAs(kGain, "-101"), 0.0);
  EXPECT_EQ(typedAs(kGain, "11"), 1.0);
  EXPECT_EQ(shown(kGain, typedAs(kGain, "-6.02")), "-6.02");
  EXPECT_EQ(typedAs(kGain, "loud"), -1.0);
}

TEST(Balance, KeepsPowerAndSilencesTheFarSideExactly) {
  const auto outputs = [](double p) {
    ModuleRig rig(kMasterFamily, 1);
    rig.set(kGain, 0.7511), rig.set(kBalance, p);
    rig.reset();
    const auto [left, right] = rig.runPair({1.0}, {1.0});
    return std::pair{left[0], right[0]};
  };
  const auto [left0, right0] = outputs(0.0);
  EXPECT_NEAR(left0, std::sqrt(2.0), 2e-6) << "the default fader is a millionth above unity";
  EXPECT_EQ(right0, 0.0);
  const auto [left1, right1] = outputs(1.0);
  EXPECT_EQ(left1, 0.0);
  for (const double p : {0.2, 0.5, 0.77}) {
    const auto [left, right] = outputs(p);
    EXPECT_NEAR(left * left + right * right, 2.0, 1e-5);
  }
  EXPECT_EQ(shown(kBalance, 0.5), "C");
  EXPECT_EQ(shown(kBalance, 0.0), "50L");
  EXPECT_EQ(shown(kBalance, 0.9), "40R");
  EXPECT_DOUBLE_EQ(typedAs(kBalance, "20L"), 0.3);
  EXPECT_DOUBLE_EQ(typedAs(kBalance, "20R"), 0.7);
  EXPECT_DOUBLE_EQ(typedAs(kBalance, "-20"), 0.3);
  EXPECT_EQ(typedAs(kBalance, "c"), 0.5);
  EXPECT_EQ(typedAs(kBalance, "no"), -1.0);
}

TEST(Width, GoesFromMonoToTwiceTheSide) {
  const auto outputs = [](double p) {
    ModuleRig rig(kMasterFamily, 1);
    rig.set(kWidth, p);
    rig.reset();
    return rig.runPair({0.8}, {0.2});
  };
  const auto [monoL, monoR] = outputs(0.0);
  EXPECT_NEAR(monoL[0], monoR[0], 1e-9) << "the quarter turn is given to twelve digits";
  EXPECT_NEAR(monoL[0], 0.5, 1e-6);
  const auto [wideL, wideR] = outputs(1.0);
  EXPECT_NEAR(wideL[0], 1.1, 2e-6);
  EXPECT_NEAR(wideR[0], -0.1, 2e-6);
  EXPECT_EQ(shown(kWidth, 0.5), "100\n%");
  EXPECT_DOUBLE_EQ(typedAs(kWidth, "150"), 0.75);
  EXPECT_EQ(typedAs(kWidth, "201"), -1.0);
}

TEST(Width, AndBalanceDoNotTouchOneChannel) {
  ModuleRig plain(kMasterFamily, 1), turned(kMasterFamily, 1);
  turned.set(kWidth, 0.0), turned.set(kBalance, 1.0);
  const Samples x = noise(0.5, 0.05, kRateHz);
  EXPECT_EQ(plain.runMono(x), turned.runMono(x));
  EXPECT_EQ(turned.meter(kPeak), turned.meter(kRightPeak)) << "both meters show the one channel";
}

// Meters

TEST(PeakMeter, HoldsTheTopAndFalls19DbIn1Point2Seconds) {
  for (const double rateHz : {44100.0, 96000.0}) {
    ModuleRig rig(kMasterFamily, 1, rateHz);
    rig.set(kMeasurementPoint, 0.0);
    rig.runMono({1.0, 0.0});
    rig.runMono(silence(1.2000000476837158, rateHz));
    // 0.03 dB: the block copy shows the level of a block ago, 64 samples of the fall
    EXPECT_NEAR(db(rig.meter(kPeak) / kMeterScale), db(0.109), 0.03);
  }
}

TEST(PeakMeter, ShowsABlocksPeakThoughTheBlockEndedLow) {
  ModuleRig rig(kMasterFamily, 1);
  rig.set(kMeasurementPoint, 0.0);
  rig.runMono(constant(0.5, 64 / kRateHz, kRateHz));
  rig.runMono(silence(64 / kRateHz, kRateHz));
  EXPECT_NEAR(rig.meter(kPeak), 0.5 * kMeterScale, 1e-5) << "one sample of release";
}

TEST(RmsMeter, ReadsASineLikeItsPeak) {
  ModuleRig rig(kMasterFamily, 1);
  rig.set(kMeasurementPoint, 0.0);
  rig.module->enable();  // the filter runs its response from the second reset on
  rig.runMono(sine(1000.0, 0.5, 4.0, kRateHz));
  // 1e-4 of the reading: 1.4142 for the root of two, and the filter's last 2 % at 1 Hz are long gone
  EXPECT_NEAR(rig.meter(kRms), 0.5 * kMeterScale, 2e-5);
  EXPECT_NEAR(rig.meter(kPeak), 0.5 * kMeterScale, 1e-4);
}

TEST(MeasurementPoint, ReadsBeforeOrBehindTheFader) {
  for (const auto& [p, expected] : {std::pair{0.0, 1.0}, {1 / 3.0, 1.0}, {2 / 3.0, 0.5}, {1.0, 0.5}}) {
    ModuleRig rig(kMasterFamily, 1);
    rig.setPhysical(kGain, 0.5), rig.set(kMeasurementPoint, p);
    rig.reset();
    rig.runMono({1.0});
    EXPECT_NEAR(rig.meter(kPeak), expected * kMeterScale, 1e-6) << shown(kMeasurementPoint, p);
  }
}

TEST(Over, TakesThreeSamplesInARow) {
  ModuleRig rig(kMasterFamily, 1);
  rig.set(kMeasurementPoint, 0.0);
  rig.runMono({1.0, 1.0, 0.5, 1.0, 1.0});
  EXPECT_EQ(rig.meter(kOver), 0.0);
  rig.runMono({-1.5});  // the run goes on across blocks
  EXPECT_EQ(rig.meter(kOver), 1.0);
  EXPECT_EQ(rig.meter(kRightOver), 1.0);
}

TEST(Over, ShowsFullThreeTimesThenDimsToHalfUntilItIsCleared) {
  ModuleRig rig(kMasterFamily, 1);
  rig.set(kMeasurementPoint, 0.0);
  rig.runMono({1.0, 1.0, 1.0, 0.0});
  for (int read = 0; read < 3; ++read) EXPECT_EQ(rig.meter(kOver), 1.0);
  for (int read = 1; read <= 10; ++read) EXPECT_NEAR(rig.meter(kOver), 1.0 - 0.05 * read, 1e-12);
  for (int read = 0; read < 5; ++read) EXPECT_EQ(rig.meter(kOver), 0.5);
  rig.module->setParameter(rig.place.meterBase + kRightOver, 1.0);
  EXPECT_EQ(rig.meter(kOver), 0.0);
}

TEST(MasterControl, StartsItsMetersAndFaderAnewWhenSwitched) {
  ModuleRig rig(kMasterFamily, 1);
  rig.runMono(constant(1.0, 0.01, kRateHz));
  rig.set(kGain, 0.0);
  rig.module->disable();
  EXPECT_EQ(rig.meter(kPeak), 0.0);
  EXPECT_EQ(rig.runMono({0.5})[0], 0.5);
  rig.module->enable();
  EXPECT_EQ(rig.runMono({0.5})[0], 0.0) << "no glide from where it stood";
}

TEST(MasterControl, PresetsFillTheirOwnValuesAlone) {
  double values[32];
  std::fill(std::begin(values), std::end(values), 7.0);
  char name[kTextBytes];
  modulePreset(kMasterFamily, 0, values, name);
  EXPECT_STREQ(name, "Default");
  EXPECT_EQ(values[kGain], 0.7511);
  EXPECT_EQ(values[kMeasurementPoint], 0.625);
  EXPECT_EQ(values[20], 7.0);
  modulePreset(kMasterFamily, 9, values, name);
  EXPECT_STREQ(name, "Init");
}

}  // namespace
}  // namespace corvane
