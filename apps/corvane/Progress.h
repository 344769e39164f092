#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <mutex>

#include "corvane/Console.h"

namespace corvane::cli {

/// A bar on the terminal for work over a second; silent in a pipe. May be told of progress from any thread.
class Progress {
 public:
  explicit Progress(Console& target) : console(target) {}
  ~Progress() { console.status(""); }

  void expect(std::int64_t frames) { expected += frames; }
  void advance(std::int64_t frames);

 private:
  using Clock = std::chrono::steady_clock;

  Console& console;
  const Clock::time_point start = Clock::now();
  std::atomic<std::int64_t> expected = 0, done = 0;
  std::mutex drawing;
  Clock::time_point lastDrawn = start;
};

}  // namespace corvane::cli
