#include "modules/compressor/CompressorTable.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>

#include "modules/compressor/CompressorFamily.h"
#include "tests/rig/FamilyText.h"

namespace corvane {
namespace {

using namespace compressor;

std::string shown(int offset, double p) { return rig::shownBy(kCompressorFamily, offset, p); }

std::optional<double> typedAs(int offset, const char* text) {
  double p = -7.0;
  if (valueFromText(kCompressorFamily, offset, text, &p)) return p;
  EXPECT_EQ(p, -7.0) << "a refused text must leave the value alone";
  return std::nullopt;
}

TEST(CompressorTable, TapersComeBack) {
  for (const Row& row : kRows) {
    if (row.steps != kContinuous) continue;
    for (double p = 0.0; p < 1.0; p += 1.0 / 256.0)  // 1e-13: 1 - 1 / ratio loses digits near 1:1
      EXPECT_NEAR(row.taper.normalised(row.taper.physical(p)), p, 1e-13) << row.name;
  }
}

TEST(CompressorTable, ShowsWhatTheEngineerSets) {
  EXPECT_EQ(shown(kAttack, 0.0), "0.1");
  EXPECT_EQ(shown(kAttack, 1.0), "100.0");
  EXPECT_EQ(shown(kRelease, 0.5), "250.0");
  EXPECT_EQ(shown(kThreshold, 0.0), "-40.0");
  EXPECT_EQ(shown(kThreshold, 0.5), "-15.0");
  EXPECT_EQ(shown(kMakeupGain, 0.145), "2.9");
  EXPECT_EQ(shown(kMix, 1.0), "100%");
  EXPECT_EQ(shown(kMix, 0.07), " 7%");
  EXPECT_EQ(shown(kHpf, 0.0), "Off");
  EXPECT_EQ(shown(kHpf, 0.5), "100");
  EXPECT_EQ(shown(kHpf, 1.0), "1k");
  EXPECT_EQ(shown(kLink, 1.0), "");
  EXPECT_EQ(shown(kTypeOffset, 0.0), "-");
  EXPECT_EQ(shown(kTypeOffset, 2.0 / 15.0), "FET Clamper");
  EXPECT_EQ(shown(kSideChainOffset, 0.16), "Input");
  for (double p : {0.17, 0.5, 1.0}) EXPECT_EQ(shown(kSideChainOffset, p), "Ext AUX") << p;
  for (int offset : {kAttack, kRatio, kHpf}) {
    EXPECT_EQ(shown(offset, -0.001), "UNDEF");
    EXPECT_EQ(shown(offset, 1.001), "UNDEF");
  }
}

TEST(CompressorTable, RatioIsShownToUsefulDigitsAndAsALimiterAtTheTop) {
  EXPECT_EQ(shown(kRatio, 0.0), "1.00:1");
  EXPECT_EQ(shown(kRatio, *typedAs(kRatio, "1.5")), "1.50:1");
  EXPECT_EQ(shown(kRatio, *typedAs(kRatio, "4:1")), "4.0:1");
  EXPECT_EQ(shown(kRatio, *typedAs(kRatio, "20")), "20:1");
  EXPECT_EQ(shown(kRatio, 0.976072), "100:1");
  EXPECT_EQ(shown(kRatio, 0.976073), "oo:1");
  EXPECT_EQ(shown(kRatio, 1.0), "oo:1");
}

TEST(CompressorTable, TakesTheTypedFormsOfARatio) {
  for (const char* limiter : {"oo", "oo:1", "92.1", "1000:1"})
    EXPECT_EQ(typedAs(kRatio, limiter), 1.0) << limiter;
  EXPECT_EQ(typedAs(kRatio, "1:1"), 0.0);
  EXPECT_LT(*typedAs(kRatio, "92"), 1.0);
  for (const char* refused : {"0.99", "0", "", "o", "-4"}) EXPECT_FALSE(typedAs(kRatio, refused)) << refused;
}

TEST(CompressorTable, TypedZerosMustLookLikeOne) {
  for (const char* zero : {"0", "0.", "0.0", "0.00 dB"}) {
    EXPECT_EQ(typedAs(kMakeupGain, zero), 0.0) << zero;
    EXPECT_EQ(typedAs(kThreshold, zero), 0.8) << zero;
  }
  for (const char* zero : {"0", "0%", "0% wet"}) EXPECT_EQ(typedAs(kMix, zero), 0.0) << zero;
  for (int offset : {kThreshold, kMakeupGain, kMix, kAttack})
    for (const char* word : {"", "off", "dB", "-"}) EXPECT_FALSE(typedAs(offset, word)) << offset << word;
  EXPECT_FALSE(typedAs(kMix, "0.0"));
}

TEST(CompressorTable, TypedNumbersEndWhereTheDialsEnd) {
  struct Dial {
    int offset;
    const char *lowest, *highest, *below, *above;
  };
  for (const Dial& dial :
       {Dial{kAttack, "0.1", "100", "0.0999", "100.1"}, Dial{kRelease, "25", "2500", "24.9", "2501"},
        Dial{kThreshold, "-40", "10", "-40.1", "10.1"}, Dial{kMakeupGain, "0", "20", "-0.1", "20.1"},
        Dial{kMix, "0%", "100%", "-1", "101"}, Dial{kHpf, "10", "1k", "9.9", "1k1"}}) {
    // 1e-15: a quotient of two logarithms
    EXPECT_NEAR(*typedAs(dial.offset, dial.lowest), 0.0, 1e-15) << dial.offset;
    EXPECT_NEAR(*typedAs(dial.offset, dial.highest), 1.0, 1e-15) << dial.offset;
    EXPECT_FALSE(typedAs(dial.offset, dial.below)) << dial.offset;
    EXPECT_FALSE(typedAs(dial.offset, dial.above)) << dial.offset;
  }
  EXPECT_EQ(typedAs(kHpf, "Off"), 0.0);
  EXPECT_NEAR(*typedAs(kHpf, "0k5"), std::log(50.0) / std::log(100.0), 1e-15);
  EXPECT_FALSE(typedAs(kLink, "1"));
}

TEST(CompressorTable, PresetsHoldTheirValuesOverTheDefaults) {
  double values[32];
  char name[kTextBytes];
  const auto own = [&](int index) {
    modulePreset(kCompressorFamily, index, values, name);
    return std::vector<double>(values + kAttack, values + kLink + 1);
  };
  const std::vector<double> defaults{0.5, 0.5, 0.5, 0.5, 1.0, 0.145, 0.5, 1.0};
  EXPECT_EQ(own(0), defaults);
  EXPECT_STREQ(name, "Default");
  EXPECT_EQ(own(10), defaults);
  EXPECT_STREQ(name, "Init");
  EXPECT_EQ(own(3), (std::vector<double>{0.159, 0.301, 0.68, 0.7249, 0.75, 0.3, 1.0, 1.0}));
  EXPECT_STREQ(name, "Master Track");
  EXPECT_EQ(own(8), (std::vector<double>{0.0, 0.0, 0.56, 0.921, 1.0, 0.6, 0.0, 1.0}));
  EXPECT_STREQ(name, "Destructor");
  EXPECT_EQ(own(9), (std::vector<double>{0.3, 0.4, 0.62, 0.856, 0.5, 0.45, 0.5, 1.0}));
  EXPECT_STREQ(name, "Parallel");
  for (int offset : {0, 15, 24, 31}) EXPECT_EQ(values[offset], 0.0) << offset;
}

}  // namespace
}  // namespace corvane
