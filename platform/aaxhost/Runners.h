#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <span>
#include <thread>
#include <vector>

#include "platform/aaxhost/Instance.h"

namespace corvane::aaxhost {

/// Time for offline instances, driven by samples: before a block, requests are answered, then the timer runs
/// if it is due; then the block is rendered. The same calls give the same result always.
class OfflineRunner {
 public:
  /// `timerSeconds`: distance of two timer calls; the first comes before the first block.
  explicit OfflineRunner(double sampleRateHz, double timerSeconds = kTimerSeconds);
  void run(std::span<const Seat> seats);
  void run(Instance& instance, const Block& block);

  static constexpr double kTimerSeconds = 0.03;

 private:
  double samplesPerTimer;
  double untilTimer = 0.0;
};

/// Answers requests and runs the timers of live instances on a thread of its own while it lives.
class TimerThread {
 public:
  /// The instances outlive this object.
  explicit TimerThread(std::vector<Instance*> instances, double timerSeconds = OfflineRunner::kTimerSeconds);
  ~TimerThread();

 private:
  const std::vector<Instance*> all;
  const double seconds;
  std::atomic<bool> going = true;
  std::thread thread;
};

/// Calls a function once per block period on a thread of its own while it lives, as a sound card would.
class AudioThread {
 public:
  /// `render` has one period for its work; a late block is followed at once by the next.
  AudioThread(double sampleRateHz, int frames, std::function<void()> render);
  ~AudioThread();
  /// Blocks begun so far.
  long blocks() const { return begun; }

 private:
  const std::function<void()> work;
  const double seconds;
  std::atomic<bool> going = true;
  std::atomic<long> begun = 0;
  std::thread thread;
};

}  // namespace corvane::aaxhost
