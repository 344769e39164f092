#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "control/EditorDesk.h"
#include "platform/aaxhost/AaxHost.h"

namespace corvane::soak {

/// Everything that people and hosts do, in a random order that the seed decides, on a thread of its own while
/// it lives.
class ControlThread {
 public:
  /// `strips` outlive this object.
  ControlThread(std::vector<aaxhost::Instance*> strips, std::uint64_t seed);
  ~ControlThread();

  long operations() const { return done; }
  /// What was wrong with an answer, "" for nothing; after the thread's end.
  std::string finish();

 private:
  void work();
  void operateOn(aaxhost::Instance& strip);
  void moveParameter(aaxhost::Instance& strip);
  void atWindow(EditorDesk& desk);
  void keepState(aaxhost::Instance& strip);
  void readMeters(aaxhost::Instance& strip);
  int chance(int outOf) { return static_cast<int>(random() % static_cast<unsigned>(outOf)); }
  double value();
  void wrong(const std::string& what);

  const std::vector<aaxhost::Instance*> strips;
  std::mt19937_64 random;
  std::array<aaxhost::Chunk, 4> kept;  ///< states of any strip, to be given to any other
  std::string fault;
  std::atomic<long> done = 0;
  std::atomic<bool> going = true;
  std::thread thread;
};

}  // namespace corvane::soak
