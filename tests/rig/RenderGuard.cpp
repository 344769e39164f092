#include "tests/rig/RenderGuard.h"

#include <pthread.h>

#include <cstdlib>
#include <new>

namespace corvane::rig {

namespace {
thread_local bool watching = false;
thread_local int counted = 0;
}  // namespace

RenderGuard::RenderGuard() {
  counted = 0;
  watching = true;
}
RenderGuard::~RenderGuard() { watching = false; }
int RenderGuard::violations() const { return counted; }

static void note() {
  if (watching) ++counted;
}

}  // namespace corvane::rig

// The linker sends the calls of our own code here first; the real ones stand behind. The variant for loaded
// libraries has the plain names instead, see CMakeLists.txt.
extern "C" {
void* __real_malloc(std::size_t) noexcept;
void* __real_calloc(std::size_t, std::size_t) noexcept;
void* __real_realloc(void*, std::size_t) noexcept;
void __real_free(void*) noexcept;
int __real_pthread_mutex_lock(pthread_mutex_t*) noexcept;
int __real_pthread_rwlock_rdlock(pthread_rwlock_t*) noexcept;
int __real_pthread_rwlock_wrlock(pthread_rwlock_t*) noexcept;

void* __wrap_malloc(std::size_t n) noexcept { return corvane::rig::note(), __real_malloc(n); }
void* __wrap_calloc(std::size_t n, std::size_t m) noexcept {
  return corvane::rig::note(), __real_calloc(n, m);
}
void* __wrap_realloc(void* p, std::size_t n) noexcept { return corvane::rig::note(), __real_realloc(p, n); }
void __wrap_free(void* p) noexcept { corvane::rig::note(), __real_free(p); }
int __wrap_pthread_mutex_lock(pthread_mutex_t* m) noexcept {
  return corvane::rig::note(), __real_pthread_mutex_lock(m);
}
int __wrap_pthread_rwlock_rdlock(pthread_rwlock_t* m) noexcept {
  return corvane::rig::note(), __real_pthread_rwlock_rdlock(m);
}
int __wrap_pthread_rwlock_wrlock(pthread_rwlock_t* m) noexcept {
  return corvane::rig::note(), __real_pthread_rwlock_wrlock(m);
}
}

void* operator new(std::size_t n) {
  corvane::rig::note();
  if (void* p = __real_malloc(n ? n : 1)) return p;
  throw std::bad_alloc();
}
void* operator new(std::size_t n, std::align_val_t alignment) {
  corvane::rig::note();
  const auto a = static_cast<std::size_t>(alignment);
  if (void* p = std::aligned_alloc(a, (n + a - 1) / a * a)) return p;
  throw std::bad_alloc();
}
void operator delete(void* p) noexcept { corvane::rig::note(), __real_free(p); }
void operator delete(void* p, std::size_t) noexcept { operator delete(p); }
void operator delete(void* p, std::align_val_t) noexcept { operator delete(p); }
void operator delete(void* p, std::size_t, std::align_val_t) noexcept { operator delete(p); }
