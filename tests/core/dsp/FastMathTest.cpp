#include "core/dsp/FastMath.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <random>
#include <vector>

namespace corvane {
namespace {

using Real = long double;  // 64 bits of mantissa: its own error is 2000 times below what is measured

struct Span {
  double low, high;
  bool ratios = false;  // equal ratios instead of equal steps
};

std::vector<double> arguments(const Span& span) {
  constexpr int kArguments = 40000;
  std::mt19937_64 engine(7);
  const double low = span.ratios ? std::log(span.low) : span.low;
  const double high = span.ratios ? std::log(span.high) : span.high;
  std::uniform_real_distribution<double> draw(low, high);
  std::vector<double> x(kArguments);
  for (double& v : x) v = span.ratios ? std::exp(draw(engine)) : draw(engine);
  return x;
}

/// Largest error of `fast`, as a share of `exact`. Walks the arguments as an array, which the compiler may
/// run several lanes wide, and one at a time: the bits must be the same.
template <typename Fast, typename Exact>
double worstError(const Span& span, Fast fast, Exact exact) {
  const std::vector<double> x = arguments(span);
  std::vector<double> wide(x.size());
  for (std::size_t i = 0; i < x.size(); ++i) wide[i] = fast(x[i]);
  double worst = 0.0;
  for (std::size_t i = 0; i < x.size(); ++i) {
    volatile double argument = x[i];
    const double single = fast(argument);
    EXPECT_EQ(std::memcmp(&single, &wide[i], sizeof single), 0) << "at " << x[i];
    const Real wanted = exact(static_cast<Real>(x[i]));
    worst = std::max(worst, static_cast<double>(std::abs((static_cast<Real>(wide[i]) - wanted) / wanted)));
  }
  return worst;
}

// The bounds are the figures of the header: two to four roundings of 1.1e-16 each. A coefficient off by one
// in its 15th digit, or a lost low part of a constant, exceeds them.

TEST(FastMath, ExponentialsKeepTheirErrors) {
  for (Span span : {Span{-1022.0, 1023.9}, Span{-1.0, 1.0}})
    EXPECT_LT(worstError(
                  span, [](double x) { return fast::exp2(x); }, [](Real x) { return std::exp2(x); }),
              3e-16);
  for (Span span : {Span{-708.0, 709.0}, Span{-1.0, 1.0}})
    EXPECT_LT(worstError(
                  span, [](double x) { return fast::exp(x); }, [](Real x) { return std::exp(x); }),
              4e-16);
  for (Span span : {Span{-307.0, 308.0}, Span{-2.0, 2.0}})
    EXPECT_LT(
        worstError(
            span, [](double x) { return fast::pow10(x); }, [](Real x) { return std::pow(Real{10}, x); }),
        4e-16);
}

TEST(FastMath, LogarithmsKeepTheirErrorsThroughTheirZero) {
  for (Span span : {Span{1e-307, 1e308, true}, Span{0.5, 2.0}, Span{1.0 - 1e-9, 1.0 + 1e-9}}) {
    EXPECT_LT(worstError(
                  span, [](double x) { return fast::log(x); }, [](Real x) { return std::log(x); }),
              4e-16);
    EXPECT_LT(worstError(
                  span, [](double x) { return fast::log2(x); }, [](Real x) { return std::log2(x); }),
              5e-16);
    EXPECT_LT(worstError(
                  span, [](double x) { return fast::log10(x); }, [](Real x) { return std::log10(x); }),
              5e-16);
  }
}

TEST(FastMath, PowerErrsWithTheSizeOfItsResultAlone) {
  for (double y : {0.4, 0.7, 1.4, 2.5, -3.0})
    for (Span span : {Span{1e-3, 1e3, true}, Span{1e-30, 1e30, true}}) {
      const double bits = std::abs(y) * std::log2(span.high);
      EXPECT_LT(
          worstError(
              span, [y](double x) { return fast::pow(x, y); }, [y](Real x) { return std::pow(x, Real(y)); }),
          4e-16 * (1.0 + bits))
          << y;
    }
}

TEST(FastMath, TanhAndAtanKeepTheirErrorsDownToTheSmallestArguments) {
  for (Span span : {Span{1e-300, 30.0, true}, Span{-2.0, 2.0}, Span{-0.4, 0.4}})
    EXPECT_LT(worstError(
                  span, [](double x) { return fast::tanh(x); }, [](Real x) { return std::tanh(x); }),
              7e-16);
  for (Span span : {Span{1e-300, 1e300, true}, Span{-4.0, 4.0}})
    EXPECT_LT(worstError(
                  span, [](double x) { return fast::atan(x); }, [](Real x) { return std::atan(x); }),
              4e-16);
}

TEST(FastMath, AnglesKeepTheirErrorsNearTheZerosToo) {
  for (Span span : {Span{1e-300, 3.0, true}, Span{-4.0, 4.0}, Span{-1e5, 1e5}}) {
    EXPECT_LT(worstError(
                  span, [](double x) { return fast::sinCos(x).sin; }, [](Real x) { return std::sin(x); }),
              4e-16);
    EXPECT_LT(worstError(
                  span, [](double x) { return fast::sinCos(x).cos; }, [](Real x) { return std::cos(x); }),
              4e-16);
    EXPECT_LT(worstError(
                  span, [](double x) { return fast::tan(x); }, [](Real x) { return std::tan(x); }),
              6e-16);
  }
}

CORVANE_WIDE_LOOPS void widest(const double* x, int count, double* y) {
  for (int i = 0; i < count; ++i)
    y[i] = fast::tanh(fast::pow(x[i], 1.4)) + fast::log10(x[i]) * fast::atan(x[i]);
}

TEST(FastMath, WidestLanesGiveTheSameBits) {
  const std::vector<double> x = arguments({1e-6, 1e3, true});
  std::vector<double> y(x.size());
  widest(x.data(), static_cast<int>(x.size()), y.data());
  for (std::size_t i = 0; i < x.size(); ++i) {
    volatile double v = x[i];
    ASSERT_EQ(y[i], fast::tanh(fast::pow(v, 1.4)) + fast::log10(v) * fast::atan(v)) << "at " << x[i];
  }
}

TEST(FastMath, EndsOfTheRangeAreWhatTheHeaderSays) {
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  const double notANumber = std::nan("");
  EXPECT_EQ(fast::exp2(-1022.0), 0x1p-1022);
  EXPECT_EQ(fast::exp2(std::nextafter(-1022.0, -2000.0)), 0.0);
  EXPECT_EQ(fast::exp2(1024.0), kInfinity);
  EXPECT_TRUE(std::isfinite(fast::exp2(std::nextafter(1024.0, 0.0))));
  for (auto exponential : {fast::exp2, fast::exp, fast::pow10}) {
    for (double x : {-kInfinity, -1e300, -5000.0}) EXPECT_EQ(exponential(x), 0.0) << x;
    for (double x : {kInfinity, 1e300, 5000.0}) EXPECT_EQ(exponential(x), kInfinity) << x;
    EXPECT_EQ(exponential(0.0), 1.0);
    EXPECT_TRUE(std::isnan(exponential(notANumber)));
  }
  for (auto logarithm : {fast::log, fast::log2, fast::log10}) {
    EXPECT_EQ(logarithm(0.0), -kInfinity);
    EXPECT_EQ(logarithm(-0.0), -kInfinity);
    EXPECT_EQ(logarithm(kInfinity), kInfinity);
    EXPECT_EQ(logarithm(1.0), 0.0);
    EXPECT_TRUE(std::isnan(logarithm(-1e-300)));
    EXPECT_TRUE(std::isnan(logarithm(notANumber)));
  }
  const double denormal = fast::log2(5e-324);
  EXPECT_TRUE(denormal >= -1023.0 && denormal <= -1022.0);
  EXPECT_EQ(fast::pow(0.0, 0.4), 0.0);
  EXPECT_EQ(fast::pow(0.0, 0.0), 1.0);
  EXPECT_EQ(fast::pow(3.0, 0.0), 1.0);
  for (double x : {20.0, 1e300, kInfinity}) {
    EXPECT_EQ(fast::tanh(x), 1.0);
    EXPECT_EQ(fast::tanh(-x), -1.0);
  }
  EXPECT_EQ(fast::atan(kInfinity), std::atan(kInfinity));
  for (auto odd : {fast::tanh, fast::atan}) {
    EXPECT_TRUE(std::signbit(odd(-0.0)));
    EXPECT_EQ(odd(-0.3), -odd(0.3));
    EXPECT_TRUE(std::isnan(odd(notANumber)));
  }
}

}  // namespace
}  // namespace corvane
