#include "modules/preamp/Converter90s.h"

#include <algorithm>
#include <bit>
#include <cstring>

#include "core/dsp/FastMath.h"
#include "modules/preamp/PreampTolerances.h"

namespace corvane::preamp {

namespace {

constexpr double kCodes = 32768.0;
constexpr double kTop = 32767.0, kBottom = -32768.0;
constexpr double kLampLevel = 128.0, kLampOn = 0.3;  // codes; share of the lamp
constexpr double kFromCode = 3.0517578125e-5;        // 2^-15

/// Codes, 0 .. 65535, in place of remainders; `count` a multiple of kAtOnce. The sixteen steps of a code wait
/// for each other, so several codes go side by side.
constexpr int kAtOnce = 16;
CORVANE_WIDE_LOOPS void approximate(double* remainders, int count) {
  constexpr int kLanes = 4, kQuads = kAtOnce / kLanes;
  for (int from = 0; from < count; from += kAtOnce) {
    Quad rest[kQuads];
    QuadMask code[kQuads] = {};
    std::memcpy(rest, remainders + from, sizeof rest);
    for (const double threshold : kConverterThresholds)
      for (int k = 0; k < kQuads; ++k) {
        const QuadMask reached = rest[k] >= threshold;  // all bits set or none
        rest[k] -= reinterpret_cast<Quad>(reached & reinterpret_cast<QuadMask>(Quad{} + threshold));
        code[k] = code[k] + code[k] - reached;
      }
    for (int k = 0; k < kQuads; ++k)
      for (int lane = 0; lane < kLanes; ++lane)
        remainders[from + kLanes * k + lane] = static_cast<double>(code[k][lane]);
  }
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
  const int octave = static_cast<int>(std::bit_width((negative ? n - 1 : n) | 1u)) - 9;
  const int drop = std::clamp(octave, 0, 6);
  const int kept = static_cast<int>(n >> drop << drop);
  return negative ? -kept : kept;
}

void Converter90s::reset() { p1 = p2 = p3 = Pair{}; }

void Converter90s::run(Pair* samples, int frames, NoiseGenerator& clock, SaturationMeter& meter,
                       double meterShare) {
  NoiseGenerator jitter = clock;
  double lamp = meter.level;
  bool twins = true;  // both channels alike, as they are without hiss: then one is enough
  double first[kBlockFrames + kAtOnce] = {}, second[kBlockFrames + kAtOnce] = {};
  for (int i = 0; i < frames; ++i) {
    const double t = 0.1 * jitter.next() + 0.5;
    jitter.next();
    const Pair p0 = numbersOrZero(samples[i]) * kCodes * 0.025 * 0.25;
    const Pair z = 0.5 * (2.0 * p1 + (p2 - p0) * t + (2.0 * p0 - 5.0 * p1 + 4.0 * p2 - p3) * (t * t) +
                          (3.0 * p1 - p0 - 3.0 * p2 + p3) * (t * t * t));
    p3 = p2, p2 = p1, p1 = p0;
    const double reach = largerLane(absolute(z));
    const double goal = reach > kLampLevel ? kLampOn : 0.0;
    lamp = flushed(lamp + (goal - lamp) * meterShare, SaturationMeter::kFlush);
    const Pair clipped = smaller(larger(z, both(kBottom)), both(kTop));
    if (clipped[0] != z[0] || clipped[1] != z[1]) lamp = 1.0;
    first[i] = clipped[0] + kCodes, second[i] = clipped[1] + kCodes;
    twins &= clipped[0] == clipped[1];
  }
  clock = jitter;
  meter.level = lamp;

  const int rounded = (frames + kAtOnce - 1) / kAtOnce * kAtOnce;
  approximate(first, rounded);
  if (!twins) approximate(second, rounded);
  for (int i = 0; i < frames; ++i) {
    const double left = decode(first[i]);
    samples[i] = Pair{left, twins ? left : decode(second[i])};
  }
}

}  // namespace corvane::preamp
