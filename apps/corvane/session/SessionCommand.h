#pragma once

#include <iosfwd>
#include <string>

#include "corvane/Console.h"

namespace CLI {
class App;
}

namespace corvane::cli {

namespace session {
class Session;
}

/// What the user typed behind `corvane session`.
struct SessionOptions {
  std::string script = "-", input;
  double rateHz = 48000.0;
  int blockFrames = 512;
  bool echo = false, markdown = false;
};

void addSessionCommand(CLI::App& app, SessionOptions& options);
/// Runs a script or what comes in; the exit code. Throws Failure and Interrupted.
int runSession(const SessionOptions& options, Console& console);

/// One answer line for each line with a command, at once. How many were refused.
int answerLines(std::istream& lines, session::Session& session, bool echo, Console& console);

/// The table of commands as docs/session.md has it.
std::string sessionReference();

}  // namespace corvane::cli
