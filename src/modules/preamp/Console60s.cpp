#include "modules/preamp/Console60s.h"

#include <cmath>

#include "modules/preamp/ConsoleTable.h"

namespace corvane::preamp {

namespace {

constexpr double kExponent = 1.5157165665103982;  // 8 / 16^0.6
constexpr double kInverse = 1.0 / kExponent;
const double kWeight = std::pow(kExponent, 0.125);
constexpr double kRisingScale = 1.22 - kExponent / 8.0;
constexpr double kFallingScale = 1.1 - kExponent / 8.0;
/// Brings a half-wave of -3 dB back to its level.
const double kNormalise = 0.7071 / (fallingGain(0.7071) * 0.7071);
constexpr double kFastRadians = 4.4427093;  // 2 pi 0.7071
constexpr double kFastSeconds = 0.001;
constexpr double kMeterFactor = 0.10750000178813934;
constexpr double kOutGain = 20.166514627199998;

}  // namespace

double risingGain(double envelope) {
  const double x = kRisingScale * envelope;
  return std::pow(std::atan(std::pow(x, kExponent) * kWeight) / kWeight, kInverse) / kRisingScale / envelope;
}

double fallingGain(double envelope) {
  const double x = kFallingScale * envelope;
  return std::pow(std::tanh(std::pow(x, kExponent) * kWeight) / kWeight, kInverse) / kFallingScale / envelope;
}

void Console60s::setSampleRate(double hz) {
  fastShare = 1.0 - std::exp(-kFastRadians / (kFastSeconds * hz));
  envelopeUp = envelopeDown = both(kRest);
}

void Console60s::run(Pair* samples, double* levels, int frames) {
  const ConsoleRow& console = consoleOf(Colour::console60s);
  const double outGain = kOutGain * console.outTrim;
  Pair h[kBlockFrames], gains[kBlockFrames];
  Pair up = envelopeUp, down = envelopeDown;
  for (int i = 0; i < frames; ++i) {
    const Pair v = console.inTrim * numbersOrZero(samples[i]) * 0.7071;
    levels[i] = largerLane(kMeterFactor * absolute(v));
    samples[i] = 0.125 * v;
    up += (larger(samples[i], both(kRest)) - up) * fastShare;
    gains[i] = up;
  }
  for (int i = 0; i < frames; ++i) {
    for (int lane = 0; lane < 2; ++lane) gains[i][lane] = risingGain(gains[i][lane]);
    h[i] = gains[i] * samples[i];
  }
  Pair held{fallingGain(down[0]), fallingGain(down[1])};
  for (int i = 0; i < frames; ++i) {
    for (int lane = 0; lane < 2; ++lane) {
      if (!(h[i][lane] < -kRest)) continue;  // the envelope holds, and its gain with it
      down[lane] -= (down[lane] + h[i][lane]) * fastShare;
      held[lane] = fallingGain(down[lane]);
    }
    samples[i] = outGain * (held * h[i] * kNormalise);
  }
  envelopeUp = up;
  envelopeDown = down;
}

}  // namespace corvane::preamp
