#include "modules/preamp/CurveTable.h"

#include <cmath>

namespace corvane::preamp {

namespace {

/// Polynomial in powers of t through `values` at the Chebyshev points cos(pi (k + 1/2) / n) of -1 .. 1.
template <std::size_t n>
std::array<double, n> throughChebyshevPoints(const std::array<long double, n>& values) {
  using Polynomial = std::array<long double, n>;
  constexpr long double kPi = std::numbers::pi_v<long double>;
  Polynomial sum{}, older{}, old{};  // T_j from T_0 = 1, T_1 = t, T_{j+1} = 2 t T_j - T_{j-1}
  for (std::size_t j = 0; j < n; ++j) {
    Polynomial next{};
    if (j == 0) {
      next[0] = 1.0L;
    } else {
      for (std::size_t power = 1; power < n; ++power) next[power] = (j == 1 ? 1.0L : 2.0L) * old[power - 1];
      if (j > 1)
        for (std::size_t power = 0; power < n; ++power) next[power] -= older[power];
    }
    long double weight = 0.0L;
    for (std::size_t k = 0; k < n; ++k)
      weight += values[k] * std::cos(static_cast<long double>(j) * kPi *
                                     (static_cast<long double>(k) + 0.5L) / static_cast<long double>(n));
    weight *= (j == 0 ? 1.0L : 2.0L) / static_cast<long double>(n);
    for (std::size_t power = 0; power < n; ++power) sum[power] += weight * next[power];
    older = old, old = next;
  }
  std::array<double, n> rounded{};
  for (std::size_t power = 0; power < n; ++power) rounded[power] = static_cast<double>(sum[power]);
  return rounded;
}

}  // namespace

CurveTable::CurveTable(Law gainLaw, double atRest) : law(gainLaw), rest(atRest) {
  constexpr long double kPi = std::numbers::pi_v<long double>;
  for (std::size_t piece = 0; piece < kPieces; ++piece) {
    const auto from = static_cast<long double>(
        std::bit_cast<double>((static_cast<std::uint64_t>(piece) + kFirst) << kPlaceBits));
    const auto to = static_cast<long double>(
        std::bit_cast<double>((static_cast<std::uint64_t>(piece) + kFirst + 1) << kPlaceBits));
    std::array<long double, kTerms> values;
    for (std::size_t k = 0; k < kTerms; ++k) {
      const long double t =
          std::cos(kPi * (static_cast<long double>(k) + 0.5L) / static_cast<long double>(kTerms));
      values[k] = law(0.5L * (from + to) + 0.5L * (to - from) * t);
    }
    const std::array<double, kTerms> terms = throughChebyshevPoints(values);
    for (std::size_t k = 0; k < kTerms; k += 2) pieces[piece].terms[k / 2] = Pair{terms[k], terms[k + 1]};
  }
}

double CurveTable::outside(double x) const {
  return x < 1.0 ? rest : static_cast<double>(law(static_cast<long double>(x)));
}

}  // namespace corvane::preamp
