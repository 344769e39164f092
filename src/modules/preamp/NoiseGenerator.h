#pragma once

#include <cstdint>

namespace corvane::preamp {

/// White noise from three shift registers with feedback, period about 2^88. Even over 0 .. 1.
struct NoiseGenerator {
  std::uint32_t w1, w2, w3;

  /// One step; 0 .. 1.
  double next() {
    w1 = ((((w1 >> 9) ^ w1) >> 6) & 0x1fffu) ^ (w1 << 13);
    w2 = ((((w2 >> 2) ^ w2) >> 7) & 0xfffffu) ^ (w2 << 20);
    w3 = ((((w3 >> 6) ^ w3) >> 8) & 0x1ffffu) ^ (w3 << 17);
    return (w1 ^ w2 ^ w3) * kToUnit;
  }

 private:
  static constexpr double kToUnit = 2.3283064365e-10;  // 2^-32
};

}  // namespace corvane::preamp
