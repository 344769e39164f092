#include <gtest/gtest.h>

#include "modules/gate/GateFamily.h"
#include "modules/gate/GateTable.h"
#include "tests/rig/ModuleRig.h"

namespace corvane {
namespace {

using namespace rig;

constexpr int kExpander = 1, kGate = 2, kDucker = 3;
constexpr int kReductionMeter = 2;
constexpr double kRest = 0.07637084;  // share of the way left after an attack time

/// A module keyed from outside, silent at its floor, without hold.
struct KeyedRig : ModuleRig {
  explicit KeyedRig(int type, double rateHz = 48000.0) : ModuleRig(kGateFamily, type, rateHz) {
    set(kSideChainOffset, 1.0);
    set(gate::kHold, 0.0);
    setPhysical(gate::kThreshold, -20.0);
    setPhysical(gate::kAttack, 10.0);
    setPhysical(gate::kRelease, 100.0);
  }
  /// The gain itself: what becomes of a signal that stands at 1.
  Samples gains(const Samples& key, int block = kBlockFrames) {
    return runMono(Samples(key.size(), 1.0), &key, block);
  }
};

/// The law of all three variants, one sample after the other, as plainly as it can be written.
struct PlainGate {
  double attack, release, smooth, exponent, ratioExponent, range;
  int holdLimit;
  double x = 0.0, smoothed = 0.0;
  int held = 0;

  static double flush(double v) { return (v + 1e-15) - 1e-15; }
  static double within(double v) { return std::min(std::max(flush(v), 0.0), 1.0); }

  double operator()(int type, double level) {
    const bool above = level >= 1.0;
    if (type == kExpander) {
      const double t = ratioExponent == 0.0 || above ? 1.0 : std::pow(level, ratioExponent);
      if (t > x)
        x = flush(std::min(x + (1.0 - x) * attack, t));
      else
        x = within(x - std::pow(x - t, exponent) * release);
      if (x > smoothed) smoothed += (x - smoothed) * attack;
      smoothed = flush(smoothed + (x - smoothed) * smooth);
      return range + (1.0 - range) * smoothed;
    }
    if (above) {
      held = 0;
      x = type == kGate ? flush(x + (1.0 - x) * attack) : within(x - x * attack);
    } else if (held < holdLimit) {
      ++held;
    } else {
      x = type == kGate ? within(x - std::pow(x, exponent) * release)
                        : within(x + std::pow(1.0 - x, exponent) * release);
    }
    return range + (1.0 - range) * x;
  }
};

/// Bursts: noise that comes and goes every 30 ms, with quiet stretches long enough to close.
Samples bursts(double seconds, double rateHz) {
  Samples x = noise(0.5, seconds, rateHz, 7);
  for (std::size_t n = 0; n < x.size(); ++n) {
    const double ms = 1000.0 * static_cast<double>(n) / rateHz;
    if (std::fmod(ms, 30.0) > 18.0) x[n] *= 0.01;
    if (std::fmod(ms, 400.0) > 250.0) x[n] *= 1e-4;
  }
  return x;
}

// 1e-11: powers of a few last places each, carried on by the recursion.
TEST(Gate, RunsThePlainLawOfEveryVariant) {
  for (double rateHz : {44100.0, 96000.0})
    for (int type : {kExpander, kGate, kDucker})
      for (double shape : {0.0, 0.3, 0.5, 0.77, 1.0})
        for (int ratio : {0, 4, 5, 6, 9}) {
          if (type != kExpander && ratio != 5) continue;
          KeyedRig rig(type, rateHz);
          rig.set(gate::kShape, shape);
          rig.set(gate::kRatio, ratio / 10.0);
          rig.set(gate::kHold, 0.1);
          rig.set(gate::kRange, 0.3);
          const double s2 = shape * shape;
          const double stretch = 1.0 - 0.5721 * shape + 9.0385 * s2 - 3.5531 * s2 * shape - 4.8688 * s2 * s2 +
                                 2.7155 * s2 * s2 * shape;
          constexpr double kExponents[] = {0.0, 0.1, 0.23, 0.35, 0.5, 0.7, 1.0, 1.5, 2.2, 4.0, 9.0};
          PlainGate plain{.attack = 1.0 - std::pow(kRest, 1.0 / (rateHz * 0.01)),
                          .release = 1.0 - std::pow(kRest, 1.0 / (stretch * rateHz * 0.1)),
                          .smooth = 1.0 - std::pow(0.05, 100.0 / rateHz),
                          .exponent = std::pow(0.0625, s2),
                          .ratioExponent = kExponents[ratio],
                          .range = 0.3 * 0.3,
                          .holdLimit = static_cast<int>(0.004 * rateHz)};
          const Samples key = bursts(0.8, rateHz);
          const Samples measured = rig.gains(key, 37);
          double worst = 0.0;
          for (std::size_t n = 0; n < key.size(); ++n)
            worst = std::max(worst, std::abs(measured[n] - plain(type, std::abs(key[n]) * 10.0)));
          EXPECT_LT(worst, 1e-11) << "type " << type << ", shape " << shape << ", ratio step " << ratio
                                  << ", " << rateHz;
        }
}

// 0.001 dB: the second stage stalls where its step rounds away.
TEST(Expander, SettlesOnTheStaticCurveOfEveryRatioStep) {
  constexpr double kExponents[] = {0.0, 0.1, 0.23, 0.35, 0.5, 0.7, 1.0, 1.5, 2.2, 4.0, 9.0};
  for (int step = 0; step <= 10; ++step)
    for (double belowDb : {-3.0, -10.0, 6.0}) {
      KeyedRig rig(kExpander);
      rig.set(gate::kRatio, step / 10.0);
      const Samples gains = rig.gains(constant(fromDb(-20.0 + belowDb), 1.0, 48000.0));
      EXPECT_NEAR(db(gains.back()), kExponents[step] * std::min(belowDb, 0.0), 0.001)
          << step << " at " << belowDb;
    }
}

TEST(Gate, OpensByTheAttackTime) {
  for (int type : {kGate, kDucker})
    for (double attackMs : {0.1, 10.0, 250.0})
      for (double rateHz : {44100.0, 192000.0}) {
        KeyedRig rig(type, rateHz);
        rig.setPhysical(gate::kAttack, attackMs);
        if (type == kDucker) {  // open first: that takes the longest with no key at all
          rig.setPhysical(gate::kRelease, 10.0);
          rig.gains(silence(0.05, rateHz));
        }
        const Samples gains = rig.gains(constant(0.5, attackMs * 0.002 + 0.001, rateHz));
        for (double part : {0.5, 1.0, 2.0}) {
          const double samples = std::ceil(attackMs * 0.001 * part * rateHz);
          const double rest = std::pow(kRest, samples / (attackMs * 0.001 * rateHz));
          const double gain = gains[static_cast<std::size_t>(samples) - 1];
          // 1e-9: up to 96000 roundings of 1e-16 and the flush
          EXPECT_NEAR(gain, type == kGate ? 1.0 - rest : rest, 1e-9) << attackMs << " ms, " << part;
        }
      }
}

/// Samples until a gain that stood at 1 has fallen to `level`.
std::size_t samplesTo(double level, const Samples& gains) {
  std::size_t n = 0;
  while (n < gains.size() && gains[n] > level) ++n;
  return n;
}

TEST(Gate, ReleasesAlongItsShape) {
  const double rateHz = 48000.0, samples = 0.1 * rateHz;
  for (auto [shape, stretch, exponent, printed] :
       {std::tuple{0.0, 1.0, 1.0, 1.0}, {0.5, 2.310078125, 0.5, 1.30}, {1.0, 3.76, 0.0625, 1.42}}) {
    KeyedRig rig(kGate, rateHz);
    rig.set(gate::kShape, shape);
    rig.gains(constant(0.5, 1.0, rateHz));
    const Samples gains = rig.gains(silence(0.3, rateHz));
    // x' = -r x^E from x = 1 is (1 - (1 - E) r n)^(1 / (1 - E)), for E = 1 exponential.
    const double r = 1.0 - std::pow(kRest, 1.0 / (stretch * samples));
    for (double n : {500.0, 2000.0, 4000.0}) {
      const double base = 1.0 - (1.0 - exponent) * r * n;
      const double expected =
          exponent == 1.0 ? std::pow(kRest, n / samples) : std::pow(base, 1.0 / (1.0 - exponent));
      // 1e-3: steps of r, at most 5e-4, against the smooth curve
      EXPECT_NEAR(gains[static_cast<std::size_t>(n) - 1], expected, 1e-3) << "shape " << shape << " at " << n;
    }
    EXPECT_NEAR(static_cast<double>(samplesTo(kRest, gains)) / samples, printed, 0.005) << "shape " << shape;
  }
}

TEST(Gate, HoldsForExactlyItsTime) {
  for (int type : {kGate, kDucker})
    for (double rateHz : {44100.0, 96000.0})
      for (double p : {0.0, 0.1, 0.5}) {
        KeyedRig rig(type, rateHz);
        rig.set(gate::kHold, p);
        rig.gains(constant(0.5, 0.02, rateHz));
        const Samples gains = rig.gains(silence(0.2, rateHz));
        const auto limit = static_cast<std::size_t>(0.4 * (p * p) * rateHz);
        for (std::size_t n = 1; n < limit; ++n) ASSERT_EQ(gains[n], gains[0]);
        EXPECT_NE(gains[limit], gains[limit ? limit - 1 : 1]) << "rate " << rateHz << ", p " << p;
      }
  // a key that touches the threshold starts the hold anew
  KeyedRig rig(kGate);
  rig.set(gate::kHold, 0.5);
  Samples key = constant(0.5, 0.4, 48000.0);
  for (std::size_t n = 4800; n < key.size(); ++n) key[n] = n % 4800 == 0 ? 0.5 : 0.0;
  const Samples gains = rig.gains(key);
  for (std::size_t n = 4800; n < gains.size(); ++n) ASSERT_GE(gains[n], gains[n - 1]);
}

TEST(Gate, ThresholdCountsFromTheLevelItself) {
  for (auto [keyDb, opens] : {std::pair{-20.001, false}, {-19.999, true}}) {
    KeyedRig rig(kGate);
    const Samples gains = rig.gains(constant(-fromDb(keyDb), 0.1, 48000.0));
    EXPECT_EQ(gains.back() > 0.9, opens) << keyDb;
  }
}

TEST(Gate, IsSilentWhenClosedAndStopsAtItsFloor) {
  KeyedRig rig(kGate);
  const Samples key = joined(constant(0.5, 0.1, 48000.0), silence(0.4, 48000.0));
  EXPECT_EQ(rig.gains(key).back(), 0.0);
  EXPECT_EQ(rig.meter(kReductionMeter), 1.0);
  rig.set(gate::kRange, 0.5);
  EXPECT_EQ(rig.gains(key).back(), 0.25);
  EXPECT_EQ(rig.meter(kReductionMeter), 0.75);
}

TEST(Ducker, DipsUnderTheOtherSignalAndComesBackWhole) {
  KeyedRig rig(kDucker);
  rig.set(gate::kRange, 0.5);
  const Samples voice =
      joined(joined(silence(0.4, 48000.0), constant(0.5, 0.3, 48000.0)), silence(0.4, 48000.0));
  const Samples gains = rig.gains(voice);
  EXPECT_EQ(gains[count(0.4, 48000.0) - 1], 1.0);
  EXPECT_NEAR(gains[count(0.7, 48000.0) - 1], 0.25, 1e-12);  // 30 attack times: the rest is below 1e-33
  EXPECT_EQ(gains.back(), 1.0);
}

TEST(Gate, AGainGoesOnWhereItWasWhenTheVariantChanges) {
  KeyedRig rig(kGate);
  const double opened = rig.gains(constant(0.5, 0.01, 48000.0)).back();
  rig.set(kTypeOffset, kDucker / 15.0);
  const double next = rig.gains(constant(0.5, 0.01, 48000.0)).front();
  EXPECT_NEAR(next, opened * std::pow(kRest, 1.0 / 480.0), 1e-12);
}

/// Gain in dB of the key path at `hz`, heard through Monitor.
double keyGainDb(ModuleRig& rig, double hz) {
  return db(std::abs(fourierSum(rig.runMono(impulse(1.0, 1.0, rig.rate)), hz, rig.rate)));
}

TEST(GateKey, FiltersFallBy24DbPerOctaveAndAreHeardThroughMonitor) {
  for (double rateHz : {44100.0, 96000.0}) {
    ModuleRig rig(kGateFamily, kGate, rateHz);
    rig.set(kMonitorOffset, 1.0);
    rig.setPhysical(gate::kHpfFreq, 1000.0);
    rig.setPhysical(gate::kLpfFreq, 1000.0);
    rig.reset();  // ends the glides
    const Samples x = noise(0.5, 0.1, rateHz);
    EXPECT_EQ(rig.runMono(x), x) << "neither filter is in";
    EXPECT_EQ(rig.meter(kReductionMeter), 0.0);
    rig.set(gate::kHpfIn, 1.0);
    // 0.1 dB: the slope is that of the limit, met 4 octaves away to (1/16)^4 and the warp of the top
    EXPECT_NEAR(keyGainDb(rig, 50.0) - keyGainDb(rig, 25.0), 24.08, 0.1);
    EXPECT_NEAR(keyGainDb(rig, 1000.0), 2.0 * db(0.7), 0.01);
    rig.set(gate::kHpfIn, 0.0);
    rig.set(gate::kLpfIn, 1.0);
    rig.setPhysical(gate::kLpfFreq, 200.0);
    rig.reset();
    EXPECT_NEAR(keyGainDb(rig, 2000.0) - keyGainDb(rig, 4000.0), 24.08, 24.08 * 0.02 + 0.5);
    EXPECT_NEAR(keyGainDb(rig, 200.0), 2.0 * db(0.7), 0.01);
  }
}

TEST(Gate, KeepsItsTimesAndKeyFiltersWhenTheRateChanges) {
  for (int type : {kExpander, kGate, kDucker}) {
    KeyedRig moved(type, 44100.0), settled(type, 96000.0);
    for (KeyedRig* rig : {&moved, &settled}) rig->set(gate::kHpfIn, 1.0), rig->set(gate::kHpfFreq, 0.5);
    moved.module->setSampleRate(96000.0);
    moved.reset(), settled.reset();
    const Samples key = bursts(0.3, 96000.0);
    EXPECT_EQ(moved.gains(key), settled.gains(key)) << type;
  }
}

TEST(Gate, PassesWhenOutOfTheChainAndShowsNoReduction) {
  for (bool disabled : {true, false}) {
    KeyedRig rig(kGate);
    rig.reset();
    EXPECT_EQ(rig.meter(kReductionMeter), 1.0);
    if (disabled)
      rig.module->disable();
    else
      rig.set(kTypeOffset, 4.0 / 15.0);
    const Samples x = noise(0.5, 0.1, 48000.0);
    EXPECT_EQ(rig.runMono(x), x);
    EXPECT_EQ(rig.meter(kReductionMeter), 0.0);
    EXPECT_GT(rig.meter(0), 0.1);
    EXPECT_EQ(rig.meter(0), rig.meter(1));
  }
}

TEST(Gate, TwoChannelsShareTheLouderKeyAndHaveGainsOfTheirOwn) {
  ModuleRig rig(kGateFamily, kGate), mono(kGateFamily, kGate);
  const Samples loud = bursts(0.5, 48000.0);
  Samples quiet = loud;
  for (double& x : quiet) x *= 0.001;
  const auto [left, right] = rig.runPair(quiet, loud);
  EXPECT_EQ(right, mono.runMono(loud));
  for (std::size_t n = 0; n < left.size(); ++n) ASSERT_NEAR(left[n], 0.001 * right[n], 1e-15);
}

}  // namespace
}  // namespace corvane
