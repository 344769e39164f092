#include <gtest/gtest.h>

#include <random>

#include "lv2/RackRules.h"

namespace corvane::lv2 {
namespace {

using Positions = RackRules::Positions;
constexpr Positions kDefault{0, 1, 2, 3, 4, 5, 6, 7, 8};

TEST(RackRules, AMovedPlaceShiftsThoseBetween) {
  RackRules rack;
  Positions asked = kDefault;
  asked[3] = 0;
  rack.takePositions(asked);
  EXPECT_EQ(rack.positions(), (Positions{1, 2, 3, 0, 4, 5, 6, 7, 8}));
  asked[4] = 0;
  rack.takePositions(asked);
  EXPECT_EQ(rack.positions(), (Positions{2, 3, 4, 1, 0, 5, 6, 7, 8})) << "the one written last comes first";
  asked[3] = 8;
  rack.takePositions(asked);
  EXPECT_EQ(rack.positions(), (Positions{1, 2, 3, 8, 0, 4, 5, 6, 7}));
}

TEST(RackRules, PositionsThatAreAllDifferentAreTakenAsTheyAre) {
  const Positions wanted{8, 7, 6, 5, 4, 3, 2, 1, 0};
  RackRules together, one;
  together.takePositions(wanted);
  EXPECT_EQ(together.positions(), wanted);
  Positions asked = kDefault;
  for (const int place : {4, 0, 8, 2, 6, 1, 7, 3, 5}) {  // as a host does that sets port by port
    asked[place] = wanted[place];
    one.takePositions(asked);
  }
  EXPECT_EQ(one.positions(), wanted) << "whatever came between";
}

TEST(RackRules, NoModuleIsEverDropped) {
  std::mt19937 dice(7);
  RackRules rack;
  Positions asked = kDefault;
  for (int round = 0; round < 20000; ++round) {
    asked[dice() % kPlaces] = static_cast<int>(dice() % kPlaces);
    rack.takePositions(asked);
    Positions sorted = rack.positions();
    std::ranges::sort(sorted);
    ASSERT_EQ(sorted, kDefault);
  }
}

TEST(RackRules, OfSeveralMonitorsTheLastCounts) {
  RackRules rack;
  EXPECT_EQ(rack.monitored(), -1);
  for (const auto& [asked, expected] : {std::pair{0b1000u, 3}, {0b1010u, 1}, {0b1000u, 3}, {0u, -1}}) {
    rack.takeMonitors(asked);
    EXPECT_EQ(rack.monitored(), expected);
  }
}

TEST(RackRules, ASessionRemembersWhichWasWrittenLast) {
  RackRules rack;
  Positions asked = kDefault;
  for (const int place : {3, 4, 7}) {
    asked[place] = 0;
    rack.takePositions(asked);
  }
  rack.takeMonitors(0b100);
  rack.takeMonitors(0b101);
  RackRules restored;
  ASSERT_TRUE(restored.recall(rack.memory()));
  restored.takePositions(asked);
  restored.takeMonitors(0b101);
  EXPECT_EQ(restored.positions(), rack.positions());
  EXPECT_EQ(restored.monitored(), 0);
  RackRules::Positions other = kDefault;
  std::swap(other[0], other[1]);
  restored.takePositions(other);
  restored.takeMonitors(0);
  EXPECT_EQ(restored.positions(), other) << "the ports win";
  EXPECT_EQ(restored.monitored(), -1);
}

TEST(RackRules, AWordThatNoRackGaveIsRefused) {
  RackRules rack;
  const auto memory = rack.memory();
  for (const std::uint64_t word : {~std::uint64_t{0}, std::uint64_t{0}, memory + 1, std::uint64_t{1} << 63})
    EXPECT_FALSE(rack.recall(word)) << word;
  EXPECT_EQ(rack.memory(), memory);
}

}  // namespace
}  // namespace corvane::lv2
