#include "platform/system/Desktop.h"

#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>

namespace corvane::platform {

SystemDesktop::~SystemDesktop() { collectFinished(); }

void SystemDesktop::collectFinished() {
  std::erase_if(children, [](pid_t child) { return ::waitpid(child, nullptr, WNOHANG) != 0; });
}

Desktop::Opened SystemDesktop::open(const std::string& target) {
  const bool isLink = target.starts_with("https://") || target.starts_with("http://");
  std::error_code error;
  // Only links and full paths, so that no target can be read as an option.
  if (!isLink && (!target.starts_with('/') || !std::filesystem::exists(target, error))) return Opened::failed;

  const std::lock_guard lock(mutex);
  collectFinished();
  posix_spawnattr_t attributes;
  if (::posix_spawnattr_init(&attributes) != 0) return Opened::failed;
  sigset_t none, all;
  ::sigemptyset(&none);
  ::sigfillset(&all);
  ::posix_spawnattr_setsigmask(&attributes, &none);    // not what the host's thread blocks
  ::posix_spawnattr_setsigdefault(&attributes, &all);  // nor what it ignores
  ::posix_spawnattr_setpgroup(&attributes, 0);         // nor killed with it
  ::posix_spawnattr_setflags(&attributes,
                             POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETPGROUP);
  std::string program = opener, argument = target;
  char* arguments[] = {program.data(), argument.data(), nullptr};
  pid_t child = 0;
  const int result = ::posix_spawnp(&child, program.c_str(), nullptr, &attributes, arguments, environ);
  ::posix_spawnattr_destroy(&attributes);
  if (result != 0) return result == ENOENT ? Opened::noApplication : Opened::failed;
  children.push_back(child);
  return Opened::yes;
}

}  // namespace corvane::platform
