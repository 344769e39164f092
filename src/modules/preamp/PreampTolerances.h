#pragma once

#include <array>
#include <cmath>
#include <cstdint>

namespace corvane::preamp {

// No two consoles left the works alike. Sixteen units, each with the spread of its parts and its own hiss;
// a strip's preamps take them in turn.

inline constexpr int kUnits = 16;

struct UnitRow {
  double c, d, e, f;  ///< spreads of four kinds of part, around 1
  std::uint32_t seedA, seedB, seedC;
};

// clang-format off
inline constexpr std::array<UnitRow, kUnits> kUnitRows{{
    // c     d     e     f     seeds
    {0.99, 0.99, 1.00, 1.05, 11731, 19763,   767},
    {0.92, 1.03, 1.19, 0.99,  1137,  1101, 29637},
    {1.03, 1.01, 0.99, 1.15, 17077,  5021,  2171},
    {0.82, 0.92, 0.83, 0.81,   329, 12139,  1761},
    {0.89, 1.03, 1.00, 0.89, 23071,  5297,  9771},
    {0.99, 1.20, 1.12, 1.12, 23117,  9127,  7479},
    {1.03, 1.12, 1.21, 1.00,    39,  1123, 23391},
    {1.01, 0.88, 0.82, 1.19,  7043,  3193, 15237},
    {0.83, 0.92, 0.89, 1.21, 24073,  3141, 71375},
    {1.00, 1.10, 0.96, 0.96, 12037, 15271,   377},
    {1.20, 0.85, 0.90, 1.02,   127, 15731,   697},
    {1.12, 1.05, 0.97, 0.81, 17191,  7133,   893},
    {0.88, 0.89, 0.95, 0.97,  5057,  1227,   921},
    {0.92, 1.15, 1.17, 1.17,   201, 18117,   757},
    {1.10, 1.09, 0.97, 1.09,  9337, 15101,  3729},
    {0.85, 0.89, 0.95, 0.95,  2091,  1015,  5987},
}};

/// Thresholds of the converter's comparator, from the top bit down, on the scale of 65536 codes: the ladder's
/// resistors are as unequal as those of its day. A bit that is set takes its threshold off the remainder.
inline constexpr std::array<double, 16> kConverterThresholds{
    32767.24464, 16384.69152, 8191.81808,         4096.42288, 2047.4976, 1023.7795199999999,
    512.40512,   255.68975999999998, 128.40384,   64.1032,    32.300639999999994, 15.59968,
    8.300320000000001, 3.7999199999999997, 1.79994, 1.30001};
// clang-format on

/// What one channel of a unit has of its own.
struct ChannelTolerance {
  double hissShelf;                ///< on the gain of the shelf, below its root
  std::array<double, 3> hissPeak;  ///< on the peaks at hum frequencies, handed round between their values
  double hissGain;
  double bias;
  double offset;
};

/// Tolerances of both channels of unit 0 .. 15.
inline std::array<ChannelTolerance, 2> unitTolerances(int unit) {
  const auto row = [unit](int offset) -> const UnitRow& {
    return kUnitRows[static_cast<std::size_t>((unit + offset + kUnits) % kUnits)];
  };
  return {{{row(3).d, {row(5).d, row(7).e, row(-2).d}, std::sqrt(row(3).e), row(0).c, row(1).c},
           {row(1).e, {row(-4).d, row(-2).e, row(-8).e}, std::sqrt(row(0).d), row(5).c, row(6).f}}};
}

}  // namespace corvane::preamp
