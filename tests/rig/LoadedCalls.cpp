#include <dlfcn.h>
#include <pthread.h>

// The locks behind those of the guard, for programs in which the guard's own have the plain names.

namespace {

template <typename Lock>
int behind(const char* name, Lock* lock) {
  return reinterpret_cast<int (*)(Lock*)>(dlsym(RTLD_NEXT, name))(lock);
}

}  // namespace

extern "C" {
int __real_pthread_mutex_lock(pthread_mutex_t* mutex) noexcept {
  static const auto real =
      reinterpret_cast<int (*)(pthread_mutex_t*)>(dlsym(RTLD_NEXT, "pthread_mutex_lock"));
  return real(mutex);
}
int __real_pthread_rwlock_rdlock(pthread_rwlock_t* lock) noexcept {
  return behind("pthread_rwlock_rdlock", lock);
}
int __real_pthread_rwlock_wrlock(pthread_rwlock_t* lock) noexcept {
  return behind("pthread_rwlock_wrlock", lock);
}
}
