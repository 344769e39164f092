#include "core/dsp/FixedPower.h"

#include <gtest/gtest.h>

#include <limits>
#include <random>

#include "core/dsp/Flush.h"

namespace corvane {
namespace {

// 1.5e-15: the term left out, and a few roundings of 1.1e-16.
TEST(FixedPower, IsThePowerOverTheWholeRange) {
  std::mt19937_64 engine(3);
  std::uniform_real_distribution<double> decades(-150.0, 150.0), shift(-1.0 / 256.0, 1.0 / 256.0);
  for (double y : {0.1, 0.4, 1.4, 2.0}) {
    const FixedPower power(y);
    for (int n = 0; n < 20000; ++n) {
      const double x = std::pow(10.0, decades(engine)), difference = shift(engine) * x;
      const auto error = [y](double result, long double base) {
        const long double exact = std::pow(base, static_cast<long double>(y));
        return std::abs(static_cast<double>((static_cast<long double>(result) - exact) / exact));
      };
      ASSERT_LT(error(power(x), x), 1.5e-15) << x << "^" << y;
      // half of the differences are beyond the reach of the series and take the plain road
      ASSERT_LT(error(power(x, difference, 1.0), static_cast<long double>(x) + difference), 1.5e-15)
          << x << "^" << y;
    }
    EXPECT_EQ(power(0.0), std::pow(0.0, y));
  }
}

TEST(FixedPower, GuessMayBeZeroOrBelow) {
  const FixedPower power(1.4);
  EXPECT_EQ(power(0.0, 2.0, 3.0), 3.0 * power(2.0));
  EXPECT_EQ(power(-1.0, 3.0, 3.0), 3.0 * power(2.0));
  EXPECT_EQ(power(0.0, 0.0, 3.0), 0.0);
  EXPECT_NEAR(power(2.0, 1e-3, 3.0), 3.0 * power(2.001), 1e-14);
}

TEST(Flush, NearZeroActsAsTheFullFlushAndElsewhereStaysWithinItsRounding) {
  constexpr double e = 1e-18;
  for (double v : {0.0, 1e-300, -3e-20, 1e-13, -9e-13}) EXPECT_EQ(flushedNearZero(v, e), flushed(v, e)) << v;
  for (double v : {1.1e-12, -1e-6, 0.3, 70.0}) {
    EXPECT_EQ(flushedNearZero(v, e), v);
    EXPECT_NEAR(flushed(v, e), v, std::abs(v) * std::numeric_limits<double>::epsilon()) << v;
  }
}

}  // namespace
}  // namespace corvane
