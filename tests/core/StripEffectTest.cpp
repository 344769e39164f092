#include <gtest/gtest.h>

#include "modules/master/MasterFamily.h"
#include "tests/rig/ModuleRig.h"

namespace corvane {
namespace {

using namespace rig;

/// Samples after which `meter` first meets `reached`, run one at a time.
template <typename Condition>
int samplesUntil(ModuleRig& rig, double input, int meter, Condition reached) {
  for (int n = 1; n < 2'000'000; ++n) {
    rig.runMono({input});
    if (reached(rig.meter(meter))) return n;
  }
  return -1;
}

TEST(LevelMeters, KeepTheirTimesInMillisecondsAtEveryRate) {
  for (const double rateHz : {44100.0, 96000.0}) {
    ModuleRig rig(kMasterFamily, 0, rateHz);  // type 0 passes, meters follow
    for (const int meter : {0, 1}) {
      rig.module->resetMeters();
      const int rise = samplesUntil(rig, 1.0, meter, [](double v) { return v >= 0.99; });
      EXPECT_NEAR(rise / rateHz * 1000.0, 5.334736, 1000.0 / rateHz) << "one sample of grid";
      const double top = rig.meter(meter);
      const int fall = samplesUntil(rig, 0.0, meter, [top](double v) { return v <= top / 16.0; });
      EXPECT_NEAR(fall / rateHz * 1000.0, 630.957344, 1000.0 / rateHz);
    }
  }
}

TEST(LevelMeters, RateChangeKeepsTheLevel) {
  ModuleRig rig(kMasterFamily, 0, 44100.0);
  rig.runMono(constant(0.5, 0.1, 44100.0));
  const double level = rig.meter(0);
  rig.module->setSampleRate(96000.0);
  // Master Control restarts its own meters at a rate change, the level followers of the contract do not
  EXPECT_EQ(rig.meter(0), level);
}

TEST(LevelMeters, NeverTurnDenormal) {
  ModuleRig rig(kMasterFamily, 0, 44100.0);
  rig.runMono(constant(1.0, 0.05, 44100.0));
  rig.runMono(silence(60.0, 44100.0));
  EXPECT_LT(rig.meter(0), 1e-25);
  EXPECT_TRUE(rig.meter(0) == 0.0 || std::isnormal(rig.meter(0)));
}

TEST(PassThrough, LeavesTheSignalAndShowsTheSameLevelTwice) {
  ModuleRig rig(kMasterFamily, 0);
  const Samples x = noise(0.7, 0.1, 48000.0);
  EXPECT_EQ(rig.runMono(x), x);
  EXPECT_EQ(rig.meter(0), rig.meter(1));
  const Samples quiet = noise(0.1, 0.1, 48000.0, 2);
  const auto [left, right] = rig.runPair(x, quiet);
  EXPECT_EQ(left, x);
  EXPECT_EQ(right, quiet);
}

TEST(InsertConversion, GoesBothWaysBetweenFixedPlaceAndInsert) {
  EXPECT_DOUBLE_EQ(insertValueFromTypeValue(192, 7 / 15.0), 87 / 255.0);
  EXPECT_DOUBLE_EQ(insertValueFromTypeValue(192, 12 / 15.0), 92 / 255.0);
  EXPECT_EQ(insertValueFromTypeValue(112, 0.0), 0.0);
  EXPECT_EQ(insertValueFromTypeValue(256, 0.4), 0.4);
  EXPECT_DOUBLE_EQ(typeValueFromInsertValue(92 / 255.0), 12 / 15.0);
  EXPECT_DOUBLE_EQ(typeValueFromInsertValue(5 / 255.0), 5 / 15.0);
  EXPECT_DOUBLE_EQ(typeValueFromInsertValue(97 / 255.0), 1 / 15.0);
  EXPECT_EQ(typeValueFromInsertValue(114 / 255.0), 0.0);
  EXPECT_EQ(typeValueFromInsertValue(200 / 255.0), 0.0);
}

TEST(InsertConversion, StoredSixteenthsAndCutDecimalsDecodeToTheirInteger) {
  EXPECT_EQ(decodeVariant(0.8), 12);
  EXPECT_EQ(decodeVariant(0.4666), 7);
  EXPECT_EQ(decodeVariant(0.0625), 1);
  EXPECT_EQ(decodeVariant(0.1333), 2);
  for (int index = 0; index <= 255; ++index) EXPECT_EQ(decodeInsertIndex(index / 255.0), index);
  EXPECT_EQ(decodeInsertIndex(0.3594), 92);
  EXPECT_EQ(decodeInsertIndex(0.4431), 113);
  EXPECT_EQ(decodePosition(1.0), 8);
  EXPECT_STREQ(insertName(19), "Filters Ext. s.c.");
  EXPECT_STREQ(insertName(115), "Tidalform");
  EXPECT_STREQ(insertName(6), "-");
  EXPECT_EQ(kindOfInsertIndex(6), -1);
  EXPECT_EQ(kindOfInsertIndex(92), 6);
}

}  // namespace
}  // namespace corvane
