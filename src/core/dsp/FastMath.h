#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <limits>

// Exponentials, logarithms and friends for gain laws: inline, a few units in the last place, and the same
// bits one at a time or over an array. A loop over an array of independent values runs two lanes wide on any
// x86-64, four where AVX2 is allowed, since nothing here branches, looks up a table or needs a rounding
// instruction. Over arrays two lanes take from a quarter (10^x) to nine tenths (log2) of the time of std::,
// four lanes half of that. One result that waits for the one before gains for tanh and atan alone, so a
// recursion should look for what need not be inside it.
//
// Every function splits its argument into a whole number, which moves into or out of the exponent bits, and a
// small rest, for which a polynomial serves. The polynomials come from FastMathCoefficients.py, which fits
// them with 60 digits; their own error is at most 2e-17, so what remains is the rounding of the few last
// operations. "Within" is the largest error as a share of the result, which a test keeps. Not-a-number gives
// not-a-number.

/// Before a function whose time goes into loops over arrays: it is compiled for AVX2 as well, and the loader
/// picks. The bits are the same, since neither form contracts a product and a sum. Not under the sanitizers,
/// whose runtime is not there yet when the loader picks. Add [[gnu::flatten]] where it calls functions of its
/// own file: a wide form that calls a narrow one is slower than either.
#if defined(__x86_64__) && defined(__GNUC__) && !defined(__clang__) && !defined(__SANITIZE_ADDRESS__) && \
    !defined(__SANITIZE_THREAD__)
#define CORVANE_WIDE_LOOPS __attribute__((target_clones("avx2", "default")))
#else
#define CORVANE_WIDE_LOOPS
#endif

namespace corvane::fast {

namespace detail {

inline constexpr double kInfinity = std::numeric_limits<double>::infinity();
inline constexpr double kNotANumber = std::numeric_limits<double>::quiet_NaN();

// clang-format off
inline constexpr std::array kExp2{  // (2^r - 1) / r for |r| <= 1/2
    0.6931471805599453, 0.24022650695910097, 0.0555041086648216, 0.009618129107606885, 0.0013333558146416933,
    0.00015403530441741856, 1.5252733829839213e-05, 1.3215442584382707e-06, 1.0178062443959398e-07,
    7.072586657066206e-09, 4.454960975460706e-10};
inline constexpr std::array kExpm1{  // (e^r - 1 - r) / r^2 for |r| <= ln(2) / 2
    0.5, 0.1666666666666667, 0.04166666666666667, 0.008333333333326136, 0.0013888888888883748,
    0.00019841269874820627, 2.4801587325547743e-05, 2.7557255400206422e-06, 2.75572736431103e-07,
    2.5105217004720745e-08, 2.0914686968086876e-09};
inline constexpr std::array kLog{  // (2 atanh(s) - 2 s) / s^3 in s^2, for |s| <= (sqrt 2 - 1) / (sqrt 2 + 1)
    0.666666666666667, 0.39999999999899444, 0.2857142862600327, 0.22222211130259878, 0.18182889455674947,
    0.15331710618210773, 0.14616585424888623};
inline constexpr std::array kAtan{  // (atan(t) - t) / t^3 in t^2, for |t| <= sqrt 2 - 1
    -0.3333333333333333, 0.19999999999999804, -0.14285714285659779, 0.11111111105150588, -0.09090908753259112,
    0.07692296368042296, -0.0666642476020052, 0.05878927554473807, -0.05230443640686948, 0.045515447340221615,
    -0.03456931506332609, 0.016284375050043393};
inline constexpr std::array kSin{  // (sin(r) - r) / r^3 in r^2, for |r| <= pi / 4
    -0.16666666666666666, 0.008333333333333331, -0.00019841269841265063, 2.7557319219337312e-06,
    -2.5052106231802837e-08, 1.6058531516797758e-10, -7.586691094197958e-13};
inline constexpr std::array kCos{  // (cos(r) - 1 + r^2 / 2) / r^4 in r^2, for |r| <= pi / 4
    0.041666666666666664, -0.0013888888888888887, 2.4801587301584645e-05, -2.755731922140179e-07,
    2.0876755790721963e-09, -1.1470460830795304e-11, 4.7458685530816656e-14};
// clang-format on

// A high part with 33 to 36 significant bits, whose product with a whole number below 2^17 is exact, and the
// rest.
inline constexpr double kLn2High = 0.6931471805582987, kLn2Low = 1.6465949582897082e-12;
inline constexpr double kLog10Of2High = 0.3010299956658855, kLog10Of2Low = -1.9043128467164274e-12;
inline constexpr double kHalfPiHigh = 1.5707963267341256, kHalfPiLow = 6.077100506506192e-11;
inline constexpr double kLog2OfE = 1.4426950408889634, kLog2Of10 = 3.321928094887362;
inline constexpr double kLog10OfE = 0.4342944819032518;

/// Terms From to From + Size - 1 of a polynomial, as a tree: half as deep as the chain of Horner's rule,
/// which counts in a recursion. `powers`: x, x^2, x^4, x^8.
template <const auto& kTerms, std::size_t Size, std::size_t From>
inline double terms(const double (&powers)[4]) {
  if constexpr (Size == 1) {
    constexpr double kTerm = kTerms[From];  // a constant for certain: a load could alias what a loop writes
    return kTerm;
  } else {
    constexpr std::size_t kHalf = Size / 2;
    const double low = terms<kTerms, kHalf, From>(powers);
    if constexpr (From + kHalf < kTerms.size())
      return low + terms<kTerms, kHalf, From + kHalf>(powers) * powers[std::countr_zero(kHalf)];
    else
      return low;
  }
}

/// kTerms[0] + kTerms[1] x + kTerms[2] x^2 + ...
template <const auto& kTerms>
inline double polynomial(double x) {
  static_assert(kTerms.size() > 4 && kTerms.size() <= 16);
  const double x2 = x * x, x4 = x2 * x2, x8 = x4 * x4;
  return terms<kTerms, 16, 0>({x, x2, x4, x8});
}

/// A number rounded to the nearest whole one without a rounding instruction: adding 1.5 * 2^52 leaves the
/// whole number in the lowest bits of the sum. For |x| below 2^51.
struct Rounded {
  static constexpr double kMagic = 0x1.8p52;
  double sum;
  explicit Rounded(double x) : sum(x + kMagic) {}
  double whole() const { return sum - kMagic; }
  std::uint64_t bits() const { return std::bit_cast<std::uint64_t>(sum); }
};

/// `mantissa` (0.5 to 2) times 2^n, where the result is a normal number.
inline double timesTwoTo(Rounded n, double mantissa) {
  return std::bit_cast<double>(std::bit_cast<std::uint64_t>(mantissa) + (n.bits() << 52));
}

/// `value` with the sign of `sign`; `value` must not be negative.
inline double withSignOf(double value, double sign) {
  constexpr std::uint64_t kSignBit = std::uint64_t{1} << 63;
  return std::bit_cast<double>(std::bit_cast<std::uint64_t>(value) |
                               (std::bit_cast<std::uint64_t>(sign) & kSignBit));
}

inline double magnitudeOf(double x) {
  return std::bit_cast<double>(std::bit_cast<std::uint64_t>(x) & (~std::uint64_t{0} >> 1));
}

/// 2^n 2^r for |r| <= 1/2, as the result of an exponential of `x`: 0 below `low`, infinite from `high` on.
/// The choice comes last, on results: on arguments the compiler would carry a chosen constant through the
/// formula and leave a loop with branches.
inline double expResult(Rounded n, double r, double x, double low, double high) {
  const double result = timesTwoTo(n, 1.0 + r * polynomial<kExp2>(r));
  const double orZero = x < low ? 0.0 : result;
  return x >= high ? kInfinity : orZero;
}

/// x = 2^exponent m with m from sqrt(1/2) to sqrt(2), and ln m, for normal x above 0; any other gives finite
/// nonsense, which `logResult` puts right.
struct Logarithm {
  double exponent;
  double lnMantissa;

  explicit Logarithm(double x) {
    constexpr std::uint64_t kMantissaBits = (std::uint64_t{1} << 52) - 1;
    constexpr std::uint64_t kRootHalf = 0x3FE6A09E667F3BCD;  // sqrt(1/2)
    constexpr double kBias = 1023.0;
    // counted from sqrt(1/2), so that the exponent changes there and not at 1; the bias keeps it above 0
    const std::uint64_t moved = std::bit_cast<std::uint64_t>(x) - kRootHalf + (std::uint64_t{1023} << 52);
    // a small whole number in the mantissa of 2^52 reads as 2^52 plus that number
    exponent = std::bit_cast<double>((moved >> 52) | std::bit_cast<std::uint64_t>(0x1p52)) - (0x1p52 + kBias);
    // ln(1 + f) = 2 atanh(s), s = f / (2 + f), arranged so that the leading term is f itself, which is exact
    const double f = std::bit_cast<double>((moved & kMantissaBits) + kRootHalf) - 1.0;
    const double s = f / (2.0 + f), z = s * s;
    const double half = 0.5 * f * f;
    lnMantissa = f - (half - s * (half + z * polynomial<kLog>(z)));
  }
};

/// The special values of every logarithm around its `result` for ordinary x.
inline double logResult(double x, double result) {
  const double finite = x < kInfinity ? result : x;
  const double orBottom = x == 0.0 ? -kInfinity : finite;
  return x >= 0.0 ? orBottom : kNotANumber;
}

}  // namespace detail

/// 2^x within 3e-16. Below -1022, where the result would be denormal, 0; infinite from 1024 on.
inline double exp2(double x) {
  const detail::Rounded n(x);
  return detail::expResult(n, x - n.whole(), x, -1022.0, 1024.0);
}

/// e^x within 4e-16. 0 below -708.39, where the result would be denormal; infinite from 709.78 on.
inline double exp(double x) {
  const detail::Rounded n(x * detail::kLog2OfE);
  const double r = (x - n.whole() * detail::kLn2High) - n.whole() * detail::kLn2Low;
  return detail::expResult(n, r * detail::kLog2OfE, x, -708.39, 709.782712893384);
}

/// 10^x within 4e-16. 0 below -307.65, where the result would be denormal; infinite from 308.25 on.
inline double pow10(double x) {
  const detail::Rounded n(x * detail::kLog2Of10);
  const double r = (x - n.whole() * detail::kLog10Of2High) - n.whole() * detail::kLog10Of2Low;
  return detail::expResult(n, r * detail::kLog2Of10, x, -307.65, 308.25471555991674);
}

/// Natural logarithm within 4e-16 for normal x. Of 0 minus infinity, of a negative number not-a-number, of a
/// denormal one between ln 2^-1023 and ln 2^-1022.
inline double log(double x) {
  const detail::Logarithm l(x);
  const double rest = l.exponent * detail::kLn2Low + l.lnMantissa;
  return detail::logResult(x, l.exponent * detail::kLn2High + rest);
}

/// Logarithm to base 2 within 5e-16; special values as `log`.
inline double log2(double x) {
  const detail::Logarithm l(x);
  return detail::logResult(x, l.exponent + l.lnMantissa * detail::kLog2OfE);
}

/// Logarithm to base 10 within 5e-16; special values as `log`.
inline double log10(double x) {
  const detail::Logarithm l(x);
  const double rest = l.exponent * detail::kLog10Of2Low + l.lnMantissa * detail::kLog10OfE;
  return detail::logResult(x, l.exponent * detail::kLog10Of2High + rest);
}

/// x^y for x >= 0, within 4e-16 (1 + |y log2 x|): 4e-15 where the result is from 0.001 to 1000. x^0 is 1,
/// 0^y is 0 for y above 0; results out of the normal range become 0 and infinity.
inline double pow(double x, double y) {
  const double power = exp2(y * log2(x));
  return y == 0.0 ? 1.0 : power;
}

/// Hyperbolic tangent within 7e-16, down to the smallest arguments.
inline double tanh(double x) {
  // with v = e^(2|x|) - 1: tanh |x| = v / (v + 2). Nothing is lost near 0, where n is 0 and v is the series.
  constexpr double kFlat = 20.0;  // 1 to the last bit from 19.1 on
  const double magnitude = detail::magnitudeOf(x);
  const double y = 2.0 * (magnitude > kFlat ? kFlat : magnitude);
  const detail::Rounded n(y * detail::kLog2OfE);
  const double r = (y - n.whole() * detail::kLn2High) - n.whole() * detail::kLn2Low;
  const double rest = r + r * r * detail::polynomial<detail::kExpm1>(r);
  const double power = detail::timesTwoTo(n, 1.0);
  const double v = power * rest + (power - 1.0);
  return detail::withSignOf(v / (v + 2.0), x);
}

/// Arc tangent within 4e-16, in -pi/2 .. pi/2.
inline double atan(double x) {
  // an eighth turn is taken off from tan(pi/8) to tan(3 pi/8), a quarter above, so that |t| <= tan(pi/8)
  constexpr double kNear = 0.41421356237309503, kFar = 2.414213562373095;
  constexpr double kHalfPi = 1.5707963267948966, kHalfPiRest = 6.123233995736766e-17;
  const double y = detail::magnitudeOf(x);
  const double below = y - 1.0, above = y + 1.0;
  const double numerator = y > kFar ? -1.0 : (y > kNear ? below : y);
  const double denominator = y > kFar ? y : (y > kNear ? above : 1.0);
  const double quarters = y > kFar ? 1.0 : (y > kNear ? 0.5 : 0.0);
  const double t = numerator / denominator, z = t * t;
  const double angle = t + (t * (z * detail::polynomial<detail::kAtan>(z)) + quarters * kHalfPiRest);
  return detail::withSignOf(quarters * kHalfPi + angle, x);
}

struct SinCos {
  double sin, cos;
};

/// Sine and cosine of an angle in radians, |x| <= 1e5, within 3e-16 of their values; near the zeros at
/// multiples of pi/2 within 1e-25 instead. Beyond that range, wrong.
inline SinCos sinCos(double x) {
  constexpr double kQuartersPerRadian = 0.6366197723675814;
  const detail::Rounded n(x * kQuartersPerRadian);
  const double r = (x - n.whole() * detail::kHalfPiHigh) - n.whole() * detail::kHalfPiLow;
  const double z = r * r;
  const double s = r + r * (z * detail::polynomial<detail::kSin>(z));
  const double c = 1.0 - (0.5 * z - z * z * detail::polynomial<detail::kCos>(z));
  // the two lowest bits of n are the quadrant: an odd one swaps the two, bit 1 (of n, of n + 1) is the sign
  const std::uint64_t odd = std::uint64_t{0} - (n.bits() & 1);
  const std::uint64_t sBits = std::bit_cast<std::uint64_t>(s), cBits = std::bit_cast<std::uint64_t>(c);
  const std::uint64_t swap = (sBits ^ cBits) & odd;
  const std::uint64_t sinSign = (n.bits() & 2) << 62, cosSign = ((n.bits() + 1) & 2) << 62;
  return {std::bit_cast<double>((sBits ^ swap) ^ sinSign), std::bit_cast<double>((cBits ^ swap) ^ cosSign)};
}

/// Tangent of an angle in radians, |x| <= 1e5; for a bilinear transform's warp. Within 5e-16, as `sinCos`.
inline double tan(double x) {
  const SinCos t = sinCos(x);
  return t.sin / t.cos;
}

}  // namespace corvane::fast
