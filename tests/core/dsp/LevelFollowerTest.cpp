#include "core/dsp/LevelFollower.h"

#include <gtest/gtest.h>

#include "tests/rig/Signals.h"

namespace corvane {
namespace {

using namespace rig;

constexpr double kAttack = 0.0193843, kRelease = 0.0000996381;

double plain(const double* samples, int frames, double level, double attack = kAttack) {
  for (int i = 0; i < frames; ++i) level = followLevel(std::abs(samples[i]), level, attack, kRelease);
  return level;
}

// Of the level. 1e-13: a block rounds some hundred times, each time by 1e-16 at most; what a level forgets in
// a release of 10 000 samples it forgets of these as well.
constexpr double kTolerance = 1e-13;

TEST(LevelFollower, RunsAndJobsSideBySideEqualOneSampleAfterTheOther) {
  // loud, quiet, at the flush, denormal and silent material; levels that meet powers of two on the way down
  std::vector<Samples> material;
  for (const double level : {1.0, 0.5, 1e-3, 1e-12, 3e-14, 1e-16, 1e-300, 0.0}) {
    material.push_back(noise(level, 0.01, 48000.0, static_cast<std::uint32_t>(material.size())));
    material.push_back(constant(level, 0.01, 48000.0));
  }
  for (const std::size_t count : {1u, 2u, 3u, 5u, 8u, 13u, 16u, 40u})
    for (const int frames : {0, 1, 7, 64}) {
      std::vector<LevelJob> jobs;
      std::vector<double> expected;
      for (std::size_t k = 0; k < count; ++k) {
        const Samples& x = material[k % material.size()];
        for (const double start : {0.0, 1.0, 0.25 + 1e-15, 8e-27, 1e-13})
          for (const double attack : {kAttack, kRelease}) {
            jobs.push_back({x.data(), start, attack, kRelease});
            expected.push_back(plain(x.data(), frames, start, attack));
          }
      }
      followLevels(jobs, frames);
      for (std::size_t k = 0; k < jobs.size(); ++k)
        ASSERT_NEAR(jobs[k].level, expected[k], kTolerance * expected[k]) << count << " jobs, number " << k;
    }
}

TEST(LevelFollower, LongDecayEqualsThePlainForm) {
  Samples x = joined(noise(1.0, 0.1, 48000.0), silence(15.0, 48000.0));
  double level = 0.0;
  std::vector<LevelJob> jobs(3);
  for (LevelJob& job : jobs) job = {nullptr, 0.0, kAttack, kRelease};
  for (std::size_t at = 0; at + 64 <= x.size(); at += 64) {
    level = plain(x.data() + at, 64, level);
    for (LevelJob& job : jobs) job.samples = x.data() + at;
    followLevels(jobs, 64);
    // the last places of a fall of 160 dB, and near 0 some grains of the flush, 1.6e-30 each
    ASSERT_NEAR(jobs[2].level, level, 1e-12 * level + 1e-28) << "after " << at << " samples";
  }
  EXPECT_LT(level, 1e-25);
}

}  // namespace
}  // namespace corvane
