#include "tests/rig/SystemCallGuard.h"

#include <csignal>

#if defined(__linux__) && defined(__x86_64__)
#include <sys/prctl.h>
#include <sys/ucontext.h>
#include <unistd.h>
#endif

namespace corvane::rig {

namespace {

// What the kernel looks at before each call of the thread.
constexpr char kPass = 0, kCatch = 1;
thread_local volatile char selector = kPass;
thread_local volatile int caughtNumber = -1;

}  // namespace

#if defined(__linux__) && defined(__x86_64__)

/// The call was held back: it is noted, done here, and its result put where the caller looks.
static void onSystemCall(int, siginfo_t*, void* context) {
  selector = kPass;
  greg_t* const registers = static_cast<ucontext_t*>(context)->uc_mcontext.gregs;
  const long number = registers[REG_RAX];
  if (caughtNumber < 0) caughtNumber = static_cast<int>(number);
  long result = number;
  register long r10 asm("r10") = registers[REG_R10];
  register long r8 asm("r8") = registers[REG_R8];
  register long r9 asm("r9") = registers[REG_R9];
  asm volatile("syscall"
               : "+a"(result)
               : "D"(registers[REG_RDI]), "S"(registers[REG_RSI]), "d"(registers[REG_RDX]), "r"(r10), "r"(r8),
                 "r"(r9)
               : "rcx", "r11", "memory");
  registers[REG_RAX] = result;
}

bool SystemCallGuard::begin() {
  struct sigaction action = {};
  action.sa_sigaction = onSystemCall;
  action.sa_flags = SA_SIGINFO;
  sigaction(SIGSYS, &action, nullptr);
  constexpr int kUserDispatch = 59, kOn = 1;  // PR_SET_SYSCALL_USER_DISPATCH, newer than some headers
  return prctl(kUserDispatch, kOn, 0L, 0L, &selector) == 0;
}

#else

bool SystemCallGuard::begin() { return false; }

#endif

SystemCallGuard::SystemCallGuard() {
  caughtNumber = -1;
  selector = kCatch;
}
SystemCallGuard::~SystemCallGuard() { selector = kPass; }
int SystemCallGuard::caught() const { return caughtNumber; }

}  // namespace corvane::rig
