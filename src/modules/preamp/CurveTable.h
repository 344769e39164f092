#pragma once

#include <array>
#include <bit>
#include <cstdint>
#include <numbers>

namespace corvane::preamp {

/// A smooth gain law g(x), x > 0, as a table of polynomials: the powers, logarithms and arcs of the law cost
/// a dozen times as much. 16 pieces to the octave, each of ninth degree through the law's values at Chebyshev
/// points, which leaves less than a rounding (a test says 1e-15). The piece and the place in it are read off
/// the bits of x. Built once, with the law in extended precision; reading neither
/// allocates nor computes the law. [any]
class CurveTable {
 public:
  using Law = long double (*)(long double);

  /// `law` within the range 2^-18 .. 2^9; below, the gain is `atRest`, above, the law itself.
  CurveTable(Law gainLaw, double atRest);

  double operator()(double x) const {
    const auto bits = std::bit_cast<std::uint64_t>(x);
    const std::uint64_t piece = (bits >> kPlaceBits) - kFirst;
    if (piece >= kPieces) return outside(x);
    // the bits below the piece's own, as a number from 1 to 2, then from -1 to 1
    constexpr std::uint64_t kOne = 0x3FF0000000000000;
    const double t = 2.0 * std::bit_cast<double>(kOne | ((bits << kPieceBits) & kMantissa)) - 3.0;
    const std::array<double, kTerms>& c = pieces[piece];
    const double tt = t * t, t4 = tt * tt;
    return ((c[0] + c[1] * t) + (c[2] + c[3] * t) * tt) + ((c[4] + c[5] * t) + (c[6] + c[7] * t) * tt) * t4 +
           (c[8] + c[9] * t) * (t4 * t4);
  }

 private:
  static constexpr int kPieceBits = 4, kPlaceBits = 52 - kPieceBits;
  static constexpr int kLowestPower = -18, kHighestPower = 9;
  static constexpr std::uint64_t kMantissa = (std::uint64_t{1} << 52) - 1;
  static constexpr std::uint64_t kFirst = static_cast<std::uint64_t>(1023 + kLowestPower) << kPieceBits;
  static constexpr std::size_t kPieces = static_cast<std::size_t>(kHighestPower - kLowestPower) << kPieceBits;
  static constexpr std::size_t kTerms = 10;

  double outside(double x) const;

  Law law;
  double rest;
  std::array<std::array<double, kTerms>, kPieces> pieces;
};

}  // namespace corvane::preamp
