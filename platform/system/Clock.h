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

}  // namespace corvane::platform
