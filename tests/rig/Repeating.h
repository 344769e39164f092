#pragma once

#include <atomic>
#include <thread>

namespace corvane::rig {

/// A thread that repeats its work until it goes.
class Repeating {
 public:
  template <typename Work>
  explicit Repeating(Work work)
      : thread([this, work]() mutable {
          while (going) work();
        }) {}
  ~Repeating() {
    going = false;
    thread.join();
  }

 private:
  std::atomic<bool> going = true;
  std::thread thread;
};

}  // namespace corvane::rig
