#include "modules/preamp/ConsoleParabola.h"

#include <cmath>

namespace corvane::preamp {

namespace {

constexpr double kClipRadians = 18849.55592153876;       // 2 pi 3 kHz
constexpr double kHighPassRadians = 12.566370614359172;  // 2 pi 2 Hz
constexpr double kClipFlush = 1e-16;
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

Pair timesAbsolute(Pair v) { return v * absolute(v); }

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
  SectionPair filter = highPass;
  Pair clip = clipState;
  const Pair bias = offset;
  const double share = clipShare, in = inTrim, meter = meterFactor, up = lift, out = outTrim;
  for (int i = 0; i < frames; ++i) {
    Pair v = in * numbersOrZero(samples[i]) * 0.7071 * 0.7071 * 0.25;
    v = smaller(larger(v, both(-4.0)), both(4.0));
    levels[i] = largerLane(meter * absolute(v));
    const Pair t = v / 2.0;
    const Pair u = 2.0 * (t - timesAbsolute(t) / 4.0);
    clip = flushed(clip + (bias + u - clip) * share, kClipFlush);
    const Pair w = 8.0 * 1.4142 * (u - timesAbsolute(clip) / 4.0);
    filter.step(w);
    samples[i] = filter.y1 * 1.4142 * up * out;
  }
  clipState = clip;
  highPass = filter;
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
