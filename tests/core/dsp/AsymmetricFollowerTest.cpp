#include "core/dsp/AsymmetricFollower.h"

#include <gtest/gtest.h>

#include <vector>

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

}  // namespace
}  // namespace corvane
