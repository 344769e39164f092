#include <gtest/gtest.h>

#include <map>
#include <string>

#include "modules/preamp/PreampFamily.h"
#include "modules/preamp/PreampTable.h"
#include "tests/rig/FamilyText.h"

namespace corvane {
namespace {

using namespace preamp;

std::string shown(int offset, double p) { return rig::shownBy(kPreampFamily, offset, p); }

TEST(PreampTable, ShowsWhatThePanelPrints) {
  EXPECT_EQ(shown(kGain, 0.0), "-30.0");
  EXPECT_EQ(shown(kGain, 1.0), "30.0");
  EXPECT_EQ(shown(kRefLevel, 0.6), "-12.0dB");
  EXPECT_EQ(shown(kDrive, 0.0), "-30.0");
  EXPECT_EQ(shown(kDrive, 0.75), "15.0");
  EXPECT_EQ(shown(kNoiseLevel, 0.0), "-120.0");
  EXPECT_EQ(shown(kNoiseLevel, 1.0), "-60.0");
  EXPECT_EQ(shown(kNoiseIn, 0.5), "Auto Mute");
  EXPECT_EQ(shown(kAnalog, 0.5), "In");
  EXPECT_EQ(shown(kAutoLevelMode, 0.5), "Down");  // the switch has tipped, its word has not
  EXPECT_EQ(shown(kAutoLevelMode, 0.51), "Up&Down");
  EXPECT_EQ(shown(kDrive, 1.01), "UNDEF");
}

TEST(PreampTable, EveryTaperComesBack) {
  for (const Row& row : kRows)
    for (int i = 0; i <= 60; ++i) {
      const double p = i / 60.0;
      if (row.steps != kContinuous && std::trunc(p * row.steps) != p * row.steps) continue;
      // 2e-7: the gain knob works in single precision, 24 bits of 60 dB
      EXPECT_NEAR(row.taper.normalised(row.taper.physical(p)), p, 2e-7) << row.name;
    }
}

TEST(PreampPresets, AreDefaultsWithTheirOwnValuesOnTop) {
  const std::map<std::string, std::map<int, double>> expected{
      {"Default", {}},
      {"Clean", {{kAnalog, 0.0}}},
      {"Driven", {{kDrive, 1.0}}},
      {"Analog", {{kDrive, 0.7333}, {kNoiseIn, 0.5}, {kNoiseLevel, 0.6667}}},
      {"Clean [-18dB]", {{kAutoIn, 1.0}, {kRefLevel, 0.6}, {kAutoLevelMode, 1.0}, {kAnalog, 0.0}}},
      {"Soft [-18dB]", {{kAutoIn, 1.0}, {kRefLevel, 0.6}, {kAutoLevelMode, 1.0}, {kDrive, 0.3333}}},
      {"Init", {}},
  };
  std::size_t found = 0;
  for (int index = 0; index <= 11; ++index) {
    double values[kParameterSpan];
    char name[kTextBytes];
    modulePreset(kPreampFamily, index, values, name);
    const auto own = expected.find(name);
    if (own == expected.end()) continue;
    ++found;
    for (int offset = 0; offset < kParameterSpan; ++offset) {
      const auto at = own->second.find(offset);
      const double value = at == own->second.end() ? defaultValue(kPreampFamily, offset) : at->second;
      EXPECT_EQ(values[offset], value) << name << ", offset " << offset;
    }
  }
  EXPECT_EQ(found, expected.size());
}

}  // namespace
}  // namespace corvane
