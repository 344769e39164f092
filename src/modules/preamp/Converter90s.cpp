#include "modules/preamp/Converter90s.h"

#include <algorithm>
#include <bit>

#include "modules/preamp/PreampTolerances.h"

namespace corvane::preamp {

namespace {

constexpr double kCodes = 32768.0;
constexpr double kTop = 32767.0, kBottom = -32768.0;
constexpr double kLampLevel = 128.0, kLampOn = 0.3;  // codes; share of the lamp
constexpr double kFromCode = 3.0517578125e-5;        // 2^-15

/// Codes of both channels on `z` + 32768, each 0 .. 65535.
Pair approximate(Pair remainder) {
  Pair code{};
  double bit = kCodes;
  for (const double threshold : kConverterThresholds) {
    const auto reached = remainder >= threshold;
    remainder -= reached ? both(threshold) : both(0.0);
    code += reached ? both(bit) : both(0.0);
    bit *= 0.5;
  }
  return code;
}

double decode(double code) {
  const int level = (static_cast<int>(code) - 32768) * 4;
  return dropLowBits(level) * kFromCode * 40.0;
}

}  // namespace

int dropLowBits(int level) {
  const bool negative = level < 0;
  const auto n = static_cast<std::uint32_t>(negative ? -level - 1 : level);
  // On the negative side every octave starts one higher.
  const int octave = std::bit_width((negative ? n - 1 : n) | 1u) - 9;
  const int drop = std::clamp(octave, 0, 6);
  const int kept = static_cast<int>(n >> drop << drop);
  return negative ? -kept : kept;
}

void Converter90s::reset() { p1 = p2 = p3 = Pair{}; }

void Converter90s::run(Pair* samples, int frames, NoiseGenerator& clock, SaturationMeter& meter,
                       double meterShare) {
  NoiseGenerator jitter = clock;
  double lamp = meter.level;
  for (int i = 0; i < frames; ++i) {
    const double t = 0.1 * jitter.next() + 0.5;
    jitter.next();
    const Pair p0 = numbersOrZero(samples[i]) * kCodes * 0.025 * 0.25;
    Pair z = 0.5 * (2.0 * p1 + (p2 - p0) * t + (2.0 * p0 - 5.0 * p1 + 4.0 * p2 - p3) * (t * t) +
                    (3.0 * p1 - p0 - 3.0 * p2 + p3) * (t * t * t));
    p3 = p2, p2 = p1, p1 = p0;
    const double reach = largerLane(absolute(z));
    const double goal = reach > kLampLevel ? kLampOn : 0.0;
    lamp = flushed(lamp + (goal - lamp) * meterShare, SaturationMeter::kFlush);
    const Pair clipped = smaller(larger(z, both(kBottom)), both(kTop));
    if (clipped[0] != z[0] || clipped[1] != z[1]) lamp = 1.0;
    const Pair code = approximate(clipped + kCodes);
    samples[i] = Pair{decode(code[0]), decode(code[1])};
  }
  clock = jitter;
  meter.level = lamp;
}

}  // namespace corvane::preamp
