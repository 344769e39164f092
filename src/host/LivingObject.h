#pragma once

#include <atomic>

namespace corvane::host {

/// Counts the host-facing objects of the process, so that the library knows when it may go. [any]
class LivingObject {
 public:
  LivingObject() { ++livingCount; }
  ~LivingObject() { --livingCount; }
  LivingObject(const LivingObject&) = delete;
  LivingObject& operator=(const LivingObject&) = delete;
  static int living() { return livingCount; }

 private:
  static inline std::atomic<int> livingCount = 0;
};

}  // namespace corvane::host
