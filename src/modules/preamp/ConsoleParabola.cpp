#include "modules/preamp/ConsoleParabola.h"

#include <cmath>

namespace corvane::preamp {

namespace {

constexpr double kClipRadians = 18849.55592153876;       // 2 pi 3 kHz
constexpr double kHighPassRadians = 12.566370614359172;  // 2 pi 2 Hz
constexpr double kOffset70s = 0.0015396885326702942;
constexpr double kMeter70s = 1.399999976158142, kMeter80s = 1.6800000667572021;
constexpr double kLift80s = 1.258925411794167;  // 2 dB

/// Second-order high-pass, Q 0.5.
BiquadCoefficients designHighPass(double sampleRateHz) {
  const double w0 = kHighPassRadians / sampleRateHz;
  const double s = std::sin(w0), c = std::cos(w0);
  const double k = 1.0 / (1.0 + s);
  BiquadCoefficients design;
  design.b0 = design.b2 = (1.0 + c) * k / 2.0;
  design.b1 = -(1.0 + c) * k;
  design.a1 = -2.0 * c * k;
  design.a2 = (1.0 - s) * k;
  return design;
}

}  // namespace

void ConsoleParabola::setSampleRate(double hz) {
  clipShare = 1.0 - std::exp(-kClipRadians / hz);
  highPass = alike(designHighPass(hz));
  reset();
}

void ConsoleParabola::reset() {
  clipState = Pair{};
  clearHistory(highPass);
}

void ConsoleParabola::run(Pair* samples, double* levels, int frames) {
  Steps local = steps();
  for (int i = 0; i < frames; ++i) {
    Pair magnitude;
    const Pair u = local.bend(samples[i], magnitude);
    levels[i] = largerLane(magnitude);
    local.clip = flushed(local.moved(u), Steps::kClipFlush);
    local.filter.step(Steps::lopsided(u, local.clip));
    samples[i] = local.output(local.filter.y1);
  }
  store(local);
}

void ConsoleParabola::configure(Colour colour) {
  const bool seventies = colour == Colour::console70s;
  offset = seventies ? kOffset70s * offsetTrim : Pair{};
  meterFactor = seventies ? kMeter70s : kMeter80s;
  lift = seventies ? 1.0 : kLift80s;
  inTrim = consoleOf(colour).inTrim;
  outTrim = consoleOf(colour).outTrim;
}

}  // namespace corvane::preamp
