#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <numbers>

#include "modules/eq/EqFamily.h"
#include "modules/eq/EqTable.h"
#include "tests/rig/ModuleRig.h"

// The linear part of all three equalisers against their analog prototypes: the curves are written down here
// as functions of s, and s is where the bilinear transform puts a frequency.

namespace corvane::eq {
namespace {

using Complex = std::complex<double>;

/// Where one frequency is looked at.
struct Probe {
  double hz, rateHz;

  /// s normalised to a section at `fc`, and the Q that is left there.
  Complex s(double fc) const {
    return {0.0, std::tan(std::numbers::pi * hz / rateHz) / std::tan(std::numbers::pi * limit(fc) / rateHz)};
  }
  double limit(double fc) const { return std::min(fc, 0.499 * rateHz); }
  double bent(double q, double fc, double share, double exponent) const {
    return q * (1.0 - std::pow(limit(fc) / (share * rateHz), exponent));
  }

  Complex bell(double fc, double q, double db) const {
    const double A = std::pow(10.0, db / 40.0), Q = bent(q, fc, 0.5001, 2.8);
    const Complex z = s(fc);
    return (z * z + z * A / Q + 1.0) / (z * z + z / (A * Q) + 1.0);
  }
  Complex lowShelf(double fc, double q, double db) const {
    const double A = std::pow(10.0, db / 40.0), Q = bent(q, fc, 0.5001, 3.5);
    const Complex z = s(fc);
    return A * (z * z + z * std::sqrt(A) / Q + A) / (A * z * z + z * std::sqrt(A) / Q + 1.0);
  }
  Complex highShelf(double fc, double q, double db) const {
    const double A = std::pow(10.0, db / 40.0), Q = bent(q, fc, 0.5001, 4.0);
    const Complex z = s(fc);
    return A * (A * z * z + z * std::sqrt(A) / Q + 1.0) / (z * z + z * std::sqrt(A) / Q + A);
  }
  Complex lowPass(double fc, double q) const {
    const Complex z = s(fc);
    return 1.0 / (z * z + z / bent(q, fc, 0.50001, 8.0) + 1.0);
  }
  Complex highPass(double fc, double q) const {
    const Complex z = s(fc);
    return z * z / (z * z + z / bent(q, fc, 0.5001, 6.0) + 1.0);
  }
};

Complex bellform(const Probe& at, Band band, int shape, double f, double g) {
  const double shelfQ[] = {0.3485, 0.47};
  const double steep = std::exp2(std::log2(1.28) * std::abs(g) / 15.0);
  if (band == kHi && shape < 2) return at.highShelf(0.33 * f, shelfQ[shape] * steep, g);
  if (band == kLo && shape < 2) return at.lowShelf(3.0 * f, shelfQ[shape] * steep, g);
  const bool outer = band == kHi || band == kLo;
  const double over = outer ? 1.12 : std::array{1.0, 1.125, 1.25}[static_cast<std::size_t>(shape)];
  const double q =
      0.318195 * (outer ? 1.0 : std::array{0.7071, 1.0, 1.4142}[static_cast<std::size_t>(shape)]);
  return at.bell(f, q * std::exp2(std::log2(1.23) * std::abs((outer ? 1.12 : 1.0) * g) / 15.0), over * g);
}

Complex lumenband(const Probe& at, Band band, int shape, double f, double g) {
  const auto k = static_cast<std::size_t>(shape);
  const double s = band == kLm && shape == 0 ? 1.05 : std::array{1.0, 1.5, 2.2}[k];
  const double m = std::array{1.0, 1.125, 1.25}[k];
  const bool outer = band == kHi || band == kLo;
  if (g >= 0.0) {
    const double db = (outer ? 1.2 : 1.25) * g;
    const double q1 = 0.37 * s * std::pow(10.0, 0.01 * db) / std::sqrt(2.0);
    const double q2 = 1.5 * q1 * std::pow(2.2, db / 20.0) * std::pow(s, 0.25);
    return at.bell(f, q1, db * m) * at.bell(f, q2, -0.17 * db * m);
  }
  if (band == kHi) return at.highShelf(0.5 * f, 0.4675 * s * std::pow(0.65, -g / 15.0), 1.15 * g * m);
  if (band == kLo) return at.lowShelf(2.0 * f, 0.4 * s, 1.15 * g * m);
  const double q1 = 0.71 * 1.1 * s * std::pow(10.0, -0.02 * g) / 2.0;
  const double main = band == kLm && shape == 0 ? 1.29375 : 1.29125;
  return at.bell(f, q1, main * g * m) * at.bell(f, 0.35 * q1 * std::pow(s, 0.25), -0.17 * 1.29125 * g * m);
}

Complex tonbox(const Probe& at, Band band, int shape, double f, double g) {
  const auto k = static_cast<std::size_t>(shape);
  const double t = band == kLo ? std::array{1.0, 1.4, 2.0}[k] : std::array{1.0, 1.41, 2.0}[k];
  const auto scaled = [](Complex part, double db) { return 1.0 + (std::pow(10.0, db / 20.0) - 1.0) * part; };
  if (band == kHi) return scaled(1.0 - at.lowPass(f / 1.5, t / 2.0), 0.88 * g);
  if (band == kLo) return scaled(1.0 - at.highPass(f / 2.0, t / 2.0), 0.88 * g);
  const double u = g < 0.0 ? t / 2.0 : t;
  const Complex above = 1.0 - at.lowPass(f * std::exp2(-1.0 / u), u / 2.0);
  const Complex part = above * (1.0 - at.highPass(f * std::exp2(1.0 / u), u / 2.0));
  if (shape == 2 && g < 0.0) return scaled(part, 13.5 * std::tanh(0.82 * g / 9.0));
  return scaled(part, 0.75 * g / std::array{1.0, 0.9, std::pow(0.9, std::sqrt(2.0))}[k]);
}

/// Impulse response behind the fades.
rig::Samples impulseResponse(rig::ModuleRig& eq) {
  eq.runMono(rig::silence(0.06, eq.rate));
  return eq.runMono(rig::impulse(1.0, 0.3, eq.rate));
}

TEST(EqResponse, OfEveryBandAndShapeIsThatOfItsPrototype) {
  const auto prototypes = std::array{bellform, lumenband, tonbox};
  const double rates[] = {44100.0, 48000.0, 96000.0};
  const double knobs[] = {0.3, 0.5, 0.8, 0.65};
  unsigned turn = 0;
  for (int type = 1; type <= 3; ++type)
    for (const Band band : {kHi, kHm, kLm, kLo})
      for (const int shape : {0, 1, 2})
        for (const double g : {18.0, 6.0, -6.0, -18.0}) {
          const double rateHz = rates[turn % 3], knob = knobs[turn % 4];
          ++turn;
          rig::ModuleRig eq(kEqFamily, type, rateHz);
          eq.set(kAnalog, 0.0);
          eq.set(offsetOf(band, kFreq), knob);
          eq.set(offsetOf(band, kShape), shape / 2.0);
          eq.setPhysical(offsetOf(band, kGain), g);
          eq.reset();
          const double f = physicalValue(kEqFamily, offsetOf(band, kFreq), knob);
          const rig::Samples h = impulseResponse(eq);
          for (const double hz : {0.3 * f, f, 2.5 * f, 11000.0}) {
            if (hz > 0.49 * rateHz) continue;
            const Complex expected =
                prototypes[static_cast<std::size_t>(type - 1)]({hz, rateHz}, band, shape, f, g);
            // 1e-5 dB: what 0.3 s cut off the slowest tail; a constant that is off in its fifth digit fails
            EXPECT_NEAR(rig::db(std::abs(rig::fourierSum(h, hz, rateHz))), rig::db(std::abs(expected)), 1e-5)
                << "type " << type << " band " << band << " shape " << shape << " " << g << " dB, at " << hz
                << " of " << rateHz << " Hz";
          }
        }
}

TEST(EqResponse, NarrowBellformBellGoesDeeperThanItsKnob) {
  rig::ModuleRig eq(kEqFamily, 1);
  eq.set(kAnalog, 0.0);
  eq.set(offsetOf(kHm, kShape), 1.0);
  eq.set(offsetOf(kHm, kGain), 0.0);
  eq.reset();
  const double f = physicalValue(kEqFamily, offsetOf(kHm, kFreq), 0.5);
  EXPECT_NEAR(rig::db(std::abs(rig::fourierSum(impulseResponse(eq), f, eq.rate))), -22.5, 1e-6);
}

TEST(EqResponse, TopOfTheHiBandStaysBelowHalfTheRate) {
  rig::ModuleRig eq(kEqFamily, 1, 44100.0);
  eq.set(kAnalog, 0.0);
  eq.set(offsetOf(kHi, kShape), 1.0);
  eq.set(offsetOf(kHi, kFreq), 1.0);  // 28 kHz, beyond half the rate
  eq.set(offsetOf(kHi, kGain), 1.0);
  eq.reset();
  const rig::Samples h = impulseResponse(eq);
  EXPECT_NEAR(std::abs(rig::fourierSum(h, 1000.0, 44100.0)),
              std::abs(bellform({1000.0, 44100.0}, kHi, 2, 28000.0, 18.0)),
              5e-4);              // the pole beside half the rate rings on past the end of h
  EXPECT_LT(rig::peak(h), 10.0);  // +20 dB at most
}

}  // namespace
}  // namespace corvane::eq
