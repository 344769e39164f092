#pragma once

namespace corvane::cli {

/// Thrown out of the work when the user or the system asked the program to stop.
struct Interrupted {
  int signal;
};

/// From here on SIGINT, SIGTERM and SIGHUP are remembered instead of ending the program, once: a second one
/// ends it at once. A file size limit shows as a failed write.
void watchForInterrupts();

/// The signal that came, 0 for none.
int interruptSignal();

/// Between two blocks of work. Throws Interrupted, so that everything half-written goes.
void stopIfInterrupted();

}  // namespace corvane::cli
