#include "core/dsp/AsymmetricFollower.h"

#include <gtest/gtest.h>

#include <vector>

#include "tests/rig/Signals.h"

namespace corvane {
namespace {

TEST(AsymmetricFollower, RisesByItsCoefficientAndFallsByTheRoot) {
  AsymmetricFollower follower{0.0, 0.04};
  const std::vector<double> up(25, 1.0), down(3, 0.0);
  follower.followBlock(up.data(), 25);
  // 1e-15: 25 roundings of values near 1
  EXPECT_NEAR(follower.level, 1.0 - std::pow(0.96, 25), 1e-15);
  const double top = follower.level;
  follower.followBlock(down.data(), 3);
  EXPECT_NEAR(follower.level, top * std::pow(0.8, 3), 1e-15);
}

// Rises, falls, both mixed, a level that has arrived: every length of a block, from every level.
TEST(AsymmetricFollower, BlocksEqualOneSampleAfterTheOther) {
  for (const double lowest : {0.0, 0.5, 0.99, 1.0})
    for (const double share : {1e-5, 1.5e-4, 0.04, 1.0}) {
      rig::Samples gains = rig::noise(1.0 - lowest, 0.1, 48000.0);
      for (double& gain : gains) gain = 1.0 - std::abs(gain);
      AsymmetricFollower follower{1.0, share};
      double expected = follower.level;
      for (std::size_t at = 0, length = 0; at + length <= gains.size();
           at += length, length = (length + 1) % 65) {
        follower.followBlock(gains.data() + at, static_cast<int>(length));
        for (std::size_t n = at; n < at + length; ++n)
          expected = AsymmetricFollower::next(expected, gains[n], share, std::sqrt(share));
        // 1e-13: a rounding of 1e-16 for each of the samples that the level remembers, 1e5 at most
        ASSERT_NEAR(follower.level, expected, 1e-13) << "share " << share << ", gains from " << lowest;
      }
    }
}

}  // namespace
}  // namespace corvane
