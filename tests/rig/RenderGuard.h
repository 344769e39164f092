#pragma once

namespace corvane::rig {

/// While one lives, every allocation, release and lock on this thread is counted: the render road must do
/// none. Reaches libraries that the program loads, too. Test programs that use it link corvane_render_guard.
class RenderGuard {
 public:
  RenderGuard();
  ~RenderGuard();
  RenderGuard(const RenderGuard&) = delete;
  RenderGuard& operator=(const RenderGuard&) = delete;
  /// Calls counted since the guard was made.
  int violations() const { return allocations() + locks(); }
  int allocations() const;
  int locks() const;
};

}  // namespace corvane::rig
