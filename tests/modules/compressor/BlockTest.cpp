#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "core/Rack.h"
#include "modules/compressor/CompressorFamily.h"
#include "modules/compressor/CompressorTable.h"
#include "tests/modules/compressor/PlainCompressor.h"
#include "tests/rig/ModuleRig.h"

namespace corvane {
namespace {

using namespace rig;
using namespace compressor;

constexpr double kRateHz = 48000.0;

ModuleRig rigOf(int type) { return ModuleRig(kCompressorFamily, type, kRateHz); }

/// Noise that swells and dies, so that every detector rises and falls.
Samples swells(double amplitude, double seconds, std::uint32_t seed) {
  Samples x = noise(amplitude, seconds, kRateHz, seed);
  for (std::size_t n = 0; n < x.size(); ++n) x[n] *= std::exp(-static_cast<double>(n % 6000) / 1000.0);
  return x;
}

class PlainAndFast : public ::testing::TestWithParam<int> {
 protected:
  void set(int offset, double p) {
    fast.set(offset, p);
    switch (offset) {
      case kAttack: plain.settings.attack = p; break;
      case kRelease: plain.settings.release = p; break;
      case kHpf: plain.settings.hpf = p; break;
      case kThreshold: plain.thresholdDrive = 0.31623 * std::pow(10.0, 2.5 * (1.0 - p)); break;
      case kRatio: plain.ratio = p; break;
      case kMix: plain.mix = p; break;
      case kMakeupGain: plain.makeupGain = std::pow(10.0, 0.05 * 20.0 * p); break;
      default: break;
    }
  }
  void start() {
    plain.detector = GetParam();
    plain.settings.sampleRateHz = kRateHz;
    for (const Row& row : kRows)
      if (row.offset >= kFirstOwnOffset) set(row.offset, row.defaultValue);
    fast.reset();
    plain.reset();
  }
  ModuleRig fast = rigOf(GetParam());
  PlainCompressor plain;
};

INSTANTIATE_TEST_SUITE_P(Detectors, PlainAndFast, ::testing::Values(1, 2, 3));

// Settings move at every block, and stand still for a while in between, so that the shortcuts for controls at
// rest, kept coefficients and blocks of every length all come to their turn. 1e-12 of full scale: the fast
// functions err by some 1e-15, of which a detector sums up a few hundred. A wrong constant or order shows at
// 1e-9.
TEST_P(PlainAndFast, AgreeWhateverMoves) {
  start();
  const Samples x = swells(1.0, 2.0, 5), key = swells(2.0, 2.0, 6);
  std::mt19937 engine(17);
  std::uniform_real_distribution<double> draw(0.0, 1.0);
  int block = 0;
  for (std::size_t at = 0; at < x.size();) {
    const std::size_t n = std::min<std::size_t>(1 + engine() % kBlockFrames, x.size() - at);
    if (++block % 200 < 40) {
      const double p = draw(engine);
      set(kAttack + static_cast<int>(engine() % 7), p < 0.1 ? 0.0 : p > 0.9 ? 1.0 : p);
    }
    const bool external = block / 100 % 2 == 1;
    fast.set(kSideChainOffset, external ? 1.0 : 0.0);
    const auto from = static_cast<long>(at), to = static_cast<long>(at + n);
    const Samples part(x.begin() + from, x.begin() + to), keyPart(key.begin() + from, key.begin() + to);
    const Samples y = fast.runMono(part, &keyPart);
    for (std::size_t i = 0; i < n; ++i)
      ASSERT_NEAR(y[i], plain.sample(part[i], external ? keyPart[i] : part[i]),
                  1e-12 * (1.0 + std::abs(y[i])))
          << "block " << block << ", sample " << i;
    ASSERT_NEAR(fast.meter(2), std::clamp(1.0 - plain.gain, 0.0, 1.0), 1e-12);
    at += n;
  }
}

TEST(CompressorBlock, DryMixPassesBitForBitWhileTheMeterMoves) {
  for (int type : {1, 2, 3}) {
    ModuleRig rig = rigOf(type);
    rig.set(kMix, 0.0);
    rig.set(kThreshold, 0.0);
    rig.reset();
    const Samples x = noise(1.0, 0.2, kRateHz);
    EXPECT_EQ(rig.runMono(x), x) << type;
    EXPECT_GT(rig.meter(2), 0.1) << type;
  }
}

TEST(CompressorBlock, ExternalKeyAloneDrivesTheGain) {
  const Samples x = constant(0.5, 0.5, kRateHz), loud = noise(1.0, 0.5, kRateHz),
                none = silence(0.5, kRateHz);
  for (int type : {1, 2, 3}) {
    ModuleRig rig = rigOf(type);
    rig.set(kThreshold, 0.0);
    rig.set(kRatio, 1.0);
    rig.set(kSideChainOffset, 1.0);
    rig.reset();
    rig.runMono(x, &none);
    EXPECT_LT(rig.meter(2), 2e-3) << type;  // what the FET's level at rest still takes after half a second
    rig.runMono(x, &loud);
    EXPECT_GT(rig.meter(2), 0.5) << type;
    Samples poisoned = none;
    rig.reset();
    for (std::size_t n = 0; n < poisoned.size(); n += 7) poisoned[n] = NAN;
    for (double y : rig.runMono(x, &poisoned)) ASSERT_TRUE(std::isfinite(y)) << type;
    EXPECT_LT(rig.meter(2), 2e-3) << type;
  }
}

// x - y with y[n] = y[n-1] + c (x[n] - y[n-1]). 1e-4 dB: what is left of its start after a second. At the
// dial's "Off" it still takes what is below 10 Hz.
TEST(CompressorBlock, MonitorPlaysTheKeyBehindItsHighPass) {
  struct Point {
    double hpf, cornerHz, hz;
  };
  for (const Point& point :
       {Point{1.0, 1000.0, 1000.0}, {1.0, 1000.0, 100.0}, {0.0, 10.0, 10.0}, {0.0, 10.0, 1000.0}}) {
    ModuleRig rig = rigOf(3);
    rig.set(kSideChainOffset, 1.0);
    rig.set(kMonitorOffset, 1.0);
    rig.set(kRatio, 0.0);
    rig.set(kHpf, point.hpf);
    rig.reset();
    const Samples key = sine(point.hz, 0.5, 2.0, kRateHz);
    const Samples heard = rig.runMono(constant(0.25, 2.0, kRateHz), &key);
    const double stays = std::exp(-2.0 * std::numbers::pi * point.cornerHz / kRateHz);
    const auto z1 = std::polar(1.0, -2.0 * std::numbers::pi * point.hz / kRateHz);
    const double expected = std::abs(1.0 - (1.0 - stays) / (1.0 - stays * z1));
    EXPECT_NEAR(db(partial(heard, point.hz, kRateHz, 48000) / 0.5), db(expected), 1e-4) << point.hz;
    EXPECT_NEAR(rig.meter(1), 0.25 * fromDb(2.9), 1e-4) << "the meter follows the sound, not the key";
  }
}

TEST(CompressorBlock, ChangeOfTypeKeepsEveryDetector) {
  const Samples loud = noise(1.0, 0.5, kRateHz), none = silence(0.2, kRateHz);
  for (int type : {1, 2, 3}) {
    ModuleRig rig = rigOf(type);
    rig.set(kThreshold, 0.2);
    rig.set(kRelease, 1.0);
    rig.reset();
    rig.runMono(loud);
    const double before = rig.meter(2);
    ASSERT_GT(before, 0.1);
    rig.set(kTypeOffset, (type % 3 + 1) / 15.0);
    rig.runMono(none);
    rig.set(kTypeOffset, type / 15.0);
    rig.runMono(silence(1.0 / kRateHz, kRateHz));
    EXPECT_NEAR(rig.meter(2), before, 0.01 * before)
        << type;  // one sample of the slowest release, and the key's tail
    rig.module->disable(), rig.module->enable();
    EXPECT_EQ(rig.meter(2), 0.0);
    rig.runMono(silence(1.0 / kRateHz, kRateHz));
    EXPECT_LT(rig.meter(2), 0.01) << type;
  }
  ModuleRig high = rigOf(3), highest = rigOf(9);
  EXPECT_EQ(high.runMono(loud), highest.runMono(loud)) << "types above 3 act as 3";
  ModuleRig empty = rigOf(0);
  EXPECT_EQ(empty.runMono(loud), loud);
}

TEST(CompressorBlock, OverflowingKeyDoesNotShutItForEver) {
  Samples key = silence(1.0, kRateHz);
  const Samples x = constant(0.5, 1.0, kRateHz);
  for (int type : {1, 2, 3}) {
    ModuleRig rig = rigOf(type);
    rig.set(kSideChainOffset, 1.0);
    for (double monster : {1e200, 1.7e308, -1.7e308}) {
      key[10] = monster;
      rig.runMono(x, &key);
      EXPECT_TRUE(std::isfinite(rig.runMono(x, &key).back())) << type;
      rig.reset();
      key[10] = 0.0;
    }
  }
}

TEST(CompressorBlock, ControlsGlideWithTenHertzAndJumpAtAReset) {
  ModuleRig rig = rigOf(3);
  rig.set(kMakeupGain, 0.0);
  rig.set(kRatio, 0.0);
  rig.reset();
  const Samples quiet = constant(1e-3, 0.5, kRateHz);
  rig.runMono(quiet);
  rig.set(kMakeupGain, 1.0);
  const Samples y = rig.runMono(quiet);
  // 63 % of the way from 1 to 10 after 15.9 ms; 0.1 %: the nearest sample
  const double covered = (y[count(0.0159155, kRateHz) - 1] * 1e3 - 1.0) / 9.0;
  EXPECT_NEAR(covered, 1.0 - std::exp(-1.0), 1e-3);
  rig.set(kMakeupGain, 0.5);
  rig.reset();
  EXPECT_NEAR(rig.runMono(quiet).front(), 1e-3 * fromDb(10.0),
              1e-9);  // the detector at rest takes 1e-4 decades
}

TEST(CompressorBlock, TwoChannelFormCompressesEachAndShowsTheLouder) {
  const Samples loud = noise(1.0, 0.3, kRateHz), quiet = noise(1e-4, 0.3, kRateHz);
  for (int type : {1, 2, 3}) {
    ModuleRig pair = rigOf(type), mono = rigOf(type);
    const auto [left, right] = pair.runPair(quiet, loud);
    EXPECT_EQ(right, mono.runMono(loud)) << type;
    EXPECT_EQ(pair.meter(2), mono.meter(2)) << type;
    mono.reset();
    EXPECT_EQ(left, mono.runMono(quiet)) << type;
  }
}

}  // namespace
}  // namespace corvane
