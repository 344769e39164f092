#pragma once

namespace corvane::rig {

/// While one lives, every allocation, release and lock on this thread is counted: the render road must do
/// none. Test programs that use it link with the wrapping options of tests/rig/CMakeLists.txt.
class RenderGuard {
 public:
  RenderGuard();
  ~RenderGuard();
  RenderGuard(const RenderGuard&) = delete;
  RenderGuard& operator=(const RenderGuard&) = delete;
  /// Calls counted since the guard was made.
  int violations() const;
};

}  // namespace corvane::rig
