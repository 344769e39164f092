#pragma once

#include <cstdint>
#include <string>

namespace corvane::platform {

class Clock {
 public:
  virtual ~Clock() = default;
  /// Counts up in milliseconds and wraps; only differences mean anything.
  virtual std::uint32_t milliseconds() = 0;
  /// Local time of day, "21:05:09".
  virtual std::string timeOfDay() = 0;
};

/// The machine's clock. [any]
class SystemClock final : public Clock {
 public:
  std::uint32_t milliseconds() override;
  std::string timeOfDay() override;
};

/// Runs as another clock until it is held; from then on it stands still and moves when told. [control]
class HoldableClock final : public Clock {
 public:
  /// `running` outlives this clock.
  explicit HoldableClock(Clock& running) : source(running) {}
  std::uint32_t milliseconds() override;
  /// While held, the time since then.
  std::string timeOfDay() override;

  void hold();
  void advance(std::uint32_t ms) { movedMs += ms; }

 private:
  Clock& source;
  bool held = false;
  std::uint32_t heldAtMs = 0;
  std::uint64_t movedMs = 0;
};

}  // namespace corvane::platform
