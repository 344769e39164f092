#include <gtest/gtest.h>

#include <string>

#include "modules/gate/GateFamily.h"
#include "modules/gate/GateTable.h"
#include "tests/rig/FamilyText.h"

namespace corvane {
namespace {

std::string shown(int offset, double p) { return rig::shownBy(kGateFamily, offset, p); }

/// Normalised value of a typed text, -1 where it is refused.
double read(int offset, const char* text) {
  double p = -1.0;
  const bool taken = valueFromText(kGateFamily, offset, text, &p);
  EXPECT_EQ(taken, p >= 0.0) << "a refused text must leave the value alone";
  return p;
}

TEST(GateTable, ShowsWhatTheDialsMean) {
  EXPECT_EQ(shown(0, 2.0 / 15.0), "Gate");
  EXPECT_EQ(shown(0, 0.0), "-");
  EXPECT_EQ(shown(kSideChainOffset, 1.0), "Ext AUX");
  EXPECT_EQ(shown(kMonitorOffset, 0.5), "On");
  EXPECT_EQ(shown(gate::kAttack, 0.0), "0.1");
  EXPECT_EQ(shown(gate::kAttack, 0.5), "5.0");
  EXPECT_EQ(shown(gate::kRelease, 1.0), "3000");
  EXPECT_EQ(shown(gate::kHold, 0.0), " 0.0");
  EXPECT_EQ(shown(gate::kHold, 0.1), " 4.0");
  EXPECT_EQ(shown(gate::kHold, 1.0), "400.0");
  EXPECT_EQ(shown(gate::kThreshold, 0.0), "-60.0");
  EXPECT_EQ(shown(gate::kThreshold, 1.0), "0.0");
  EXPECT_EQ(shown(gate::kShape, 0.0), "-100.0");
  EXPECT_EQ(shown(gate::kShape, 0.7486), "50.0");
  EXPECT_EQ(shown(gate::kRange, 0.5), "-12.0");
  EXPECT_EQ(shown(gate::kRange, 0.03), "-oo");  // p * p = 0.0009
  EXPECT_EQ(shown(gate::kRange, 0.032), "-59.8");
  EXPECT_EQ(shown(gate::kHpfIn, 1.0), "In");
  EXPECT_EQ(shown(gate::kHpfFreq, 1.0), "8000");
  EXPECT_EQ(shown(gate::kLpfFreq, 0.0), "50");
  EXPECT_EQ(shown(gate::kAttack, 1.01), "UNDEF");
}

TEST(GateTable, EveryStepOfTheRatioIsShownAndTyped) {
  constexpr const char* kShown[] = {"1:1.0", "1:1.1", "1:1.2", "1:1.3", "1:1.5", "1:1.7",
                                    "1:2.0", "1:2.5", "1:3.2", "1:5.0", "1:10.0"};
  for (int step = 0; step <= 10; ++step) {
    EXPECT_EQ(shown(gate::kRatio, step / 10.0), kShown[step]);
    EXPECT_EQ(read(gate::kRatio, kShown[step]), step * 0.1);
    EXPECT_EQ(read(gate::kRatio, kShown[step] + 2), step * 0.1);
  }
  EXPECT_EQ(read(gate::kRatio, "1:1.099"), 0.0);
  EXPECT_EQ(read(gate::kRatio, "9.99"), 9 * 0.1);
  EXPECT_EQ(read(gate::kRatio, "0.9"), -1.0);
  EXPECT_EQ(read(gate::kRatio, "1:10.1"), -1.0);
}

TEST(GateTable, TypedValuesComeBackAndWhatIsOutOfRangeIsRefused) {
  struct Case {
    int offset;
    const char *low, *high, *below, *above;
  };
  for (const Case& c : {Case{gate::kAttack, "0.1", "250", "0.09", "251"},
                        {gate::kRelease, "10", "3000", "9.9", "3001"},
                        {gate::kHold, "0.0", "400", "-0.1", "400.1"},
                        {gate::kThreshold, "-60", "0", "-60.1", "0.1"},
                        {gate::kShape, "-100", "100", "-101", "101"},
                        {gate::kHpfFreq, "20", "8k", "19", "8k1"},
                        {gate::kLpfFreq, "50", "20k", "49", "20001"}}) {
    EXPECT_NEAR(read(c.offset, c.low), 0.0, 1e-15) << c.low;
    EXPECT_NEAR(read(c.offset, c.high), 1.0, 1e-15) << c.high;
    EXPECT_EQ(read(c.offset, c.below), -1.0) << c.below;
    EXPECT_EQ(read(c.offset, c.above), -1.0) << c.above;
    EXPECT_EQ(read(c.offset, "loud"), -1.0);
  }
  EXPECT_EQ(read(gate::kHold, "100"), 0.5);
  EXPECT_EQ(read(gate::kShape, "0.0"), 0.5);
  EXPECT_EQ(shown(gate::kLpfFreq, read(gate::kLpfFreq, "2k5")), "2500");
  EXPECT_EQ(read(gate::kRange, "-oo"), 0.0);
  EXPECT_EQ(read(gate::kRange, "oo"), 0.0);
  EXPECT_EQ(read(gate::kRange, "-60"), 0.0);
  EXPECT_EQ(read(gate::kRange, "0"), 1.0);
  EXPECT_EQ(shown(gate::kRange, read(gate::kRange, "-24")), "-24.0");
  EXPECT_EQ(read(gate::kRange, "3"), -1.0);
  EXPECT_EQ(read(gate::kRange, ""), -1.0);
  EXPECT_EQ(read(gate::kHpfIn, "In"), -1.0);
}

TEST(GateTable, PresetsAreTheDefaultsAndWhatTheyName) {
  double values[32];
  char name[kTextBytes];
  modulePreset(kGateFamily, 8, values, name);
  EXPECT_STREQ(name, "Hi-Hat 1");
  const double expected[] = {0.0, 0.4125, 0.5897, 0.5624, 0.6781, 0.386, 0.4336, 1.0, 0.2314, 1.0, 0.7893};
  for (int k = 0; k < 11; ++k) EXPECT_EQ(values[gate::kAttack + k], expected[k]) << k;
  modulePreset(kGateFamily, 10, values, name);
  EXPECT_STREQ(name, "XXX");
  for (int offset = gate::kAttack; offset <= gate::kLpfFreq; ++offset) EXPECT_EQ(values[offset], 0.5);
  modulePreset(kGateFamily, 11, values, name);
  EXPECT_STREQ(name, "Init");
  EXPECT_EQ(values[gate::kLpfFreq], 1.0);
  EXPECT_EQ(values[gate::kRange], 0.0);
}

}  // namespace
}  // namespace corvane
