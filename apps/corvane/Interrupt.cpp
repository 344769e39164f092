#include "corvane/Interrupt.h"

#include <csignal>
#include <initializer_list>

namespace corvane::cli {

namespace {

volatile std::sig_atomic_t received = 0;

void remember(int signal) { received = signal; }

}  // namespace

void watchForInterrupts() {
  struct sigaction action = {};
  action.sa_handler = remember;
  action.sa_flags = static_cast<int>(SA_RESETHAND);
  sigemptyset(&action.sa_mask);
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) sigaction(signal, &action, nullptr);
  std::signal(SIGXFSZ, SIG_IGN);
}

int interruptSignal() { return received; }

void stopIfInterrupted() {
  if (received != 0) throw Interrupted{received};
}

}  // namespace corvane::cli
