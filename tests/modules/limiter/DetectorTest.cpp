#include <gtest/gtest.h>

#include "modules/limiter/LimiterTimes.h"
#include "tests/modules/limiter/PlainLimiters.h"
#include "tests/rig/Signals.h"

namespace corvane::limiter {
namespace {

using namespace rig;

constexpr double kRate = 48000.0;
constexpr int kBlock = 64;

/// Bursts over 120 dB of level with gaps, then a long decay: every branch of every detector.
Samples bursts() {
  Samples x;
  std::uint32_t seed = 1;
  for (const double db : {-6.0, 20.0, -60.0, 6.0, 40.0, -20.0, 0.0})
    x = joined(joined(x, noise(fromDb(db), 0.05, kRate, seed++)), silence(0.03, kRate));
  x = joined(x, constant(fromDb(-3.0), 0.05, kRate));
  return joined(x, silence(0.5, kRate));
}

/// Gains of a block form over the rectified `x`, in blocks whose length changes.
template <typename Block>
Samples blockwise(const Samples& x, Block block) {
  Samples rectified(x.size()), gains(x.size());
  for (std::size_t n = 0; n < x.size(); ++n) rectified[n] = std::abs(x[n]);
  for (std::size_t at = 0, length = 1; at < x.size(); at += length, length = length % kBlock + 1) {
    const std::size_t frames = std::min(length, x.size() - at);
    block(rectified.data() + at, static_cast<int>(frames), gains.data() + at);
  }
  return gains;
}

// 1e-12: the fast functions are good to a few units of the last place, and every detector forgets.
constexpr double kFastTolerance = 1e-12;

TEST(Limiters, BlockFormsGiveWhatThePlainFormsGive) {
  const Samples x = bursts();
  for (const double ci : {1.0, 30.0})
    for (const bool soft : {false, true})
      for (const double release : {0.0, 0.5, 1.0}) {
        OptoCoefficients oc{.optoAttack = designOptoAttack(1.0 - release, kRate)};
        designOptoRelease(release, kRate, oc);
        // up to the attack that passes its target, at the lowest rate
        VcaCoefficients vc{.vcaAttack = designVcaAttack(100.0 - 99.9 * release, 44100.0)};
        designVcaRelease(10.0 + 990.0 * release, 1.0, kRate, vc);
        const BrickWallCoefficients bc = designBrickWall(10.0 + 990.0 * release, kRate);
        const SaturatorCoefficients sc = designSaturator(release, kRate);

        const auto compare = [&](const Samples& gains, auto plain, const char* what) {
          for (std::size_t n = 0; n < x.size(); ++n) {
            const double expected = plain(x[n]);
            ASSERT_NEAR(gains[n], expected, kFastTolerance * expected)
                << what << " at " << n << ", soft " << soft << ", release " << release << ", ci " << ci;
          }
        };
        OptoState o, po;
        compare(
            blockwise(x, [&](auto k, int n, auto g) { optoGains(k, n, ci, soft, oc, o, g); }),
            [&](double k) { return plain::opto(k, ci, soft, oc, po); }, "opto");
        VcaState v, pv;
        compare(
            blockwise(x, [&](auto k, int n, auto g) { vcaGains(k, n, ci, soft, vc, v, g); }),
            [&](double k) { return plain::vca(k, ci, soft, vc, pv); }, "vca");
        for (int mode = 0; mode < kBrickModes; ++mode) {
          BrickWallState b, pb;
          compare(
              blockwise(x, [&](auto k, int n, auto g) { brickWallGains(k, n, ci, mode, soft, bc, b, g); }),
              [&](double k) { return plain::brickWall(k, ci, mode, soft, bc, pb); }, "brick wall");
        }
        for (int shape = 0; shape < kShapes; ++shape) {
          SaturatorState s, ps;
          compare(
              blockwise(x, [&](auto k, int n, auto g) { saturatorGains(k, n, ci, shape, soft, sc, s, g); }),
              [&](double k) { return plain::saturator(k, ci, shape, soft, sc, ps); }, "saturator");
        }
      }
}

/// Gain after one second of a standing key.
template <typename Block>
double settledGain(double key, Block block) {
  return blockwise(constant(key, 1.0, kRate), block).back();
}

TEST(OptoLimiter, StandsOnItsStaticCurve) {
  OptoCoefficients c{.optoAttack = designOptoAttack(0.5, kRate)};
  designOptoRelease(0.5, kRate, c);
  for (const double ceilingDb : {-20.0, 0.0})
    for (double db = -60.0; db <= 24.0; db += 7.0) {
      const double key = fromDb(db), ci = fromDb(-ceilingDb);
      const auto gain = [&](bool soft) {
        OptoState s;
        return settledGain(key, [&](auto k, int n, auto g) { optoGains(k, n, ci, soft, c, s, g); });
      };
      // 1e-9: a thousand attack times have passed
      const double hard = 0.93 * key * ci + 0.05 + 1e-6, soft = 0.93 * key * ci + 0.01 + 1e-6;
      EXPECT_NEAR(gain(false), std::min(1.0, 1.0 / hard), 1e-9) << db;
      EXPECT_NEAR(gain(true), std::tanh(soft) / soft, 1e-9) << db;
    }
}

TEST(OptoLimiter, TimesFollowTheControls) {
  // Where the control's time is the reference time, the cell's share is that of a one-pole of that time.
  const double referenceMs = 0.033 * std::sqrt(1000.0);
  const double norm = std::log10(referenceMs / 0.132) / 4.0;
  EXPECT_NEAR(designOptoAttack(norm, 44100.0), shareOver(referenceMs * 44.1), 1e-15);
  EXPECT_NEAR(designOptoAttack(0.25, kRate) * 10.0, designOptoAttack(0.0, kRate), 1e-15);  // four decades
  EXPECT_NEAR(designOptoAttack(0.5, 96000.0) * 2.0, designOptoAttack(0.5, kRate), 1e-15);

  // The peak falls by e in 12 ms / 2 pi times the root of the release in seconds: 0.11068 s in the middle.
  OptoCoefficients c;
  designOptoRelease(0.5, kRate, c);
  OptoState s{.optoPeak = 1.0, .optoMemory = 1.0, .optoHold = 1.0, .optoFollow = 1.0};
  const double tauSamples = 0.012 * std::sqrt(0.0035 * std::sqrt(1000.0)) / (2.0 * std::numbers::pi) * kRate;
  const Samples quiet(kBlock, 0.0);
  Samples gains(kBlock);
  optoGains(quiet.data(), kBlock, 1.0, false, c, s, gains.data());
  EXPECT_NEAR(s.optoPeak, std::exp(-kBlock / tauSamples), 1e-12);
}

TEST(OptoLimiter, ReleasesFastFirstAndNeverBelowTheKey) {
  OptoCoefficients c{.optoAttack = designOptoAttack(0.0, kRate)};
  designOptoRelease(0.3, kRate, c);
  for (const bool soft : {false, true}) {
    OptoState s;
    const auto block = [&](auto k, int n, auto g) { optoGains(k, n, 1.0, soft, c, s, g); };
    blockwise(constant(8.0, 0.5, kRate), block);
    const Samples gains = blockwise(silence(2.0, kRate), block);
    EXPECT_LT(s.optoMemory, 1.2);  // eight times the ceiling is gone within two seconds
    for (std::size_t n = 1; n < gains.size(); ++n) ASSERT_GE(gains[n], gains[n - 1] - 1e-15) << n;
    blockwise(constant(0.5, 1.0, kRate), block);
    EXPECT_GE(s.optoMemory, 0.93 * 0.5 + (soft ? 0.01 : 0.05) - 1e-12);
  }
}

TEST(VcaLimiter, StandsOnItsStaticCurve) {
  const double attackMs = 3.0;
  VcaCoefficients c{.vcaAttack = designVcaAttack(attackMs, kRate)};
  designVcaRelease(50.0, attackMs, kRate, c);
  for (const bool soft : {false, true})
    for (double db = -60.0; db <= 24.0; db += 7.0) {
      // The floor rests where one fall towards V and one rise towards the key cancel.
      const double V = soft ? -1.2999999523162842 : -0.800000011920929;
      const double l = std::log10(fromDb(db) + 0.0001), a = c.vcaAttack, f = c.vcaFall;
      const double floor = l > V ? ((1.0 - a) * f * V + a * l) / (1.0 - (1.0 - a) * (1.0 - f)) : V;
      const double G = std::pow(10.0, floor), y = G + 1e-6;
      VcaState s;
      const double gain =
          settledGain(fromDb(db), [&](auto k, int n, auto g) { vcaGains(k, n, 1.0, soft, c, s, g); });
      // 1e-3: from the reset at 0 the slower fall has covered four of its times, e^-8.9 of 1.3 decades
      EXPECT_NEAR(gain, soft ? std::tanh(G) / G : std::min(1.0, 1.0 / y), db < 0.0 ? 1e-3 : 1e-9) << db;
    }
}

TEST(VcaLimiter, TimesFollowTheControls) {
  // The fastest attack at the lowest rate passes its target by 0.4 %.
  EXPECT_NEAR(designVcaAttack(0.1, 44100.0), 1.0039, 5e-5);
  EXPECT_NEAR(designVcaAttack(1.0, kRate) * 1.0, designVcaAttack(10.0, kRate) * 10.0, 1e-15);
  // In 1.4 times 2.8 times the release the floor covers its distance from the rest to 0.1091.
  VcaCoefficients c{.vcaAttack = designVcaAttack(1.0, kRate)};
  designVcaRelease(100.0, 1.0, kRate, c);
  VcaState s;
  blockwise(silence(1.4 * 0.28, kRate), [&](auto k, int n, auto g) { vcaGains(k, n, 1.0, false, c, s, g); });
  EXPECT_NEAR(s.vcaFloor, -0.800000011920929 * (1.0 - 0.1091012), 1e-12);
}

/// Levels of a brick wall in silence after `loud`, read back off the hard gain while that is below 1.
Samples releaseLevels(int mode, double releaseMs, double loud, double seconds) {
  const BrickWallCoefficients c = designBrickWall(releaseMs, kRate);
  BrickWallState s;
  const auto block = [&](auto k, int n, auto g) { brickWallGains(k, n, 1.0, mode, false, c, s, g); };
  blockwise(constant(loud, 0.2, kRate), block);
  Samples levels = blockwise(silence(seconds, kRate), block);
  for (double& g : levels) g = g < 1.0 ? 1.0 / g - 1e-6 : 0.0;
  return levels;
}

TEST(BrickWall, ReleasesOfItsThreeModesFollowTheirClosedForms) {
  for (const double releaseMs : {10.0, 100.0, 1000.0}) {
    const BrickWallCoefficients c = designBrickWall(releaseMs, kRate);
    const double top = 20.0 + 0.01;
    // 1e-9: thousands of rounded steps of a level near 20

    // Mode 1: the inverse of the distance grows by slow1 per sample, and by no more than the steepest step
    // gives. From 20 ms on the detector has come to its 0.01.
    const Samples mode1 = releaseLevels(0, releaseMs, 20.0, 0.05);
    const std::size_t from = 960;
    const double d0 = mode1[from] - 0.01;
    for (std::size_t n = from; n < mode1.size() && mode1[n] > 0.0; n += 97) {
      const double steps = static_cast<double>(n - from), d = mode1[n] - 0.01;
      EXPECT_GE(1.0 / d, 1.0 / d0 + c.slow1 * steps - 1e-9) << releaseMs << " ms";
      EXPECT_LE(1.0 / d, 1.0 / d0 + c.slow1 * steps / (1.0 - c.slow1 * d0) + 1e-9) << releaseMs << " ms";
    }

    // Mode 2: detector and stage are two one-poles towards 0.1 in a row.
    const Samples mode2 = releaseLevels(1, releaseMs, 20.0, 0.2);
    const double q = 1.0 - c.slow2, r = 1.0 - c.fastFall, b = c.slow2 * (top - 0.1) * r / (r - q);
    // Mode 3: four one-poles of one share in a row.
    const Samples mode3 = releaseLevels(2, releaseMs, 20.0, 0.2);
    const double p = 1.0 - c.slow3, s = c.slow3;
    for (std::size_t at = 0; at < mode2.size(); at += 31) {
      const double n = static_cast<double>(at) + 1.0;
      const double two = 0.1 + (top - 0.1 - b) * std::pow(q, n) + b * std::pow(r, n);
      const double sum =
          1.0 + n * s + s * s * n * (n + 1.0) / 2.0 + s * s * s * n * (n + 1.0) * (n + 2.0) / 6.0;
      const double three = 0.1 + (top - 0.1) * std::pow(p, n) * sum;
      if (mode2[at] > 0.0) {
        EXPECT_NEAR(mode2[at], two, 1e-9) << releaseMs << " ms, " << n;
      }
      if (mode3[at] > 0.0) {
        EXPECT_NEAR(mode3[at], three, 1e-9) << releaseMs << " ms, " << n;
      }
    }
    EXPECT_GT(mode2[31], 1.0);  // the comparison has met something
    EXPECT_GT(mode3[31], 1.0);
  }
}

TEST(BrickWall, TimesDoNotDependOnTheRate) {
  const BrickWallCoefficients slow = designBrickWall(100.0, 48000.0), fast = designBrickWall(100.0, 96000.0);
  for (const auto share : {&BrickWallCoefficients::fastFall, &BrickWallCoefficients::slow1,
                           &BrickWallCoefficients::slow2, &BrickWallCoefficients::slow3})
    EXPECT_NEAR(std::pow(1.0 - fast.*share, 2.0), 1.0 - slow.*share, 1e-14);
  // 2 x 0.35 x 3 times the release in mode 1, and fixed ratios between the modes
  EXPECT_NEAR(std::pow(1.0 - slow.slow1, 2.1 * 100.0 * 48.0), 0.1091012, 1e-10);
  EXPECT_NEAR(std::log1p(-slow.slow3) / std::log1p(-slow.slow2), 4.0, 1e-9);
  EXPECT_NEAR(std::log1p(-slow.slow2) / std::log1p(-slow.slow1), 2.0, 1e-9);
}

}  // namespace
}  // namespace corvane::limiter
