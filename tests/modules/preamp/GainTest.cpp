#include <gtest/gtest.h>

#include "modules/preamp/PreampFamily.h"
#include "modules/preamp/PreampTable.h"
#include "tests/rig/ModuleRig.h"

namespace corvane {
namespace {

using namespace preamp;
using namespace rig;

constexpr int kPlainType = 1;
constexpr int kPostGain = 2, kAutomat = 3;
constexpr double kUp = 1.0, kDown = 0.0, kRms = 1.0, kPeakMode = 0.0;

/// Knob position of a gain in dB.
double knob(double gainDb) { return (gainDb + 30.0) / 60.0; }
/// Knob position of a reference level in dB.
double reference(double levelDb) { return (levelDb + 30.0) / 30.0; }

/// A "Gain" module with automation running at `referenceDb`.
ModuleRig automatedRig(double detect, double levelMode, double referenceDb, double gainDb = 0.0) {
  ModuleRig rig(kPreampFamily, kPlainType);
  rig.set(kGain, knob(gainDb));
  rig.reset();
  rig.set(kAutoDetectMode, detect);
  rig.set(kAutoLevelMode, levelMode);
  rig.set(kRefLevel, reference(referenceDb));
  rig.set(kAutoIn, 1.0);
  return rig;
}

double automatDb(ModuleRig& rig) { return rig.meter(kAutomat) * 60.0 - 30.0; }

TEST(Preamp, FlipsPolarityInAStraightLineOfEightMilliseconds) {
  for (const auto& [rateHz, samples] : {std::pair{44100.0, 353}, {88200.0, 706}, {384000.0, 3072}}) {
    ModuleRig rig(kPreampFamily, kPlainType, rateHz);
    rig.set(kPhaseLeft, 1.0);
    const Samples y = rig.runMono(constant(1.0, 0.02, rateHz));
    for (int n = 0; n < samples - 1; n += 50)  // 1e-10: 3072 roundings of a running sum
      EXPECT_NEAR(y[static_cast<std::size_t>(n)], 1.0 - 250.0 / rateHz * (n + 1), 1e-10);
    // At a rate where the way is a whole number of steps, rounding may ask for one more.
    EXPECT_GT(y[static_cast<std::size_t>(samples - 2)], -1.0) << rateHz;
    EXPECT_EQ(y[static_cast<std::size_t>(samples)], -1.0) << rateHz;
    rig.set(kPhaseLeft, 1.0);  // the same again moves nothing
    EXPECT_EQ(rig.runMono({1.0, 1.0}), Samples(2, -1.0));
    rig.set(kPhaseLeft, 0.0);
    rig.reset();  // ends the turn
    EXPECT_EQ(rig.runMono({1.0, 1.0}), Samples(2, 1.0));
  }
}

TEST(Preamp, GlidesToItsGainAsAOnePole) {
  for (double rateHz : {44100.0, 96000.0, 384000.0}) {
    ModuleRig rig(kPreampFamily, kPlainType, rateHz);
    rig.set(kGain, knob(20.0));
    const Samples y = rig.runMono(constant(0.01, 2.0, rateHz));
    const double share = 22.05 / rateHz;
    for (std::size_t n : {std::size_t{0}, std::size_t{63}, std::size_t{64}, std::size_t{5000}})
      // 1e-7: the knob's dB are in single precision (2e-6 dB at 20 dB)
      EXPECT_NEAR(y[n], 0.01 * (10.0 - 9.0 * std::pow(1.0 - share, static_cast<double>(n + 1))), 1e-7);
    EXPECT_NEAR(rig.meter(kPostGain), 0.1, 1e-5);  // the meter's own residue after 2 s
  }
}

TEST(Preamp, MetersBetweenGainAndColourWhetherAskedAloneOrWithOthers) {
  ModuleRig first(kPreampFamily, 4), second(kPreampFamily, kPlainType);
  first.set(kGain, 0.7), second.set(kGain, 0.3);
  first.reset(), second.reset();
  const double attack = 1.0 - std::pow(0.01, 1.0 / ((std::pow(101.0, 0.4) - 1.0) * 48.0));
  const double release = 1.0 - std::pow(0.0625, 1.0 / (100.0 * std::pow(100.0, 0.4) * 48.0));
  const auto gainOf = [](double p) { return fromDb(physicalValue(kPreampFamily, kGain, p)); };
  double loud = 0.0, quiet = 0.0;
  for (std::uint32_t block = 0; block < 40; ++block) {
    const Samples x = noise(0.5, (block % 3 == 0 ? 64.0 : 23.0) / 48000.0, 48000.0, block + 1);
    first.runMono(x), second.runMono(x);
    if (block % 5 == 0) {
      StripEffect* const rack[] = {first.module.get(), nullptr, second.module.get()};
      StripEffect::settleMeters(rack);
    }
    for (const double v : x) {
      loud = followLevel(std::abs(v) * gainOf(0.7), loud, attack, release);
      quiet = followLevel(std::abs(v) * gainOf(0.3), quiet, attack, release);
    }
    if (block % 7 == 0) {
      EXPECT_NEAR(first.meter(kPostGain), loud, 1e-14);  // coefficients round once or twice
    }
  }
  EXPECT_NEAR(first.meter(kPostGain), loud, 1e-14);
  EXPECT_NEAR(second.meter(kPostGain), quiet, 1e-14);
  second.module->disable();
  second.runMono(constant(1.0, 0.1, 48000.0));
  EXPECT_NEAR(second.meter(kPostGain), quiet, 1e-14);  // a module that passes has no gain to meter behind
  second.module->resetMeters();
  EXPECT_EQ(second.meter(kPostGain), 0.0);
}

TEST(Preamp, AutomationSettlesWhereTwiceTheAmplitudeMeetsTheReference) {
  ModuleRig rig = automatedRig(kRms, kUp, -15.0);
  rig.runMono(sine(1000.0, 0.5, 3.0, 48000.0));
  // Twice the RMS of a sine reads 2 A = 1. 0.01 dB: ripple of 2 kHz that the 1.67 Hz detector lets pass,
  // and 1.4142 for the root of 2.
  EXPECT_NEAR(automatDb(rig), -15.0, 0.01);
  const Samples y = rig.runMono(sine(1000.0, 0.5, 0.5, 48000.0));
  EXPECT_NEAR(db(peak(y)), db(0.5) - 15.0, 0.01);
}

TEST(Preamp, PeakDetectionBringsTheLargestSampleToTheReference) {
  ModuleRig rig = automatedRig(kPeakMode, kUp, -12.0);
  rig.runMono(constant(0.5, 0.5, 48000.0));
  EXPECT_NEAR(automatDb(rig), -12.0 - db(0.5), 1e-9);  // rounding of a logarithm
}

TEST(Preamp, DownNeverLiftsAndUpAndDownLiftsSlowly) {
  for (double detect : {kRms, kPeakMode}) {
    ModuleRig down = automatedRig(detect, kDown, -15.0, -6.0);
    const Samples quiet = sine(1000.0, 0.001, 1.0, 48000.0);
    down.runMono(quiet);
    EXPECT_NEAR(automatDb(down), -6.0, 1e-5);
    down.runMono(sine(1000.0, 1.0, 3.0, 48000.0));
    EXPECT_LT(automatDb(down), -14.0);

    ModuleRig up = automatedRig(detect, kUp, -15.0, -6.0);
    up.runMono(quiet);
    EXPECT_EQ(up.meter(kAutomat), 1.0);  // not beyond +30 dB, however quiet
  }
}

TEST(Preamp, AutomatedGainFallsAtOnceAndRisesByItsShare) {
  ModuleRig rig = automatedRig(kPeakMode, kUp, 0.0, 0.0);
  const double share = 1.0 - std::pow(0.1091012, 1.0 / (0.0125 * 48000.0));
  const Samples rise = rig.runMono(constant(0.5, 0.02, 48000.0));
  // Towards 2; every block of 16 brings one step more, the first of them before anything was learned.
  for (int n : {0, 5, 15, 16, 63, 64, 200}) {
    const int steps = n + 1 + n / 16;
    EXPECT_NEAR(rise[static_cast<std::size_t>(n)], 0.5 * (2.0 - std::pow(1.0 - share, steps)), 1e-12) << n;
  }
  const Samples fall = rig.runMono(constant(4.0, 0.001, 48000.0));
  EXPECT_EQ(fall.front(), 1.0);
}

TEST(Preamp, KeepsWhatALoudPassageTaughtUntilStartedAnew) {
  ModuleRig rig = automatedRig(kPeakMode, kUp, -12.0);
  rig.runMono(constant(0.9, 0.1, 48000.0));
  const double learned = rig.meter(kAutomat);
  rig.runMono(constant(0.01, 1.0, 48000.0));
  EXPECT_EQ(rig.meter(kAutomat), learned);
  rig.runMono(silence(1.0, 48000.0));
  EXPECT_EQ(rig.meter(kAutomat), learned);

  rig.set(kAutoIn, 0.0);  // off: the gain stays where it stood
  const Samples off = rig.runMono(constant(1.0, 0.1, 48000.0));
  EXPECT_NEAR(db(off.front()), learned * 60.0 - 30.0, 0.01);  // what the rise still lacked
  EXPECT_NEAR(db(off.back()), learned * 60.0 - 30.0, 0.01);

  rig.set(kAutoIn, 1.0);
  rig.runMono(constant(0.1, 0.1, 48000.0));
  EXPECT_NEAR(automatDb(rig), -12.0 - db(0.1), 1e-9);
}

TEST(Preamp, AHandOnTheKnobReplacesWhatWasLearned) {
  ModuleRig rig = automatedRig(kPeakMode, kUp, -12.0);
  rig.runMono(constant(0.5, 0.1, 48000.0));
  rig.set(kGain, knob(-10.0));
  rig.runMono(constant(0.5, 0.1, 48000.0));  // below the level at which -10 dB is right: -2 dB
  EXPECT_NEAR(automatDb(rig), -10.0, 1e-5);
  rig.runMono(constant(fromDb(3.0), 0.1, 48000.0));
  EXPECT_NEAR(automatDb(rig), -15.0, 1e-5);
}

TEST(Preamp, PairSharesTheGainOfItsLouderChannel) {
  for (double detect : {kRms, kPeakMode}) {
    ModuleRig mono = automatedRig(detect, kUp, -15.0), pair = automatedRig(detect, kUp, -15.0);
    const Samples loud = sine(300.0, 0.8, 0.5, 48000.0), quiet = sine(300.0, 0.1, 0.5, 48000.0);
    const Samples alone = mono.runMono(loud);
    const auto [left, right] = pair.runPair(quiet, loud);
    EXPECT_EQ(right, alone);
    for (std::size_t n = 0; n < left.size(); n += 97) EXPECT_NEAR(left[n], alone[n] / 8.0, 1e-12);
  }
}

TEST(Preamp, DisabledOrEmptyPassesAndKeepsItsMetersMoving) {
  for (const bool disabled : {true, false}) {
    ModuleRig rig(kPreampFamily, disabled ? kPlainType : 0);
    rig.set(kGain, knob(12.0));
    rig.reset();
    if (disabled) rig.module->disable();
    const Samples x = noise(0.5, 0.1, 48000.0);
    EXPECT_EQ(rig.runMono(x), x);
    EXPECT_GT(rig.meter(0), 0.1);
    EXPECT_EQ(rig.meter(0), rig.meter(1));
  }
}

}  // namespace
}  // namespace corvane
