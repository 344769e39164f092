#include "tests/rig/FailingMemory.h"

#include <cstdlib>
#include <new>

namespace {

thread_local int allocationsLeft = -1;  ///< until one fails; below 0 for never

bool failsNow() {
  if (allocationsLeft == 0) return true;
  if (allocationsLeft > 0) --allocationsLeft;
  return false;
}

void* allocate(std::size_t bytes) {
  void* const memory = failsNow() ? nullptr : std::malloc(bytes ? bytes : 1);
  return memory ? memory : throw std::bad_alloc();
}

void* allocate(std::size_t bytes, std::align_val_t alignment) {
  const auto a = static_cast<std::size_t>(alignment);
  void* const memory = failsNow() ? nullptr : std::aligned_alloc(a, (bytes + a - 1) / a * a);
  return memory ? memory : throw std::bad_alloc();
}

}  // namespace

namespace corvane::rig {
AllocationLimit::AllocationLimit(int count) { allocationsLeft = count; }
AllocationLimit::~AllocationLimit() { allocationsLeft = -1; }
}  // namespace corvane::rig

void* operator new(std::size_t bytes) { return allocate(bytes); }
void* operator new[](std::size_t bytes) { return allocate(bytes); }
void* operator new(std::size_t bytes, std::align_val_t alignment) { return allocate(bytes, alignment); }
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete[](void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
void operator delete[](void* memory, std::size_t) noexcept { std::free(memory); }
void operator delete(void* memory, std::align_val_t) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t, std::align_val_t) noexcept { std::free(memory); }
