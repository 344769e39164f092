#pragma once

#include "corvane/Console.h"

namespace CLI {
class App;
}

namespace corvane::cli {

/// What the user typed behind `corvane describe`.
struct DescribeOptions {
  bool json = false;
};

void addDescribeCommand(CLI::App& app, DescribeOptions& options);
/// Prints what the plug-in told its host when it was loaded; the exit code. Throws Failure.
int runDescribe(const DescribeOptions& options, Console& console);

}  // namespace corvane::cli
