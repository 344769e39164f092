#pragma once

#include <array>
#include <bit>
#include <cstdint>
#include <numbers>

#include "core/dsp/Pair.h"

namespace corvane::preamp {

/// A smooth gain law g(x), x > 0, as a table of polynomials: the powers, logarithms and arcs of the law cost
/// a dozen times as much. 32 pieces to the octave, each of seventh degree through the law's values at
/// Chebyshev points, which leaves less than a rounding (a test says 1e-15). The piece and the place in it are
/// read off the bits of x; a piece is one line of the cache. Built once, with the law in extended precision;
/// reading neither allocates nor computes the law. [any]
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
    // even powers in lane 0, odd ones in lane 1
    const auto& c = pieces[piece].terms;
    const Pair tt = both(t * t), t4 = tt * tt;
    const Pair sum = (c[0] + c[1] * tt) + (c[2] + c[3] * tt) * t4;
    return sum[0] + sum[1] * t;
  }

 private:
  static constexpr int kPieceBits = 5, kPlaceBits = 52 - kPieceBits;
  static constexpr int kLowestPower = -18, kHighestPower = 9;
  static constexpr std::uint64_t kMantissa = (std::uint64_t{1} << 52) - 1;
  static constexpr std::uint64_t kFirst = static_cast<std::uint64_t>(1023 + kLowestPower) << kPieceBits;
  static constexpr std::size_t kPieces = static_cast<std::size_t>(kHighestPower - kLowestPower) << kPieceBits;
  static constexpr std::size_t kTerms = 8;

  struct alignas(64) Piece {
    Pair terms[kTerms / 2];  ///< factors of 1 and t, of t^2 and t^3, ...
  };

  double outside(double x) const;

  Law law;
  double rest;
  std::array<Piece, kPieces> pieces;
};

}  // namespace corvane::preamp
