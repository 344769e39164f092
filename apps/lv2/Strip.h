#pragma once

#include <atomic>
#include <cstdint>
#include <vector>

#include "lv2/Ports.h"
#include "lv2/RackRules.h"
#include "platform/aaxhost/AaxHost.h"

namespace corvane::lv2 {

/// One instance of the plug-in: ports on one side, an instance of the effect on the other.
///
/// The ports hold the truth. What changes at a port is converted and written into the effect's own ports with
/// the next block; the effect's control side never reaches them. `run` allocates nothing and waits for
/// nothing; what a session keeps may be read and recalled by another thread meanwhile.
class Strip {
 public:
  /// Throws aaxhost::HostError.
  Strip(std::shared_ptr<aaxhost::Library> effect, double rateHz, bool hasKey);

  /// Null for a port that nobody connects: controls stay at their defaults then. [host's audio class]
  void connect(std::uint32_t port, void* location);
  /// Forgets the sound of what ran before. [control, nothing runs]
  void activate();
  /// [render]
  void run(std::uint32_t frames);

  aaxhost::Instance& effect() { return instance; }
  /// Value that the effect was last given, by id of the bank; not a number before the first run. [any]
  double held(int id) const {
    return heldValues[static_cast<std::size_t>(id)].load(std::memory_order_relaxed);
  }
  /// See RackRules::memory. [control]
  std::uint64_t rackMemory() const { return publishedMemory.load(std::memory_order_relaxed); }
  /// Takes effect with the next run; a word that is none has no effect. [control]
  void recallRack(std::uint64_t memory) {
    publishedMemory.store(memory, std::memory_order_relaxed);  // a host may save again before it runs
    recalledMemory.store(memory, std::memory_order_relaxed);
  }

 private:
  void takeControls();
  void collectChanges();
  void takeRack();
  void write(int id, double p);
  void writeMeters();

  aaxhost::Instance instance;
  const bool withKey;
  const float* input = nullptr;
  const float* key = nullptr;
  float* output = nullptr;
  float* latency = nullptr;

  std::vector<const float*> controls;  ///< where each control's value stands, never null
  std::vector<std::uint32_t> seen;     ///< bits of the value last taken: not a number is a value too
  std::vector<float> defaults;
  bool fresh = true;  ///< nothing was taken yet
  RackRules rack;
  RackRules::Positions askedPositions{}, givenPositions{};
  unsigned askedMonitors = 0;
  int givenMonitor = -1;
  std::vector<aaxhost::PortWrite> writes;  ///< of the block to come; room for every control

  std::vector<float*> meters;    ///< null where not connected
  std::vector<float> meterRead;  ///< by meter, what the port's value was made of

  std::vector<std::atomic<double>> heldValues;
  std::atomic<std::uint64_t> publishedMemory;
  static constexpr std::uint64_t kNothing = ~std::uint64_t{0};
  std::atomic<std::uint64_t> recalledMemory = kNothing;
};

}  // namespace corvane::lv2
