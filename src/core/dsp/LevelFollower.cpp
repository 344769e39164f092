#include "core/dsp/LevelFollower.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>

#include "core/dsp/Biquad.h"
#include "core/dsp/Pair.h"
#include "core/dsp/ReleaseRun.h"

namespace corvane {

namespace {

constexpr double kFlushMatters = 1e-12;  // below this level the flush changes what a follower does
constexpr int kRun = ReleaseRun::kLength;
constexpr int kMostRuns = kBlockFrames / kRun;

/// The runs of a block as far as they do not hang on the level.
struct Runs {
  double drop;                ///< of `ReleaseRun`
  double highest[kMostRuns];  ///< magnitude
  double lift[kMostRuns];     ///< sum of weighted magnitudes
};

void lookAhead(const double* samples, int runs, const ReleaseRun& release, Runs& to) {
  to.drop = release.drop;
  for (int k = 0; k < runs; ++k) {
    Pair highest{}, lift{};
    for (int i = 0; i < kRun; i += 2) {
      const double* x = samples + k * kRun + i;
      const Pair magnitude = absolute(Pair{x[0], x[1]});
      highest = magnitude > highest ? magnitude : highest;
      lift += release.weights[i / 2] * magnitude;
    }
    to.highest[k] = std::max(highest[0], highest[1]);
    to.lift[k] = lift[0] + lift[1];
  }
}

/// Sample by sample. With attack above release the larger of the two steps is the one that `followLevel`
/// picks.
void followEach(LevelJob& job, int from, int to) {
  double level = job.level;
  for (int i = from; i < to; ++i) {
    const double distance = std::abs(job.samples[i]) - level;
    level = flushed(level + std::max(distance * job.attack, distance * job.release), kMeterFlush);
  }
  job.level = level;
}

bool sameCourse(const LevelJob& a, const LevelJob& b, int frames) {
  return a.level == b.level && a.attack == b.attack && a.release == b.release &&
         (a.samples == b.samples ||
          std::memcmp(a.samples, b.samples, sizeof(double) * static_cast<std::size_t>(frames)) == 0);
}

/// Silence into a follower that has come to rest: every sample leaves it where it is.
bool rests(const LevelJob& job, int frames) {
  return followLevel(0.0, job.level, job.attack, job.release) == job.level &&
         std::all_of(job.samples, job.samples + frames, [](double x) { return x == 0.0; });
}

/// Run by run, and within a run job by job: the jobs do not wait for one another, so their chains overlap.
template <std::size_t kMost>
void followCourses(const std::array<LevelJob*, kMost>& jobs, std::size_t count, int frames) {
  const int runs = frames / kRun;
  std::array<Runs, kMost> ahead;
  ReleaseRun release(0.0);
  for (std::size_t j = 0; j < count; ++j) {
    if (jobs[j]->release != release.share) release = ReleaseRun(jobs[j]->release);
    lookAhead(jobs[j]->samples, runs, release, ahead[j]);
  }
  for (int k = 0; k < runs; ++k)
    for (std::size_t j = 0; j < count; ++j) {
      LevelJob& job = *jobs[j];
      const double fallen = (job.level - job.level * ahead[j].drop) + ahead[j].lift[k];
      // it falls all the way, or rises as it falls
      const bool isOneStep = ahead[j].highest[k] <= fallen || job.attack == job.release;
      if (isOneStep && fallen > kFlushMatters)
        job.level = fallen;
      else
        followEach(job, k * kRun, (k + 1) * kRun);
    }
  for (std::size_t j = 0; j < count; ++j) followEach(*jobs[j], runs * kRun, frames);
}

}  // namespace

void followLevels(std::span<LevelJob> jobs, int frames) {
  constexpr std::size_t kMost = 36;  // 9 places of 4 followers fill one call; more come in turns
  while (jobs.size() > kMost) {
    followLevels(jobs.first(kMost), frames);
    jobs = jobs.subspan(kMost);
  }
  struct Copy {
    LevelJob *job, *twin;
  };
  std::array<LevelJob*, kMost> courses;  // jobs that differ
  std::array<Copy, kMost> copies;        // jobs that take another's result
  std::size_t courseCount = 0, copyCount = 0;
  for (LevelJob& job : jobs) {
    if (rests(job, frames)) continue;
    const auto end = courses.begin() + static_cast<long>(courseCount);
    const auto twin =
        std::find_if(courses.begin(), end, [&](LevelJob* other) { return sameCourse(*other, job, frames); });
    if (twin != end)
      copies[copyCount++] = {&job, *twin};
    else
      courses[courseCount++] = &job;
  }
  followCourses(courses, courseCount, frames);
  for (std::size_t k = 0; k < copyCount; ++k) copies[k].job->level = copies[k].twin->level;
}

}  // namespace corvane
