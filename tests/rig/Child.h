#pragma once

#include <grp.h>
#include <sys/wait.h>
#include <unistd.h>

namespace corvane::rig {

/// Does `work` in a process of its own; the number it answers, or -1 for a crash.
template <typename Work>
int inChild(Work work) {
  const pid_t child = ::fork();
  if (child == 0) ::_exit(work());
  int status = 0;
  ::waitpid(child, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

/// The same as a user without rights, also where the tests run as the one who may do anything. 99 where that
/// cannot be.
template <typename Work>
int asNobody(Work work) {
  return inChild([&] {
    constexpr uid_t kNobody = 65534;
    if (::geteuid() == 0)
      if (::setgroups(0, nullptr) != 0 || ::setgid(kNobody) != 0 || ::setuid(kNobody) != 0) return 99;
    return work();
  });
}

}  // namespace corvane::rig
