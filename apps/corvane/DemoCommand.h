#pragma once

#include <string>

#include "corvane/Console.h"

namespace CLI {
class App;
}

namespace corvane::cli {

/// What the user typed behind `corvane demo`.
struct DemoOptions {
  std::string input =
      "/usr/share/sounds/alsa/Front_Center.wav";  // a recorded voice, of the package alsa-utils
  std::string outputFolder = "demo";
};

void addDemoCommand(CLI::App& app, DemoOptions& options);
/// Renders, draws, prints a table; the exit code. Throws Failure and Interrupted.
int runDemo(const DemoOptions& options, Console& console);

}  // namespace corvane::cli
