#include <gtest/gtest.h>

#include <string>

#include "core/Rack.h"
#include "modules/eq/EqFamily.h"
#include "modules/eq/EqTable.h"
#include "tests/rig/FamilyText.h"

namespace corvane::eq {
namespace {

std::string shown(int offset, double p) { return rig::shownBy(kEqFamily, offset, p); }

TEST(EqTable, FrequenciesStandWhereTheScaleIsMarked) {
  const auto hz = [](Band band, double p) { return physicalValue(kEqFamily, offsetOf(band, kFreq), p); };
  const double middle[kBands] = {7997.84, 2500.00, 500.00, 119.98};
  const double lowest[kBands] = {1400.0, 500.0, 100.0, 20.0};
  for (const Band band : {kHi, kHm, kLm, kLo}) {
    EXPECT_NEAR(hz(band, 0.5), middle[band], 0.005);  // half of the last printed digit
    // 1e-12 of the value: one power
    EXPECT_NEAR(hz(band, 0.0), lowest[band], 1e-12 * lowest[band]);
    EXPECT_NEAR(hz(band, 1.0), 20.0 * lowest[band], 20e-12 * lowest[band]);
    EXPECT_EQ(hz(band, -0.3), hz(band, 0.0)) << "out of range counts as the end stop, never as not-a-number";
    EXPECT_EQ(hz(band, 1.3), hz(band, 1.0));
  }
}

TEST(EqTable, EveryContinuousTaperRisesAndComesBack) {
  for (const Row& row : kRows) {
    if (row.steps != kContinuous) continue;
    for (int i = 1; i <= 1000; ++i) {
      const double p = i / 1000.0;
      EXPECT_GT(row.taper.physical(p), row.taper.physical(p - 0.001)) << row.name << " at " << p;
      // 1e-9: where a law is flat, the way back magnifies the rounding of the logarithm
      EXPECT_NEAR(row.taper.normalised(row.taper.physical(p)), p, 1e-9) << row.name << " at " << p;
    }
  }
}

TEST(EqTable, DisplaysReadAsOnThePanel) {
  EXPECT_EQ(shown(offsetOf(kHi, kIn), 0.49), "OUT");
  EXPECT_EQ(shown(offsetOf(kLo, kIn), 0.5), "IN");
  EXPECT_EQ(shown(offsetOf(kHm, kShape), 0.0), "Wide");
  EXPECT_EQ(shown(offsetOf(kHm, kShape), 0.74), "Normal");
  EXPECT_EQ(shown(offsetOf(kHm, kShape), 0.75), "Narrow");
  EXPECT_EQ(shown(offsetOf(kLm, kGain), 0.0), "-18.0");
  EXPECT_EQ(shown(offsetOf(kLm, kGain), 0.5), "0.0");
  EXPECT_EQ(shown(offsetOf(kHm, kFreq), 0.5), "2k5");
  EXPECT_EQ(shown(offsetOf(kLo, kFreq), 0.0), "20.0");
  EXPECT_EQ(shown(kOut, 21.4 / 36.0), "3.4");
  EXPECT_EQ(shown(kAnalog, 0.0), "SatOff");
  EXPECT_EQ(shown(kAnalog, 1.0), "SatOn");
  EXPECT_EQ(shown(kAnalog, 1.01), "UNDEF");
  EXPECT_EQ(shown(0, 2.0 / 15.0), "Lumenband");
  EXPECT_STREQ(unitText(kEqFamily, offsetOf(kHi, kGain)), " dB ");
  EXPECT_STREQ(unitText(kEqFamily, offsetOf(kHi, kFreq)), " Hz ");
  EXPECT_STREQ(unitText(kEqFamily, offsetOf(kHi, kIn)), " ");
}

TEST(EqTable, TypedGainsTakeWholeRangeAndNothingElse) {
  for (const int offset : {offsetOf(kHi, kGain), offsetOf(kLo, kGain), int{kOut}}) {
    double p = -1.0;
    EXPECT_TRUE(valueFromText(kEqFamily, offset, "3", &p));
    EXPECT_DOUBLE_EQ(p, 21.0 / 36.0);
    EXPECT_TRUE(valueFromText(kEqFamily, offset, "-18", &p));
    EXPECT_EQ(p, 0.0);
    EXPECT_TRUE(valueFromText(kEqFamily, offset, "0.", &p));
    EXPECT_EQ(p, 0.5);
    for (const char* refused : {"18.1", "-18.1", "loud", ""}) {
      p = 0.25;
      EXPECT_FALSE(valueFromText(kEqFamily, offset, refused, &p)) << refused;
      EXPECT_EQ(p, 0.25);
    }
  }
  double p = 0.25;
  for (const int offset : {offsetOf(kHi, kIn), offsetOf(kHi, kShape), int{kAnalog}})
    EXPECT_FALSE(valueFromText(kEqFamily, offset, "1", &p));
  EXPECT_EQ(findRow(kEqFamily, offsetOf(kHi, kFreq))->entry.kind, Entry::Kind::search);
}

TEST(EqPresets, BringTheirOwnValuesOverTheDefaults) {
  const auto filled = [](int index, std::string& name) {
    std::array<double, 48> values{};
    char text[kTextBytes];
    modulePreset(kEqFamily, index, values.data(), text);
    name = text;
    return values;
  };
  std::string name;
  const auto defaults = filled(0, name);
  EXPECT_EQ(name, "Default");
  EXPECT_EQ(defaults[offsetOf(kHm, kShape)], 0.5);

  // A sum over what leaves its default, offset by offset, finds a value in the wrong place as well as a wrong
  // one.
  const auto weighted = [&](int index) {
    const auto values = filled(index, name);
    double sum = 0.0;
    for (std::size_t k = 0; k < values.size(); ++k) sum += static_cast<double>(k) * (values[k] - defaults[k]);
    return sum;
  };
  // HI 17,18,19  HM 20..23  LM 24..27  LO 28..31  Out 32
  EXPECT_NEAR(weighted(1), 17 * 0.015 - 18 * 0.1467 - 20 - 25 * 0.015 - 26 * 0.5 - 27 * 0.5 + 29 * 0.045 + 31,
              1e-9);
  EXPECT_EQ(name, "A little help");
  EXPECT_NEAR(weighted(2),
              -16 + 17 * 0.035 - 18 * 0.1317 - 20 - 21 * 0.125 - 22 * 0.07 - 25 * 0.181 + 26 * 0.1263 +
                  29 * 0.0646 - 30 * 0.1033,
              1e-9);
  EXPECT_NEAR(weighted(3),
              17 * 0.17 + 18 * 0.3 + 21 * 0.0554 + 22 * 0.2867 - 23 * 0.5 - 25 * 0.0339 - 26 * 0.3268 +
                  29 * 0.1634 - 30 * 0.1221 + 31,
              1e-9);
  EXPECT_NEAR(
      weighted(4),
      -17 * 0.0556 - 18 * 0.4407 + 21 * 0.0556 - 22 * 0.3037 - 25 * 0.0556 + 29 * 0.0556 + 30 * 0.2685, 1e-9);
  EXPECT_NEAR(weighted(5), 17 * 0.055 + 18 * 0.1333 + 25 * 0.09 - 26 * 0.2333 - 27 * 0.5 - 30 * 0.0067, 1e-9);
  EXPECT_NEAR(weighted(6),
              17 * 0.0564 + 18 * 0.5 - 20 + 21 * 0.1654 - 23 * 0.5 - 25 * 0.0552 - 26 * 0.5 - 27 * 0.5 +
                  29 * 0.1105 - 30 * 0.4148 + 31,
              1e-9);
  EXPECT_NEAR(weighted(7),
              -17 * 0.055 + 18 * 0.3 + 21 * 0.0654 - 22 * 0.1333 - 23 * 0.5 - 24 - 25 * 0.0339 - 26 * 0.3268 +
                  29 * 0.0684 + 30 * 0.0446 - 32 * 0.0676,
              1e-9);
  EXPECT_NEAR(weighted(8), -17 * 0.06 + 18 * 0.24 - 21 * 0.12 + 22 * 0.3533 - 25 * 0.065 + 26 * 0.1, 1e-9);
  EXPECT_EQ(name, "Telefunkenstein");
  EXPECT_NEAR(weighted(9),
              17 * 0.045 + 18 * 0.21 - 21 * 0.025 - 22 * 0.4767 + 23 * 0.5 - 25 * 0.055 - 26 * 0.0759 -
                  27 * 0.5 + 29 * 0.06 + 30 * 0.0833,
              1e-9);
  EXPECT_EQ(name, "Not so boxy");
}

}  // namespace
}  // namespace corvane::eq
