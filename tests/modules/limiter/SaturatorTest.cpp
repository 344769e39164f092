#include <gtest/gtest.h>

#include "modules/limiter/LimiterFamily.h"
#include "modules/limiter/LimiterTable.h"
#include "tests/modules/limiter/PlainLimiters.h"
#include "tests/rig/ModuleRig.h"

namespace corvane {
namespace {

using namespace limiter;
using namespace rig;

constexpr int kSaturatorType = 12;

ModuleRig saturatorRig(int shape, double hpf, bool soft, double rateHz) {
  ModuleRig rig(kLimiterFamily, kSaturatorType, rateHz);
  rig.set(kShape, shape / 10.0);
  rig.set(kHpf, hpf);
  rig.set(kSoft, soft);
  rig.set(kSmooth, 0.0);
  rig.reset();
  return rig;
}

/// Amplitude of harmonic `order` of x g(|x|) for a sine of `drive`, by the trapezium rule over one period.
double harmonicOfLaw(int shape, double drive, int order) {
  constexpr int kPoints = 20000;
  double sum = 0.0;
  for (int n = 0; n < kPoints; ++n) {
    const double phase = 2.0 * std::numbers::pi * n / kPoints, x = drive * std::sin(phase);
    sum += x * plain::saturatorLaw(shape, std::abs(x)) * std::sin(order * phase);
  }
  return std::abs(sum) * 2.0 / kPoints;
}

TEST(Saturator, HarmonicsAreThoseOfItsCurves) {
  // At 384 kHz and Smooth 0 the envelope is 7 us behind a tone of 100 Hz, a quarter of a degree: the curve
  // acts almost without memory. 0.3 dB: that lag, and the shelves at 3.85 Hz, which at 100 Hz have not quite
  // let go.
  constexpr double kRate = 384000.0, kTone = 100.0;
  for (int shape = 0; shape < kShapes; ++shape)
    for (const bool soft : {false, true})
      for (const double driveDb : {-6.0, 6.0, 18.0}) {
        ModuleRig rig = saturatorRig(shape, 0.0, soft, kRate);
        const Samples y = rig.runMono(sine(kTone, fromDb(driveDb), 0.5, kRate));
        const std::size_t from = count(0.4, kRate);
        const double fundamental = harmonicOfLaw(shape, fromDb(driveDb), 1);
        for (const int order : {1, 3, 5}) {
          const double expected = harmonicOfLaw(shape, fromDb(driveDb), order);
          if (expected < 1e-3 * fundamental) continue;
          EXPECT_NEAR(db(partial(y, order * kTone, kRate, from)), db(expected), 0.3)
              << "shape " << shape << ", harmonic " << order << " at " << driveDb << " dB, soft " << soft;
        }
        EXPECT_LT(partial(y, 2 * kTone, kRate, from), 1e-4 * fundamental) << "odd curves";
      }
}

TEST(Saturator, CurvesStartAtUnityAndEndAtTheirLimits) {
  const auto gain = [](int shape, double v) {
    SaturatorState s{v, v, v};
    double g = 0.0;
    saturatorGains(&v, 1, 1.0, shape, true, {1.0, 1.0}, s, &g);
    return g;
  };
  const double limits[] = {0.0, 1.0 / 0.33, 0.5 * std::numbers::pi, 1.0, 1.0, 1.0};
  for (int shape = 0; shape < kShapes; ++shape) {
    EXPECT_EQ(gain(shape, 0.0), 1.0) << shape;
    // what a small level loses: a third of its root, a third of it, and at most its square
    const double lost = shape == 0 ? 0.33e-2 : shape == 1 ? 0.33e-4 : 1e-8;
    EXPECT_NEAR(gain(shape, 1e-4), 1.0 - lost, 1.1e-5 * (shape == 0) + 1.1e-8) << shape;
    if (shape > 0) {
      EXPECT_NEAR(gain(shape, 1e4) * 1e4, limits[shape], 1e-3) << shape;
    }
  }
  EXPECT_EQ(gain(5, 1e-8), 1.0);  // both sides of the step to 1 agree
  EXPECT_NEAR(gain(5, 1.1e-8), 1.0, 1e-14);
}

TEST(Saturator, ShelvesCancelWhereTheCurveLeavesTheSignalAlone) {
  // -120 dBFS: tanh(v) / v is 1 but for 3e-13. 1e-11: rounding of the sections near their poles.
  ModuleRig rig = saturatorRig(3, 1.0, false, 48000.0);
  const Samples x = noise(1e-6, 0.3, 48000.0);
  const Samples y = rig.runMono(x);
  for (std::size_t n = 0; n < x.size(); ++n) ASSERT_NEAR(y[n], x[n], 1e-11 * 1e-6) << n;
}

TEST(Saturator, HighPassSparesTheBass) {
  const auto third = [](double hpf) {
    ModuleRig rig = saturatorRig(3, hpf, false, 48000.0);
    const Samples y = rig.runMono(sine(40.0, 1.0, 1.0, 48000.0));
    const std::size_t from = count(0.5, 48000.0);
    return partial(y, 120.0, 48000.0, from) / partial(y, 40.0, 48000.0, from);
  };
  // 20 dB less drive is 40 dB less third harmonic; the shelf passes 40 Hz a little higher than its floor
  EXPECT_GT(third(0.0), 0.05);
  EXPECT_LT(third(1.0), third(0.0) * fromDb(-30.0));
}

TEST(Saturator, SmoothTakesTheBendOutOfTheWaveform) {
  const auto third = [](double smooth) {
    ModuleRig rig = saturatorRig(3, 0.0, false, 48000.0);
    rig.set(kSmooth, smooth);
    const Samples y = rig.runMono(sine(1000.0, 2.0, 1.0, 48000.0));
    return partial(y, 3000.0, 48000.0, 24000) / partial(y, 1000.0, 48000.0, 24000);
  };
  EXPECT_LT(third(1.0), 0.1 * third(0.0));
}

TEST(Saturator, MonitorLetsTheShelvedKeyThrough) {
  ModuleRig rig = saturatorRig(3, 1.0, false, 48000.0);
  rig.set(kOutput, 1.0);
  rig.set(kMonitorOffset, 1.0);
  rig.reset();
  const Samples y = rig.runMono(sine(20.0, 1.0, 1.0, 48000.0));
  // 0.2 dB: 20 Hz is four octaves below the shelf's 385 Hz
  EXPECT_NEAR(db(partial(y, 20.0, 48000.0, 24000)), -20.0, 0.2);
}

TEST(Saturator, HighPassGlidesInTheSaturatorAndJumpsElsewhere) {
  const Samples x = sine(100.0, 0.5, 0.02, 48000.0);
  const auto afterChange = [&](bool inUse) {
    ModuleRig rig = saturatorRig(3, 0.0, false, 48000.0);
    rig.runMono(x);
    if (!inUse) rig.set(kTypeOffset, 7.0 / 15.0);
    rig.set(kHpf, 1.0);
    if (!inUse) rig.set(kTypeOffset, kSaturatorType / 15.0);
    rig.set(kMonitorOffset, 1.0);
    return rig.runMono(x);
  };
  ModuleRig settled = saturatorRig(3, 1.0, false, 48000.0);
  settled.set(kMonitorOffset, 1.0);
  settled.runMono(x);
  const double goal = peak(settled.runMono(x)), glided = peak(afterChange(true));
  EXPECT_GT(glided, 1.5 * goal);  // 20 ms into a glide of 55 ms
  EXPECT_LT(peak(afterChange(false), 480), 1.5 * goal);
}

}  // namespace
}  // namespace corvane
