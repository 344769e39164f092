#pragma once

namespace corvane {

/// The way between a normalised value 0..1 and its physical value, both directions side by side.
/// Plain functions and two constants, so that a table of rows is `constexpr`.
struct Taper {
  /// What a host may draw: evenly spaced, in equal ratios, whole steps, or a law of its own.
  enum class Curve { linear, logarithmic, stepped, own };

  double (*toPhysical)(const Taper& taper, double p);
  double (*toNormalised)(const Taper& taper, double value);
  double base = 0.0, span = 0.0;
  Curve curve = Curve::own;

  double physical(double p) const { return toPhysical(*this, p); }
  double normalised(double value) const { return toNormalised(*this, value); }
};

namespace taper {
double linearForward(const Taper& t, double p);
double linearInverse(const Taper& t, double value);
double exponentialForward(const Taper& t, double p);
double exponentialInverse(const Taper& t, double value);
double steppedForward(const Taper& t, double p);
double steppedInverse(const Taper& t, double value);
}  // namespace taper

/// span p + base: equal travel, equal step. For levels in dB and shares in per cent.
constexpr Taper linear(double base, double span) {
  return {taper::linearForward, taper::linearInverse, base, span, Taper::Curve::linear};
}
/// base span^p: equal travel, equal ratio. For times in ms and frequencies in Hz.
constexpr Taper exponential(double base, double span) {
  return {taper::exponentialForward, taper::exponentialInverse, base, span, Taper::Curve::logarithmic};
}
/// Truncation of (steps p + 0.5): a choice of steps + 1 states, 0 .. steps.
constexpr Taper stepped(int steps) {
  return {taper::steppedForward, taper::steppedInverse, 0.0, static_cast<double>(steps),
          Taper::Curve::stepped};
}
/// Off and on, 0 and 1.
constexpr Taper onOff() { return stepped(1); }
/// A law of the family's own; both functions ignore the constants unless given.
constexpr Taper ownTaper(double (*forward)(const Taper&, double), double (*inverse)(const Taper&, double),
                         double base = 0.0, double span = 0.0) {
  return {forward, inverse, base, span, Taper::Curve::own};
}

}  // namespace corvane
