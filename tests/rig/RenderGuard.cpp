#include "tests/rig/RenderGuard.h"

#include <dlfcn.h>
#include <pthread.h>

#include <atomic>
#include <cerrno>
#include <cstddef>

namespace corvane::rig {

namespace {
thread_local bool watching = false;
thread_local int counted = 0, countedLocks = 0;

void note() {
  if (watching) ++counted;
}
}  // namespace

int RenderGuard::allocations() const { return counted; }
int RenderGuard::locks() const { return countedLocks; }

/// The function of this name that would be called if the program had none of its own.
template <typename Function>
class Replaced {
 public:
  explicit constexpr Replaced(const char* symbol) : name(symbol) {}
  template <typename... Args>
  auto operator()(Args... args) {
    Function* real = known.load(std::memory_order_relaxed);
    if (!real) {
      real = reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
      known.store(real, std::memory_order_relaxed);
    }
    if (watching) ++countedLocks;
    return real(args...);
  }

 private:
  const char* name;
  std::atomic<Function*> known = nullptr;
};

static constinit Replaced<int(pthread_mutex_t*)> lockMutex("pthread_mutex_lock");
static constinit Replaced<int(pthread_rwlock_t*)> lockToRead("pthread_rwlock_rdlock");
static constinit Replaced<int(pthread_rwlock_t*)> lockToWrite("pthread_rwlock_wrlock");

}  // namespace corvane::rig

// What a program defines stands before the same name in any library, also for libraries that come later.
#pragma GCC visibility push(default)
extern "C" {

int pthread_mutex_lock(pthread_mutex_t* m) noexcept { return corvane::rig::lockMutex(m); }
int pthread_rwlock_rdlock(pthread_rwlock_t* m) noexcept { return corvane::rig::lockToRead(m); }
int pthread_rwlock_wrlock(pthread_rwlock_t* m) noexcept { return corvane::rig::lockToWrite(m); }

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)

// The allocator belongs to the sanitizer, which tells us of each call.
int __sanitizer_install_malloc_and_free_hooks(void (*)(const volatile void*, std::size_t),
                                              void (*)(const volatile void*));

#else

void* __libc_malloc(std::size_t);
void* __libc_calloc(std::size_t, std::size_t);
void* __libc_realloc(void*, std::size_t);
void* __libc_memalign(std::size_t, std::size_t);
void __libc_free(void*);

void* malloc(std::size_t n) noexcept { return corvane::rig::note(), __libc_malloc(n); }
void* calloc(std::size_t n, std::size_t size) noexcept {
  return corvane::rig::note(), __libc_calloc(n, size);
}
void* realloc(void* p, std::size_t n) noexcept { return corvane::rig::note(), __libc_realloc(p, n); }
void* memalign(std::size_t alignment, std::size_t n) noexcept {
  return corvane::rig::note(), __libc_memalign(alignment, n);
}
void* aligned_alloc(std::size_t alignment, std::size_t n) noexcept { return memalign(alignment, n); }
int posix_memalign(void** p, std::size_t alignment, std::size_t n) noexcept {
  void* made = memalign(alignment, n);
  if (!made) return ENOMEM;
  *p = made;
  return 0;
}
void free(void* p) noexcept { corvane::rig::note(), __libc_free(p); }

#endif
}
#pragma GCC visibility pop

namespace corvane::rig {

RenderGuard::RenderGuard() {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
  static const int installed = __sanitizer_install_malloc_and_free_hooks(
      [](const volatile void*, std::size_t) { note(); }, [](const volatile void*) { note(); });
  static_cast<void>(installed);
#endif
  counted = countedLocks = 0;
  watching = true;
}
RenderGuard::~RenderGuard() { watching = false; }

}  // namespace corvane::rig
