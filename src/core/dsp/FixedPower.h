#pragma once

#include <array>
#include <bit>
#include <cmath>
#include <cstdint>

namespace corvane {

/// x^y for one exponent y from 0 to 2 and finite x >= 0, within 1.5e-15: for a recursion that must wait for
/// the result, in half the time of the general function.
///
///   x = 2^k m,  m = c (1 + t) with c the middle of one of 256 cells:  x^y = 2^(k y) c^y (1 + t)^y
///
/// The first two factors are looked up, the third is four terms of its series beyond 1; for |t| <= 1/512 the
/// fifth is below 9e-16. Denormal x counts as 0. 20 KB; build it ahead of the sound.
class FixedPower {
 public:
  explicit FixedPower(double exponent) {
    double term = 1.0;
    for (std::size_t n = 0; n < series.size(); ++n)
      series[n] = term *= (exponent - static_cast<double>(n)) / static_cast<double>(n + 1);
    for (std::size_t j = 0; j < kCells; ++j) {
      const double inverse = 1.0 / (1.0 + (static_cast<double>(j) + 0.5) / kCells);
      cells[j] = {inverse, std::pow(inverse, -exponent)};
    }
    for (std::size_t k = 0; k < scales.size(); ++k) {
      // k y would lose digits of its fraction in a double
      const long double shift = static_cast<long double>(exponent) * (static_cast<long double>(k) - 1023.0L);
      scales[k] = static_cast<double>(std::exp2(shift));
    }
    scales.front() = std::pow(0.0, exponent);
  }

  double operator()(double x) const {
    constexpr int kMantissaBits = 52, kCellBits = 8;
    constexpr std::uint64_t kMantissa = (std::uint64_t{1} << kMantissaBits) - 1;
    const auto bits = std::bit_cast<std::uint64_t>(x);
    const Cell& cell = cells[(bits & kMantissa) >> (kMantissaBits - kCellBits)];
    const double m = std::bit_cast<double>((bits & kMantissa) | std::bit_cast<std::uint64_t>(1.0));
    const double middle = scales[bits >> kMantissaBits & 0x7FF] * cell.power;
    return beside(middle, m * cell.inverse - 1.0);
  }

  /// `factor` (guess + difference)^y within 1.5e-15. For a recursion that knows a guess earlier than the
  /// difference: all but the series then happens while it waits. Worth it for differences below 1/512 of the
  /// guess.
  double operator()(double guess, double difference, double factor) const {
    const double t = difference * (1.0 / guess);
    if (guess > 0.0 && std::abs(t) <= kReach) [[likely]]
      return beside(factor * (*this)(guess), t);
    return factor * (*this)(guess + difference);
  }

 private:
  static constexpr double kReach = 1.0 / 512.0;  // of the series

  /// `power` times (1 + t)^y, by the shortest way from t to the result.
  double beside(double power, double t) const {
    const double t1 = power * t, t3 = t1 * (t * t);
    return (power + t1 * (series[0] + series[1] * t)) + t3 * (series[2] + series[3] * t);
  }

  static constexpr std::size_t kCells = 256;
  struct Cell {
    double inverse, power;  ///< 1 / c and c^y
  };
  std::array<double, 4> series{};
  std::array<Cell, kCells> cells{};
  std::array<double, 2048> scales{};  ///< 2^(k y) by the bits of the exponent
};

}  // namespace corvane
