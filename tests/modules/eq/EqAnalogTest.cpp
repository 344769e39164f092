#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

#include "modules/eq/AnalogStage.h"
#include "modules/eq/EqSection.h"
#include "tests/rig/Signals.h"

namespace corvane::eq {
namespace {

constexpr double kRate = 48000.0;

/// The law of a type's gain at a level l, as printed in the header.
double lawGain(int type, double l) {
  const bool up = l > 0.0;
  switch (type) {
    case 1: return std::atan(l / 16) * 16 / l;
    case 2: return up ? std::tanh(l / 16) * 16 / l : std::atan(l / 8) * 8 / l;
    default: return up ? std::tanh(l / 8) * 8 / l : std::atan(l / (1 + 0.02 * std::abs(l)) / 16) * 16 / l;
  }
}

rig::Samples throughStage(int type, const rig::Samples& x, bool on = true) {
  AnalogState state;
  rig::Samples levels = x, y = x;
  for (double& level : levels) level = analogLevel(level, analogCoefficient(type, kRate), state);
  applyAnalog(type, on, levels.data(), y.data(), static_cast<int>(y.size()));
  return y;
}

TEST(AnalogStage, FollowsItsLawBehindTwoPoles) {
  const double cornerHz[] = {3500.0, 2500.0, 1500.0};
  for (const int type : {1, 2, 3}) {
    // Step of two equal one-poles in a row: 1 - a^n (1 + n (1 - a)).
    const double a = std::exp(-2.0 * std::numbers::pi * cornerHz[type - 1] / kRate);
    for (const double d : {0.01, 0.5, 2.0, 20.0, -0.01, -0.5, -2.0, -20.0}) {
      const auto y = throughStage(type, rig::constant(d, 0.01, kRate));
      for (const std::size_t n : {1u, 3u, 10u, 400u}) {
        const double count = static_cast<double>(n);
        const double l = d * (1.0 - std::pow(a, count) * (1.0 + count * (1.0 - a)));
        EXPECT_NEAR(y[n - 1] / (d * lawGain(type, l)), 1.0, 1e-12)
            << "type " << type << " step " << d << " after " << n;
      }
    }
  }
}

TEST(AnalogStage, LeavesSilenceAloneAndEndsNotANumber) {
  for (const int type : {1, 2, 3}) {
    const auto quiet = rig::constant(0.99e-6, 0.01, kRate);
    EXPECT_EQ(throughStage(type, quiet), quiet);
    const auto loud = rig::noise(1.0, 0.01, kRate);
    EXPECT_EQ(throughStage(type, loud, false), loud);
    EXPECT_NE(throughStage(type, loud), loud);
    auto broken = loud;
    broken[70] = std::nan("");
    for (const bool on : {false, true}) EXPECT_EQ(throughStage(type, broken, on)[70], 0.0);
  }
}

TEST(AnalogStage, ComputesItsLawsToTheLastPlaces) {
  // 2e-15: the curve behind the series and three roundings. Levels on both sides of where the series ends.
  for (const int type : {1, 2, 3})
    for (double magnitude = 1.1e-6; magnitude < 100.0; magnitude *= 1.03)
      for (const double l : {magnitude, -magnitude})
        ASSERT_NEAR(analogGain(type, l) / lawGain(type, l), 1.0, 2e-15) << "type " << type << " at " << l;
}

EqSection bellAt(double hz, double rateHz) {
  EqSection section;
  section.setSampleRate(rateHz);
  section.design({SectionType::peaking, hz, 0.5, 6.0});
  section.setAnalog(true);
  section.reset();
  return section;
}

TEST(EqSection, KeepsItsDriveUntilAnalogIsWritten) {
  EqSection section = bellAt(1000.0, kRate);
  const double drive = section.trackCoefficients.drive;
  EXPECT_DOUBLE_EQ(drive, 0.4 * (44100.0 / kRate) * std::sqrt(2000.0 / kRate) / std::pow(0.5, 0.75));
  section.design({SectionType::peaking, 4000.0, 2.0, 6.0});
  section.setSampleRate(96000.0);
  EXPECT_EQ(section.trackCoefficients.drive, drive);
  section.setAnalog(true);
  EXPECT_DOUBLE_EQ(section.trackCoefficients.drive,
                   0.4 * (44100.0 / 96000.0) * std::sqrt(8000.0 / 96000.0) / std::pow(2.0, 0.75));
}

TEST(EqSection, SaturatesWithinItsRecursionForBellform) {
  // A constant: y = s / (k |s| + 1) with s = (b0 + b1 + b2) x - (a1 + a2) y, solved for the s of the y that
  // came out.
  EqSection section = bellAt(1000.0, kRate);
  const double k = 2.0 * (44100.0 / kRate) * 0.001 * (2000.0 / kRate) / std::pow(0.5, 0.75);
  const BiquadCoefficients& c = section.filter.target;
  for (const double x : {0.5, -8.0}) {
    double y = 0.0;
    for (int n = 0; n < 4000; ++n) y = section.processSaturating(x);
    const double s = (c.b0 + c.b1 + c.b2) * x - (c.a1 + c.a2) * y;
    EXPECT_NEAR(y, s / (k * std::abs(s) + 1.0), 1e-12);
    EXPECT_GT(std::abs(x - y), 1e-4) << "a loop that does not hear the limit would give x itself";
  }
}

TEST(EqSection, StaysLinearInItsRecursionForTheOthers) {
  // Behind a linear recursion the output is y (7/8 + 1/8 / (1 + k |band|)): at a constant the band has gone
  // to 0.
  EqSection section = bellAt(1000.0, kRate), plain = bellAt(1000.0, kRate);
  plain.setAnalog(false);
  const auto x = rig::noise(4.0, 0.05, kRate);
  double most = 0.0;
  for (const double sample : x) {
    const double y = plain.processTracking(sample), z = section.processTracking(sample);
    EXPECT_EQ(section.filter.history.y0, y);
    const double ratio = (z / y - 0.875) / 0.125;  // 1 / (1 + k |band|)
    EXPECT_NEAR((1.0 / ratio - 1.0) / section.trackCoefficients.drive, std::abs(section.track.trackBand),
                1e-6);
    most = std::max(most, std::abs(section.track.trackBand));
  }
  EXPECT_GT(most, 1.0);
  double y = 0.0;
  for (int n = 0; n < 4000; ++n) y = section.processTracking(3.0);
  EXPECT_NEAR(y, 3.0, 1e-9);
}

TEST(EqSection, TreatsNotANumberAsSilence) {
  EqSection section = bellAt(1000.0, kRate), silent = bellAt(1000.0, kRate);
  for (int n = 0; n < 20; ++n) {
    const double bad = n == 5 ? std::nan("") : 0.25;
    EXPECT_EQ(section.processSaturating(bad), silent.processSaturating(n == 5 ? 0.0 : 0.25));
  }
}

}  // namespace
}  // namespace corvane::eq
