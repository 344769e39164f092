#pragma once

#include "corvane/Console.h"

namespace corvane::cli {

/// The whole program but the process around it: reads the arguments, runs one command, answers the exit code.
int runCommandLine(int argc, const char* const* argv, Console& console);

}  // namespace corvane::cli
