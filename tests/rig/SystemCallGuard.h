#pragma once

namespace corvane::rig {

/// While one lives, a system call of this thread is caught, whoever makes it: the first is noted and done,
/// and the watch ends there. Linux on x86-64; elsewhere nothing is watched.
class SystemCallGuard {
 public:
  SystemCallGuard();
  ~SystemCallGuard();
  SystemCallGuard(const SystemCallGuard&) = delete;
  SystemCallGuard& operator=(const SystemCallGuard&) = delete;
  /// Number of the call that was caught, -1 for none.
  int caught() const;

  /// Whether this kernel lets calls be watched; asked on the thread that is to be watched, before the first
  /// guard.
  static bool begin();
};

}  // namespace corvane::rig
