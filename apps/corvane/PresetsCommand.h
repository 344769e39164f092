#pragma once

#include <string>

#include "corvane/Console.h"

namespace CLI {
class App;
}

namespace corvane::cli {

/// What the user typed behind `corvane presets`.
struct PresetsOptions {
  std::string category, designer;
  bool user = false, json = false;
};

/// What the user typed behind `corvane show`.
struct ShowOptions {
  std::string preset;
  bool json = false;
};

void addPresetsCommand(CLI::App& app, PresetsOptions& options);
void addShowCommand(CLI::App& app, ShowOptions& options);
/// Both answer the exit code and throw Failure.
int runPresets(const PresetsOptions& options, Console& console);
int runShow(const ShowOptions& options, Console& console);

}  // namespace corvane::cli
