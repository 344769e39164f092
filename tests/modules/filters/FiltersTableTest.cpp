#include <gtest/gtest.h>

#include <string>

#include "core/Rack.h"
#include "modules/filters/FiltersFamily.h"
#include "modules/filters/FiltersTable.h"
#include "tests/rig/FamilyText.h"

namespace corvane {
namespace {

std::string shown(int offset, double p) { return rig::shownBy(kFiltersFamily, offset, p); }

TEST(FiltersTable, ShowsWhatTheDialsMean) {
  EXPECT_EQ(shown(0, 3.0 / 15.0), "S.C. Filters");
  EXPECT_STREQ(insertName(19), "Filters Ext. s.c.");
  EXPECT_EQ(shown(kMonitorOffset, 0.49), "Off");
  EXPECT_EQ(shown(filters::kLpfIn, 1.0), "In");
  EXPECT_EQ(shown(filters::kLpfFreq, 0.0), "300");
  EXPECT_EQ(shown(filters::kLpfFreq, 0.5), "3k");
  EXPECT_EQ(shown(filters::kLpfFreq, 1.0), "30k");
  EXPECT_EQ(shown(filters::kLpfSlope, 0.5), "12");
  EXPECT_EQ(shown(filters::kParametricGain, 0.0), "-24.0dB");
  EXPECT_EQ(shown(filters::kParametricGain, 0.5), "0.0dB");
  EXPECT_EQ(shown(filters::kParametricFreq, 0.0), "20.0Hz");
  EXPECT_EQ(shown(filters::kParametricFreq, 1.0), "20kHz");
  EXPECT_EQ(shown(filters::kParametricQ, 0.5), "1.00");
  EXPECT_EQ(shown(filters::kParametricType, 0.25), "Bell");
  EXPECT_EQ(shown(filters::kParametricType, 1.0), "HiShelf");
  EXPECT_EQ(shown(filters::kHpfFreq, 1.0), "2k");
  EXPECT_EQ(shown(filters::kHpfSlope, 1.0), "24");
  EXPECT_EQ(shown(filters::kHpfSlope, -0.1), "UNDEF");
}

TEST(FiltersTable, BandGainStepsByAHundredthOfADecibel) {
  const auto gain = [](double p) { return physicalValue(kFiltersFamily, filters::kParametricGain, p); };
  EXPECT_EQ(gain(0.5), 0.0);
  EXPECT_EQ(gain(0.5 + 0.49 / 4800.0), 0.0);
  EXPECT_NEAR(gain(0.5 + 0.51 / 4800.0), 0.01, 1e-12);
  EXPECT_EQ(gain(1.0), 24.0);
}

TEST(FiltersTable, PresetsAreTheDefaultsAndWhatTheyName) {
  double values[32];
  char name[kTextBytes];
  const auto at = [&](int index) { modulePreset(kFiltersFamily, index, values, name); };
  at(6);
  EXPECT_STREQ(name, "Horn Basic");
  const double expected[] = {1.0, 1.0, 0.5, 1.0, 0.4379, 0.5663, 0.5, 1.0, 1.0, 0.3891, 1.0};
  for (int k = 0; k < 11; ++k) EXPECT_EQ(values[filters::kLpfIn + k], expected[k]) << k;
  at(5);
  EXPECT_STREQ(name, "Piano Basic");
  EXPECT_EQ(values[filters::kParametricGain], 0.5);
  EXPECT_EQ(values[filters::kHpfFreq], 0.301);
  at(8);
  EXPECT_EQ(values[filters::kHpfSlope], 0.0);
  at(10);
  EXPECT_STREQ(name, "XXX");
  EXPECT_EQ(values[filters::kHpfSlope], 0.5);
  at(11);
  EXPECT_STREQ(name, "Init");
}

}  // namespace
}  // namespace corvane
