#include <unistd.h>

#include <csignal>
#include <iostream>

#include "corvane/CommandLine.h"
#include "corvane/Interrupt.h"

int main(int argc, char** argv) {
  using namespace corvane::cli;
  watchForInterrupts();
  Console console(std::cout, std::cerr, ::isatty(STDERR_FILENO) != 0);
  const int code = runCommandLine(argc, argv, console);
  std::cout.flush();
  if (const int signal = interruptSignal(); signal != 0) {  // a shell must see that we were stopped
    std::signal(signal, SIG_DFL);
    std::raise(signal);
  }
  return std::cout ? code : 1;
}
