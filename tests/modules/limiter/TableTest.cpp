#include <gtest/gtest.h>

#include <string>

#include "modules/limiter/LimiterFamily.h"
#include "modules/limiter/LimiterTable.h"
#include "tests/rig/FamilyText.h"

namespace corvane {
namespace {

using namespace limiter;

std::string shown(int offset, double p) { return rig::shownBy(kLimiterFamily, offset, p); }

TEST(LimiterTable, ShowsValuesAsAnEngineerReadsThem) {
  EXPECT_EQ(shown(kAttack, 0.0), "0.1");
  EXPECT_EQ(shown(kAttack, 1.0), "100.0");
  EXPECT_EQ(shown(kRelease, 0.5), "100");
  EXPECT_EQ(shown(kCeiling, 0.8), "0.0");
  EXPECT_EQ(shown(kOutput, 0.0), "-20.0");
  EXPECT_EQ(shown(kHpf, 0.0), "Off");
  EXPECT_EQ(shown(kHpf, 1e-4), "10.0");
  EXPECT_EQ(shown(kHpf, 1.0), "1k");
  EXPECT_EQ(shown(kLink, 1.0), "Linked");
  EXPECT_EQ(shown(kSoft, 0.0), "-");
  EXPECT_EQ(shown(kMode, 0.2), "Mode 3");
  EXPECT_EQ(shown(kMode, 0.3), "undef");
  EXPECT_EQ(shown(kMode, 1.0), "undef");
  EXPECT_EQ(shown(kShape, 0.5), "Hard Clip");
  EXPECT_EQ(shown(kShape, 0.6), "undef");
  EXPECT_EQ(shown(kSmooth, 0.044), "4");
  EXPECT_EQ(shown(kSmooth, 0.045), "5");
  EXPECT_EQ(shown(kSmooth, 0.285), "28");  // 100 times it is a hair below 28.5 in binary
  EXPECT_EQ(shown(kAttack, 1.01), "UNDEF");
  EXPECT_EQ(shown(0, 12.0 / 15.0), "Saturator");
  EXPECT_EQ(shown(0, 3.0 / 15.0), "-");
}

TEST(LimiterTable, TakesWhatAPersonTypesWithinItsRangesAlone) {
  // 1e-12: a quotient of two logarithms
  struct Typed {
    int offset;
    const char* text;
    double p;
  };
  for (const auto& [offset, text, p] : {Typed{kAttack, "0.1", 0.0},
                                        {kAttack, "100", 1.0},
                                        {kRelease, "100", 0.5},
                                        {kRelease, "1", -0.5},
                                        {kRelease, "0.1", -1.0},
                                        {kCeiling, "0", 0.8},
                                        {kCeiling, "-40", 0.0},
                                        {kCeiling, "10", 1.0},
                                        {kOutput, "-20", 0.0},
                                        {kOutput, "0.", 0.5},
                                        {kHpf, "0k1", 0.5},
                                        {kHpf, "1k", 1.0},
                                        {kHpf, "0.1", -1.0},
                                        {kSmooth, "28.5", 0.285}}) {
    double value = -7.0;
    EXPECT_TRUE(valueFromText(kLimiterFamily, offset, text, &value)) << offset << " " << text;
    EXPECT_NEAR(value, p, 1e-12) << offset << " " << text;
  }
  for (const auto& [offset, text] : {std::pair{kAttack, "0.09"},
                                     {kAttack, "100.1"},
                                     {kAttack, "0"},
                                     {kRelease, "0"},
                                     {kRelease, "1001"},
                                     {kCeiling, "10.1"},
                                     {kCeiling, "loud"},
                                     {kCeiling, "0.0"},
                                     {kOutput, "-20.1"},
                                     {kHpf, "1k1"},
                                     {kHpf, "Off"},
                                     {kSmooth, "-1"},
                                     {kSmooth, "101"},
                                     {kLink, "Linked"},
                                     {kSoft, "1"},
                                     {kMode, "Mode 2"},
                                     {kShape, "Tape 1"}}) {
    double value = -7.0;
    EXPECT_FALSE(valueFromText(kLimiterFamily, offset, text, &value)) << offset << " " << text;
    EXPECT_EQ(value, -7.0);
  }
}

TEST(LimiterPresets, ReplaceTheFrameAndLeaveTheVariantsControls) {
  double values[32];
  char name[kTextBytes];
  modulePreset(kLimiterFamily, 9, values, name);
  EXPECT_STREQ(name, "Walking Bass");
  const std::pair<int, double> walkingBass[] = {
      {kAttack, 0.31}, {kRelease, 0.6101}, {kCeiling, 0.2851}, {kOutput, 0.6134}, {kHpf, 0.4828},
      {kLink, 1.0},    {kSoft, 1.0},       {kMode, 0.0},       {kSmooth, 0.5},    {kShape, 0.2}};
  for (const auto& [offset, value] : walkingBass) EXPECT_EQ(values[offset], value) << offset;
  modulePreset(kLimiterFamily, 3, values, name);  // its zeros replace the defaults
  EXPECT_STREQ(name, "Almost Brickwall");
  EXPECT_EQ(values[kAttack], 0.0);
  EXPECT_EQ(values[kCeiling], 0.5);
  for (const auto& [index, title] : {std::pair{0, "Default"}, {10, "Init"}}) {
    modulePreset(kLimiterFamily, index, values, name);
    EXPECT_STREQ(name, title);
    for (const Row& row : kRows) EXPECT_EQ(values[row.offset], row.defaultValue) << row.name;
  }
}

}  // namespace
}  // namespace corvane
