#pragma once

namespace corvane::rig {

inline constexpr int kMostAllocations = 5000;  ///< of one operation, so that a loop over them ends

/// While one lives, the first `count` allocations of this thread succeed and none after them. Test programs
/// that use it have FailingMemory.cpp among their sources.
class AllocationLimit {
 public:
  explicit AllocationLimit(int count);
  ~AllocationLimit();
  AllocationLimit(const AllocationLimit&) = delete;
  AllocationLimit& operator=(const AllocationLimit&) = delete;
};

template <typename Work>
auto withAllocations(int count, Work work) {
  const AllocationLimit limit(count);
  return work();
}

}  // namespace corvane::rig
