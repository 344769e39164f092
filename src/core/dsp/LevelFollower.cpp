#include "core/dsp/LevelFollower.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstring>

#include "core/dsp/Pair.h"

namespace corvane {

namespace {

constexpr double kFlushMatters = 1e-12;  // below this level the flush acts on nearly every sample
constexpr int kRun = 16;                 // samples that are looked at together
constexpr std::size_t kWidest = 4;       // pairs that run side by side: enough to fill the time of one chain

Pair magnitudes(const LevelJob& a, const LevelJob& b, int i) {
  return Pair{std::abs(a.samples[i]), std::abs(b.samples[i])};
}

/// `Pairs` times two jobs side by side. With `attack` above `release` the larger of the two steps is the one
/// that `followLevel` picks. Returns false, with the jobs as they were, when the flush would have acted.
template <std::size_t Pairs, bool Flush>
bool runSideBySide(LevelJob* const* jobs, int frames) {
  Pair level[Pairs], attack[Pairs], release[Pairs];
  for (std::size_t k = 0; k < Pairs; ++k) {
    const LevelJob &a = *jobs[2 * k], &b = *jobs[2 * k + 1];
    level[k] = Pair{a.level, b.level};
    attack[k] = Pair{a.attack, b.attack};
    release[k] = Pair{a.release, b.release};
  }
  const Pair e = both(kMeterFlush);
  PairMask acted{};
  const auto run = [&]<bool kFalling>(int from, int to) {
    for (int i = from; i < to; ++i)
      for (std::size_t k = 0; k < Pairs; ++k) {
        const Pair distance = magnitudes(*jobs[2 * k], *jobs[2 * k + 1], i) - level[k];
        const Pair fall = distance * release[k];
        Pair moved = level[k] + fall;
        if constexpr (!kFalling) {
          const Pair rise = distance * attack[k];
          moved = level[k] + (rise > fall ? rise : fall);
        }
        const Pair flushedLevel = (moved + e) - e;
        if constexpr (Flush) {
          level[k] = flushedLevel;
        } else {
          acted |= flushedLevel != moved;
          level[k] = moved;
        }
      }
  };
  // In most runs no sample reaches the level: then nothing needs choosing on the way.
  for (int from = 0; from < frames; from += kRun) {
    const int to = std::min(from + kRun, frames);
    constexpr std::int64_t kAlways =
        Flush ? -1 : 0;  // a flush can take a level below what its release leaves
    PairMask reached{kAlways, kAlways};
    for (std::size_t k = 0; k < Pairs; ++k) {
      const Pair lowest = level[k] * (1.0 - 2.0 * kRun * release[k]);  // the level falls by half of that
      for (int i = from; i < to; ++i) reached |= magnitudes(*jobs[2 * k], *jobs[2 * k + 1], i) > lowest;
    }
    if ((reached[0] | reached[1]) != 0)
      run.template operator()<false>(from, to);
    else
      run.template operator()<true>(from, to);
  }
  if ((acted[0] | acted[1]) != 0) return false;
  for (std::size_t k = 0; k < Pairs; ++k)
    jobs[2 * k]->level = level[k][0], jobs[2 * k + 1]->level = level[k][1];
  return true;
}

template <std::size_t Pairs>
void runGroup(LevelJob* const* jobs, int frames) {
  const bool quiet =
      std::any_of(jobs, jobs + 2 * Pairs, [](const LevelJob* job) { return job->level < kFlushMatters; });
  if (quiet || !runSideBySide<Pairs, false>(jobs, frames)) runSideBySide<Pairs, true>(jobs, frames);
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

}  // namespace

void followLevels(std::span<LevelJob> jobs, int frames) {
  constexpr std::size_t kMost = 2 * kWidest;
  while (jobs.size() > 36) {  // 9 places of 4 followers fill one call; more come in turns
    followLevels(jobs.first(36), frames);
    jobs = jobs.subspan(36);
  }
  std::array<LevelJob*, 36 + kMost> courses{};               // jobs that differ
  std::array<std::pair<LevelJob*, LevelJob*>, 36> copies{};  // jobs that take another's result
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
  LevelJob spare{courseCount > 0 ? courses[0]->samples : nullptr, 0.0, 0.0, 0.0};
  if (courseCount % 2 == 1) {  // an odd one runs beside a spare that starts from its state
    spare = *courses[courseCount - 1];
    courses[courseCount++] = &spare;
  }
  for (std::size_t at = 0; at < courseCount;) {
    LevelJob* const* group = courses.data() + at;
    const std::size_t pairs = std::min(kWidest, (courseCount - at) / 2);
    switch (pairs) {
      case 1: runGroup<1>(group, frames); break;
      case 2: runGroup<2>(group, frames); break;
      case 3: runGroup<3>(group, frames); break;
      default: runGroup<kWidest>(group, frames); break;
    }
    at += 2 * pairs;
  }
  for (std::size_t k = 0; k < copyCount; ++k) copies[k].first->level = copies[k].second->level;
}

}  // namespace corvane
