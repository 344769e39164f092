#include <gtest/gtest.h>

#include <cmath>
#include <functional>

#include "modules/compressor/CompressorFamily.h"
#include "modules/compressor/CompressorTable.h"
#include "modules/compressor/OptoFetVcaCompressor.h"
#include "tests/rig/ModuleRig.h"

// Static curves and times, read off the sound: a constant input of 1 carries the gain to the output while the
// key comes in from outside. Keys alternate between +A and -A at half the rate, so that the rectified key
// stands still; the high-pass of the key, at 10 Hz, takes a known hair from it.

namespace corvane {
namespace {

using namespace rig;
using namespace compressor;

constexpr double kRateHz = 48000.0;

enum Type { kOptoType = 1, kFetType, kVcaType };

Samples buzz(double amplitude, double seconds, double rateHz = kRateHz) {
  Samples x = constant(amplitude, seconds, rateHz);
  for (std::size_t n = 1; n < x.size(); n += 2) x[n] = -amplitude;
  return x;
}

/// What is left of an alternating key behind x - y, y[n] = y[n-1] + c (x - y[n-1]), at z = -1.
double behindHighPass(double amplitude) {
  const double stays = std::exp(-2.0 * std::numbers::pi * 10.0 / kRateHz);  // 1 - c
  return amplitude * 2.0 * stays / (1.0 + stays);
}

struct Bench : ModuleRig {
  explicit Bench(int type, double rateHz = kRateHz) : ModuleRig(kCompressorFamily, type, rateHz) {
    set(kSideChainOffset, 1.0);
    set(kMakeupGain, 0.0);
    set(kHpf, 0.0);
    ModuleRig::reset();
  }
  Samples gains(const Samples& key) { return runMono(Samples(key.size(), 1.0), &key); }
};

/// Root of a falling function.
double rootOf(const std::function<double(double)>& f, double low, double high) {
  for (int step = 0; step < 200; ++step) (f(0.5 * (low + high)) > 0.0 ? low : high) = 0.5 * (low + high);
  return 0.5 * (low + high);
}

double drive(double thresholdDb) { return 0.31623 * fromDb(10.0 - thresholdDb); }

// 1e-6 dB, here and below: all times have run out by then. The detectors must not see the high-pass settle
// and then creep back, hence the fast release of one and the slow attack of the other.
TEST(CompressorDetector, VcaTakesItsShareOfEachDbAboveTheKnee) {
  for (double ratio : {1.5, 4.0, 20.0}) {
    double last = 0.0;
    for (double levelDb : {-20.0, -10.0, 0.0}) {
      Bench bench(kVcaType);
      bench.set(kAttack, 0.0);
      bench.set(kRelease, 0.0);
      bench.setPhysical(kRatio, ratio);
      bench.reset();
      const double u = behindHighPass(fromDb(levelDb)) * 2.6 * 1.122 * 0.841 * 1.1 * drive(-15.0) + 0.01;
      const double l = std::max(std::log10(u), 0.0);
      const double expectedDb = -20.0 * (1.0 - 1.0 / ratio) * (l - 0.125 * std::tanh(8.0 * l));
      const double gainDb = db(bench.gains(buzz(fromDb(levelDb), 1.0)).back());
      EXPECT_NEAR(gainDb, expectedDb, 1e-6) << ratio << ":1 at " << levelDb;
      // the sentence of the header: 10 dB more in, 10 (1 - 1 / ratio) dB more reduction. 0.2 dB: the knee
      if (levelDb == 0.0) {
        EXPECT_NEAR(last - gainDb, 10.0 * (1.0 - 1.0 / ratio), 0.2);
      }
      last = gainDb;
    }
  }
}

TEST(CompressorDetector, OptoSettlesWhereItsSquareLawSays) {
  for (double levelDb : {-40.0, -20.0, -3.0}) {
    Bench bench(kOptoType);
    bench.set(kAttack, 1.0);
    bench.set(kRatio, 1.0);
    bench.reset();
    const double u = 1.4 * 1.1885 * 0.794 * behindHighPass(fromDb(levelDb)) * drive(-15.0) + 0.01;
    const double exponent = 1.2 * std::pow(1.218378, 0.7);
    EXPECT_NEAR(db(bench.gains(buzz(fromDb(levelDb), 5.0)).back()),
                -10.0 * exponent * std::log10(1.0 + u * u), 1e-6)
        << levelDb;
  }
}

TEST(CompressorDetector, FetSettlesWhereItsFeedbackBalances) {
  for (double p : {0.3, 0.8, 1.0})
    for (double levelDb : {-10.0, 0.0, 12.0}) {
      Bench bench(kFetType);
      bench.set(kAttack, 0.0);
      bench.set(kRelease, 0.0);
      bench.set(kRatio, p);
      bench.reset();
      const auto gainAt = [&](double level) {
        const double w = p / (1.05 - p) * level * 0.5, h = 1.0 / (0.001 + 0.999 * w / (w + 1.0)) + 1.0;
        return 1.1 * h / (h + 100.0);
      };
      const TimeCoefficients c =
          designTimes({.attack = 0.0, .release = 0.0, .hpf = 0.0, .sampleRateHz = kRateHz});
      // what the attack adds in a sample, the release takes away
      const double level = rootOf(
          [&](double trial) {
            const double u =
                behindHighPass(fromDb(levelDb)) * 0.912 * 0.631 * 1.084 * gainAt(trial) * drive(-15.0);
            const double m = std::max(u - 0.25, 0.0), e = m - 0.25 * std::tanh(4.0 * m);
            const double raised = e > trial ? trial + (e - trial) * c.fetAttack : trial;
            return raised * (1.0 - c.fetRelease) - trial;
          },
          0.0, 100.0);
      EXPECT_NEAR(db(bench.gains(buzz(fromDb(levelDb), 2.0)).back()), db(gainAt(level)), 1e-6)
          << "ratio " << p << " at " << levelDb;
    }
}

TEST(CompressorDetector, FetEndsAtMinus33Db) {
  Bench bench(kFetType);
  bench.set(kAttack, 0.0);
  bench.set(kRatio, 1.0);
  bench.set(kThreshold, 0.0);
  bench.reset();
  const double gainDb = db(bench.gains(buzz(fromDb(120.0), 1.0)).back());
  const double floorDb = db(2.2 / 102.0);  // -33.3 dB
  EXPECT_GT(gainDb, floorDb);
  EXPECT_LT(gainDb, floorDb + 0.01);
}

TEST(CompressorDetector, OneToOneReducesNothing) {
  for (int type : {kOptoType, kFetType, kVcaType}) {
    Bench bench(type);
    bench.set(kRatio, 0.0);
    bench.reset();
    const double rest = type == kFetType ? 1.1 * 1001.0 / 1101.0 : 1.0;  // 0.0008 dB above 1
    // 1e-13: the rest of the FET is a quotient of rounded constants, and the output's flush takes a last
    // place
    for (double g : bench.gains(buzz(10.0, 0.1)))
      ASSERT_NEAR(g, rest, type == kFetType ? 1e-13 : 2e-16) << type;
    EXPECT_EQ(bench.meter(2), 0.0);
  }
}

/// Corner in Hz of a one-pole that brings `distance` at `from` down to `distance` at `to`.
double cornerHz(double distanceFrom, double distanceTo, double seconds) {
  return std::log(distanceFrom / distanceTo) / (2.0 * std::numbers::pi * seconds);
}

/// The gain law of the FET solved for its level, times half the ratio.
double fetLevel(double gain) { return (1.1011 - 1.101 * gain) / (102.0 * gain - 2.2); }

// 0.2 %: the corners are printed with three digits; the times are exact at every rate.
TEST(CompressorDetector, VcaTimesAreThoseOfItsCornersAtEveryRate) {
  struct Case {
    double attack, release, attackHz, releaseHz;
  };
  for (double rateHz : {44100.0, 96000.0})
    for (const Case& c :
         {Case{0.5, 0.5, 30.30, 0.9196}, Case{0.0, 0.0, 3030.3, 12.5}, Case{1.0, 0.0, 3.030, 7.887}}) {
      Bench bench(kVcaType, rateHz);
      bench.set(kAttack, c.attack);
      bench.set(kRelease, c.release);
      bench.set(kRatio, 1.0);
      bench.reset();
      const double riseSeconds = 0.05 / c.attackHz, fallSeconds = 0.05 / c.releaseHz;
      const Samples rising = bench.gains(buzz(1.0, 20.0 / c.attackHz, rateHz));
      const std::size_t n = count(riseSeconds, rateHz);
      const double final = db(rising.back());
      EXPECT_NEAR(cornerHz(db(rising[0]) - final, db(rising[n]) - final, static_cast<double>(n) / rateHz),
                  c.attackHz, 0.002 * c.attackHz);
      // the high-pass of the key rings down first; a corner is the same from any start
      const std::size_t skip = count(0.2, rateHz), m = count(fallSeconds, rateHz);
      const Samples falling = bench.gains(silence(0.3 + fallSeconds, rateHz));
      EXPECT_NEAR(cornerHz(db(falling[skip]), db(falling[skip + m]), static_cast<double>(m) / rateHz),
                  c.releaseHz, 0.002 * c.releaseHz);
    }
}

TEST(CompressorDetector, FetReleasesAtItsCornerInTermsOfItsLevel) {
  struct Case {
    double attack, release, hz;
  };
  for (const Case& c : {Case{0.0, 0.0, 25.0}, Case{0.0, 0.5, 2.5}, Case{1.0, 0.5, 0.9953}}) {
    Bench bench(kFetType);
    bench.set(kAttack, c.attack);
    bench.set(kRelease, c.release);
    bench.set(kRatio, 0.9);
    bench.reset();
    bench.gains(buzz(4.0, 1.0));
    const Samples g = bench.gains(silence(0.5, kRateHz));
    EXPECT_NEAR(cornerHz(fetLevel(g[100]), fetLevel(g[2500]), 2400.0 / kRateHz), c.hz, 0.002 * c.hz);
  }
}

TEST(CompressorDetector, FetAttacksAtItsCorner) {
  // A ratio this low leaves the feedback open: the level rises as a one-pole, whose corner is that of the
  // attack, 1.515 Hz, and of the release, 0.135 Hz, which never stops.
  Bench bench(kFetType);
  bench.set(kRatio, 1e-6);
  bench.set(kRelease, 1.0);
  bench.reset();
  const Samples g = bench.gains(buzz(1.0, 3.0));
  const auto toGo = [&](double seconds) { return fetLevel(g.back()) - fetLevel(g[count(seconds, kRateHz)]); };
  // the ratio's own glide is over after 0.2 s
  EXPECT_NEAR(cornerHz(toGo(0.2), toGo(0.3), 0.1), 1.515 + 0.135, 0.002 * 1.65);
}

TEST(CompressorDetector, OptoAttacksThroughTwoStages) {
  Bench bench(kOptoType);
  bench.set(kRatio, 1.0);
  bench.reset();
  const Samples g = bench.gains(buzz(0.1, 2.0));
  const double exponent = 1.2 * std::pow(1.218378, 0.7);
  const auto stage2 = [&](double gain) { return std::pow(gain, -2.0 / exponent) - 1.0; };
  const double final = stage2(g.back());
  // Step response of two one-poles, 108.8 and 21.8 Hz. 1 %: the 2 kHz mean in front adds 0.08 ms.
  const double fast = 2.0 * std::numbers::pi * 108.8, slow = 2.0 * std::numbers::pi * 21.8;
  for (double t : {0.005, 0.01, 0.02}) {
    const double expected = 1.0 - (fast * std::exp(-slow * t) - slow * std::exp(-fast * t)) / (fast - slow);
    EXPECT_NEAR(stage2(g[count(t, kRateHz)]) / final, expected, 0.01) << t;
  }
}

TEST(CompressorDetector, OptoReleaseNeverPassesItsTarget) {
  for (double levelDb : {0.0, 20.0, 40.0}) {
    Bench bench(kOptoType, 44100.0);
    bench.set(kAttack, 0.0);
    bench.set(kRelease, 0.0);
    bench.set(kThreshold, 0.0);
    bench.set(kRatio, 1.0);
    bench.reset();
    bench.gains(buzz(fromDb(levelDb), 0.2, 44100.0));
    const Samples g = bench.gains(silence(1.0, 44100.0));
    const double rest = std::pow(1.0001, -0.5 * 1.2 * std::pow(1.218378, 0.7));  // of a stage at 0.01 squared
    for (std::size_t n = 100; n < g.size(); ++n) {
      ASSERT_TRUE(std::isfinite(g[n])) << levelDb;
      ASSERT_GE(g[n], g[n - 1] - 1e-15) << levelDb << " dB, sample " << n;  // a few units in the last place
      ASSERT_LE(g[n], rest + 1e-15);
    }
    EXPECT_GT(g.back(), 0.9);
  }
}

}  // namespace
}  // namespace corvane
