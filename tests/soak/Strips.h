#pragma once

#include <atomic>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "platform/aaxhost/AaxHost.h"
#include "tests/soak/BlockTimes.h"

namespace corvane::soak {

inline constexpr double kRateHz = 96000.0;
inline constexpr int kFrames = 256;
inline constexpr double kDeadlineMs = kFrames / kRateHz * 1e3;

/// What went wrong on the render thread, as counts that a control thread may read at any time.
struct RenderFaults {
  std::atomic<long> guarded = 0;      ///< allocations, releases and locks
  std::atomic<long> systemCalls = 0;  ///< blocks that called the system
  std::atomic<int> firstCall = -1;    ///< number of the first of these calls
  std::atomic<long> notFinite = 0;    ///< blocks of a strip with a sample that is no number, or infinite
  bool systemCallsWatched = true;
};

/// Ten strips in one call of their process function, block after block.
class Strips {
 public:
  static constexpr std::size_t kCount = 10;

  Strips(const std::shared_ptr<aaxhost::Library>& library, unsigned seed);
  std::span<const std::unique_ptr<aaxhost::Instance>> all() const { return instances; }
  std::vector<aaxhost::Instance*> pointers() const;

  /// One block of each, watched and timed. [render]
  void renderBlock();

  const RenderFaults& faults() const { return seen; }
  const BlockTimes& wallTimes() const { return wall; }
  const BlockTimes& threadTimes() const { return processor; }
  std::atomic<long> blocks = 0;

 private:
  void nextInput();

  std::vector<std::unique_ptr<aaxhost::Instance>> instances;
  std::vector<float> programme;  ///< a second of bursts, in blocks
  std::size_t at = 0;
  std::vector<std::vector<float>> outputs;
  std::vector<aaxhost::Seat> seats;
  aaxhost::Transport song;
  RenderFaults seen;
  BlockTimes wall, processor;
};

/// Largest difference, full scale 1, between each strip and a new one that gets the same state and the same
/// sound, when all have come to rest: what a value that got lost would leave behind.
double differenceFromNew(Strips& strips, const std::shared_ptr<aaxhost::Library>& library);

}  // namespace corvane::soak
