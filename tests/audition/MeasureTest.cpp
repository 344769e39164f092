#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

#include "audition/Hearing.h"
#include "audition/Table.h"
#include "core/Rack.h"

namespace corvane::audition {
namespace {

Sound sine(double hz, double seconds, double amplitude) {
  Sound x(frames(seconds));
  for (std::size_t n = 0; n < x.size(); ++n)
    x[n] = amplitude * std::sin(2.0 * std::numbers::pi * hz * static_cast<double>(n) / kRateHz);
  return x;
}

Sound scaled(Sound x, double gain) {
  scale(x, gain);
  return x;
}

TEST(Measure, ToneOfAKilohertzReadsWhatTheLoudnessRecommendationSays) {
  // 997 Hz at full scale in one channel is -3.01 LKFS there; 0.05 for the gate's blocks at both ends
  EXPECT_NEAR(loudness(sine(997.0, 5.0, 1.0)), -3.01, 0.05);
  EXPECT_NEAR(loudness(sine(997.0, 5.0, 0.1)), -23.01, 0.05);
}

TEST(Measure, TruePeakSeesBetweenTheSamples) {
  Sound between(
      frames(1.0));  // a quarter of the rate, sampled 45 degrees off its tops: they stand 3 dB higher
  for (std::size_t n = 0; n < between.size(); ++n)
    between[n] = 0.5 * std::sin(0.5 * std::numbers::pi * (static_cast<double>(n) + 0.5));
  EXPECT_NEAR(truePeakDb(between), -6.0, 0.3);  // 0.3 dB: what fourfold oversampling misses at this frequency
}

TEST(Measure, ThirdOctavesHoldThePowerOfATone) {
  const BandLevels levels = thirdOctaves(sine(40.0 * std::exp2(15.0 / 3.0), 2.0, 1.0));
  EXPECT_NEAR(levels[15], -3.01, 0.01);
  EXPECT_LT(levels[13], -60.0);
  EXPECT_LT(levels[17], -60.0);
}

TEST(Measure, TiltIsTheSlopeOfTheChange) {
  BandLevels in{}, out{};
  for (int band = 0; band < kBands; ++band) {
    const auto at = static_cast<std::size_t>(band);
    in[at] = -20.0 + 3.0 * (band % 2);
    out[at] = in[at] - 6.0 + 1.5 * band / 3.0;
  }
  in[20] = -90.0, out[20] = 0.0;  // no material there: it does not count
  EXPECT_NEAR(tiltChange(in, out), 1.5, 1e-9);
}

TEST(Measure, DistanceIsBlindToLevelAndSeesTone) {
  const Sound loud = noise(5.0, 3);
  const Character same = characterOf(loud), softer = characterOf(scaled(loud, 0.25));
  EXPECT_NEAR(distance(same, softer), 0.0, 1e-6);
  EXPECT_GT(distance(same, characterOf(lowPassed(loud, 2000.0))), 3.0);
  Sound pulsed = loud;
  for (std::size_t n = 0; n < pulsed.size(); ++n)
    if ((n / 4800) % 2 == 1) pulsed[n] *= 0.25;
  EXPECT_GT(distance(same, characterOf(pulsed)), 3.0) << "steps of 12 dB, at the same spectrum";
}

/// A strip of only a compressor and the master, the compressor of the given threshold.
cli::Setting compressorAlone(double threshold) {
  cli::Setting setting;
  for (int place = 0; place < kPlaces; ++place)
    setting.store(kRack[static_cast<std::size_t>(place)].parameterBase, 0.0);
  setting.store(112, 2.0 / 15.0);
  setting.store(224, 1.0 / 15.0);
  setting.store(128 + 2, threshold);
  return setting;
}

TEST(Hear, ReadsTheReductionOfTheModulesInTheChain) {
  const Sound tone = sine(500.0, 5.0, 0.3);
  cli::StripRunner deepStrip(kRateHz), idleStrip(kRateHz);
  const Hearing deep = hear(deepStrip, compressorAlone(0.0), tone);
  const Hearing idle = hear(idleStrip, compressorAlone(1.0), tone);
  ASSERT_EQ(deep.reductions.size(), 1U);
  EXPECT_EQ(deep.reductions[0].kind, ModuleKind::compressor);
  EXPECT_GT(deep.reductions[0].largestDb, 3.0);
  EXPECT_NEAR(deep.reductions[0].meanDb, deep.reductions[0].largestDb, 1.5) << "a steady tone";
  EXPECT_LT(idle.reductions[0].largestDb, 0.5);
  EXPECT_LT(deep.loudnessOut, idle.loudnessOut);
}

TEST(Table, MarksWhatLeavesItsBounds) {
  Auditioned preset;
  preset.name = "Snare";
  preset.hearing.loudnessIn = preset.hearing.loudnessOut = -20.0;
  preset.hearing.truePeakDb = -0.1;
  preset.hearing.reductions = {{"Gate", ModuleKind::gate, 40.0, 5.0, 0.0},
                               {"FET Clamper", ModuleKind::compressor, 1.1, 0.5, 0.0}};
  preset.nearest = 7, preset.nearestDb = 1.1;
  EXPECT_EQ(marksOf(preset), "");
  preset.hearing.loudnessOut = -16.9, preset.hearing.truePeakDb = 0.1, preset.nearestDb = 0.9;
  preset.hearing.reductions[0].smallestDb = 1.1;
  preset.hearing.reductions[1].largestDb = 0.9;
  EXPECT_EQ(marksOf(preset), "loud, peak, gate shut, comp idle, alike");
  preset.hearing = {};
  preset.nearest.reset();
  preset.name = "Snare -12RMS", preset.hearing.truePeakDb = -1.0;
  preset.hearing.loudnessIn = -25.0, preset.hearing.loudnessOut = -14.0, preset.hearing.loudestRmsDb = -12.5;
  EXPECT_EQ(marksOf(preset), "") << "its name promises the level, not the loudness of the input";
  preset.hearing.loudestRmsDb = -16.0;
  EXPECT_EQ(marksOf(preset), "rms");
}

}  // namespace
}  // namespace corvane::audition
