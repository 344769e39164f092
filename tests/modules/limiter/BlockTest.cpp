#include <gtest/gtest.h>

#include "core/dsp/AsymmetricFollower.h"
#include "modules/limiter/LimiterFamily.h"
#include "modules/limiter/LimiterTable.h"
#include "tests/modules/limiter/PlainLimiters.h"
#include "tests/rig/ModuleRig.h"

namespace corvane {
namespace {

using namespace limiter;
using namespace rig;

constexpr double kRate = 48000.0;
constexpr int kOptoType = 1, kVcaType = 2, kBrickType = 7, kSaturatorType = 12;
constexpr int kTypes[] = {kOptoType, kVcaType, kBrickType, kSaturatorType};
constexpr int kReduction = 2;

TEST(BrickWallLimiter, NoSamplePassesTheCeilingFromTheFirstOn) {
  Samples hot = noise(4.0, 0.1, kRate);
  for (std::size_t n = 0; n < hot.size(); n += 37) hot[n] = n % 2 ? 100.0 : -1e-3;
  for (int mode = 0; mode < kBrickModes; ++mode)
    for (const bool soft : {false, true})
      for (const double ceilingNorm : {0.0, 0.5, 0.8, 1.0})
        for (const double first : {10.0, -0.999, 1.0001, 1e-9}) {
          ModuleRig rig(kLimiterFamily, kBrickType, kRate);
          rig.set(kMode, mode / 10.0);
          rig.set(kSoft, soft);
          rig.set(kCeiling, ceilingNorm);
          rig.reset();
          const double ceiling = fromDb(50.0 * ceilingNorm - 40.0);
          Samples x = hot;
          x[0] = first * ceiling;
          const Samples y = rig.runMono(x);
          EXPECT_LT(peak(y), ceiling) << "mode " << mode << ", first sample " << first << ", soft " << soft;
          const double level = std::abs(first) + 0.01 + 1e-6;
          if (!soft) {
            EXPECT_NEAR(y[0], x[0] / std::max(level, 1.0), 1e-12 * ceiling);
          }
        }
}

TEST(Limiter, AModeOrShapeWithoutMeaningPassesAndTheReductionStands) {
  const std::pair<int, int> variants[] = {{kBrickType, kMode}, {kSaturatorType, kShape}};
  for (const auto& [type, parameter] : variants) {
    ModuleRig rig(kLimiterFamily, type, kRate);
    const Samples x = noise(4.0, 0.1, kRate);
    EXPECT_NE(rig.runMono(x), x);
    const double reduction = rig.meter(kReduction);
    EXPECT_GT(reduction, 0.05);
    for (const double p : {type == kBrickType ? 0.3 : 0.6, 1.0}) {
      rig.set(parameter, p);
      EXPECT_EQ(rig.runMono(x), x);
      EXPECT_EQ(rig.meter(kReduction), reduction);
    }
    const double level = rig.meter(1);
    rig.set(kTypeOffset, 5.0 / 15.0);  // no variant: nothing runs
    EXPECT_EQ(rig.runMono(silence(0.1, kRate)), silence(0.1, kRate));
    EXPECT_EQ(rig.meter(1), level);
    EXPECT_EQ(rig.meter(kReduction), reduction);
    rig.set(kTypeOffset, 0.0);  // an empty place passes and shows
    EXPECT_EQ(rig.runMono(x), x);
    EXPECT_GT(rig.meter(1), level);
  }
}

TEST(Limiter, ReductionRestsAtZeroAndFollowsTheGain) {
  for (const int type : {kOptoType, kVcaType, kBrickType}) {
    ModuleRig rig(kLimiterFamily, type, kRate);
    rig.set(kCeiling, 0.4);
    rig.reset();
    EXPECT_EQ(rig.meter(kReduction), 0.0);
    rig.runMono(silence(0.01, kRate));
    EXPECT_LT(rig.meter(kReduction), 2e-6) << "no flash behind a reset";
    const double gain = rig.runMono(constant(1.0, 0.5, kRate)).back();
    EXPECT_GT(rig.meter(kReduction), 0.8);
    EXPECT_NEAR(rig.meter(kReduction), 1.0 - gain, 1e-3) << type;  // the root of the share is fast
    rig.module->resetMeters();
    EXPECT_EQ(rig.meter(kReduction), 0.0);
  }
}

TEST(Limiter, TheSaturatorsMeterMovesAtNineTenthsOfTheSpeed) {
  ModuleRig rig(kLimiterFamily, kSaturatorType, kRate), listening(kLimiterFamily, kSaturatorType, kRate);
  listening.set(kMonitorOffset, 1.0);
  const Samples x = joined(noise(4.0, 0.1, kRate), noise(0.1, 0.1, kRate));
  rig.runMono(x);
  AsymmetricFollower follower{1.0, 0.9 * (1.0 - std::pow(0.109, 1.0 / (0.30000001192092896 * kRate)))};
  SaturatorState s;
  for (const double key : listening.runMono(x)) {
    const double gain = plain::saturator(key, 1.0, 2, false, designSaturator(0.5, kRate), s);
    follower.followBlock(&gain, 1);
  }
  EXPECT_NEAR(rig.meter(kReduction), 1.0 - follower.level, 1e-12);  // the fast laws
  EXPECT_GT(rig.meter(kReduction), 0.01);
}

TEST(Limiter, DisableThenEnableForgetsTheDetectorAndTheMeter) {
  for (const int type : kTypes) {
    ModuleRig rig(kLimiterFamily, type, kRate), fresh(kLimiterFamily, type, kRate);
    const Samples loud = noise(8.0, 0.2, kRate), x = noise(0.5, 0.1, kRate, 5);
    rig.runMono(loud);
    EXPECT_GT(rig.meter(kReduction), 0.1) << type;
    rig.module->disable();
    EXPECT_EQ(rig.meter(kReduction), 0.0) << type;
    EXPECT_EQ(rig.runMono(x), x) << type;
    rig.module->enable();
    EXPECT_EQ(rig.runMono(x), fresh.runMono(x)) << type;
  }
}

TEST(Limiter, ATypeWriteSeedsTheDetectorsAndAResetClearsThem) {
  VcaCoefficients c{.vcaAttack = designVcaAttack(0.1 * std::pow(1000.0, 0.5), kRate)};
  designVcaRelease(100.0, 0.1 * std::pow(1000.0, 0.5), kRate, c);
  const auto firstGains = [](ModuleRig& rig) {
    Samples y = rig.runMono(constant(1e-3, 0.001, kRate));
    for (double& sample : y) sample /= 1e-3;
    return y;
  };
  ModuleRig rig(kLimiterFamily, kVcaType, kRate);
  for (const double seed : {0.0, 1e-5}) {
    VcaState s{seed, seed};
    if (seed > 0.0) rig.set(kTypeOffset, kVcaType / 15.0);
    // 1e-12: a division undoes the multiplication
    for (const double gain : firstGains(rig)) ASSERT_NEAR(gain, plain::vca(1e-3, 1.0, false, c, s), 1e-12);
    rig.runMono(noise(4.0, 0.01, kRate));
  }
}

TEST(Limiter, ATypeCanChangeWhileAudioRuns) {
  const Samples x = noise(4.0, 0.05, kRate);
  ModuleRig rig(kLimiterFamily, kOptoType, kRate);
  for (const int type : {kBrickType, kOptoType, kSaturatorType, kBrickType, kVcaType, kBrickType}) {
    rig.set(kTypeOffset, type / 15.0);
    const Samples y = rig.runMono(x);
    if (type == kBrickType) {
      EXPECT_LT(peak(y), 1.0);
    }  // no state of another variant in the way
    EXPECT_GT(rms(y), 0.05) << type;
    EXPECT_LT(peak(y), 5.0) << type;
  }
  // Coefficients are those of the variant in force, with the controls moved while another one ran.
  ModuleRig moved(kLimiterFamily, kOptoType, kRate), set(kLimiterFamily, kVcaType, kRate);
  for (ModuleRig* r : {&moved, &set}) {
    r->set(kAttack, 0.1);
    r->set(kRelease, 0.9);
    if (r == &moved) r->set(kTypeOffset, kVcaType / 15.0);
    r->reset();
  }
  EXPECT_EQ(moved.runMono(x), set.runMono(x));
}

TEST(Limiter, KeyOfPairOneSetsTheGain) {
  for (const int type : kTypes) {
    ModuleRig own(kLimiterFamily, type, kRate), keyed(kLimiterFamily, type, kRate);
    keyed.set(kSideChainOffset, 1.0);
    const Samples key = noise(4.0, 0.1, kRate);
    Samples quiet = key;
    for (double& sample : quiet) sample *= 1.0 / 1024.0;
    const Samples expected = own.runMono(key), y = keyed.runMono(quiet, &key);
    // the gains are the same and a power of two scales without rounding; filters flush at 1e-30
    for (std::size_t n = 0; n < y.size(); ++n) ASSERT_NEAR(y[n] * 1024.0, expected[n], 1e-24) << type;
  }
}

TEST(Limiter, MonitorSendsTheKeyWithoutTheOutputGain) {
  for (const int type : {kOptoType, kVcaType, kBrickType}) {
    ModuleRig rig(kLimiterFamily, type, kRate);
    rig.set(kSideChainOffset, 1.0);
    rig.set(kMonitorOffset, 1.0);
    rig.set(kOutput, 1.0);
    const Samples x = noise(0.5, 0.05, kRate), key = noise(2.0, 0.05, kRate, 9);
    EXPECT_EQ(rig.runMono(x, &key), key);
    EXPECT_GT(rig.meter(1), rig.meter(0));
    rig.set(kHpf, 1.0);
    rig.reset();
    const Samples bass = sine(50.0, 1.0, 0.5, kRate);
    // 1 kHz, 12 dB per octave: 52 dB down at 50 Hz; the brick wall's key is never filtered
    EXPECT_NEAR(peak(rig.runMono(bass, &bass), 12000), type == kBrickType ? 1.0 : fromDb(-52.06), 1e-3);
  }
}

TEST(Limiter, OutputGainComesBehindTheCeiling) {
  ModuleRig rig(kLimiterFamily, kBrickType, kRate), loud(kLimiterFamily, kBrickType, kRate);
  loud.set(kOutput, 0.75);
  loud.reset();
  const Samples x = noise(4.0, 0.1, kRate), y = rig.runMono(x), z = loud.runMono(x);
  for (std::size_t n = 0; n < y.size(); ++n) ASSERT_NEAR(z[n], y[n] * fromDb(10.0), 1e-14);
  // A move of a control takes 200 ms to come to 0.109 of its way, whatever the rate.
  for (const double rate : {44100.0, 96000.0}) {
    ModuleRig moving(kLimiterFamily, kBrickType, rate);
    moving.set(kOutput, 0.0);
    const Samples step = moving.runMono(constant(0.1, 0.2, rate));
    // 0.002: the last block's share of the way
    EXPECT_NEAR(step.back() / 0.1, 0.1 + 0.9 * 0.1091, 0.002);
  }
}

TEST(Limiter, LinkGivesBothChannelsTheGainOfTheLouderOne) {
  const Samples loud = noise(4.0, 0.1, kRate);
  Samples quiet = loud;
  for (double& sample : quiet) sample *= -1.0 / 1024.0;
  for (const int type : {kOptoType, kVcaType, kBrickType}) {
    ModuleRig linked(kLimiterFamily, type, kRate), apart(kLimiterFamily, type, kRate);
    ModuleRig alone(kLimiterFamily, type, kRate);
    linked.set(kLink, 1.0);
    const auto [linkedLoud, linkedQuiet] = linked.runPair(loud, quiet);
    const auto [apartLoud, apartQuiet] = apart.runPair(loud, quiet);
    EXPECT_EQ(linkedLoud, apartLoud) << type;
    EXPECT_EQ(apartQuiet, alone.runMono(quiet)) << type;
    // a power of two scales without rounding
    for (std::size_t n = 0; n < loud.size(); ++n) ASSERT_EQ(linkedQuiet[n] * -1024.0, linkedLoud[n]) << type;
    EXPECT_EQ(linked.meter(kReduction), apart.meter(kReduction)) << "of the deeper channel";
  }
}

}  // namespace
}  // namespace corvane
