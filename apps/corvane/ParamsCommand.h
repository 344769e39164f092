#pragma once

#include <string>
#include <vector>

#include "corvane/Console.h"

namespace CLI {
class App;
}

namespace corvane::cli {

/// What the user typed behind `corvane params`.
struct ParamsOptions {
  std::string filter;
  std::vector<std::string> texts, parses;
  std::string insert;
  bool json = false, markdown = false;
};

void addParamsCommand(CLI::App& app, ParamsOptions& options);
/// Lists parameters or translates values; the exit code. Throws Failure.
int runParams(const ParamsOptions& options, Console& console);

}  // namespace corvane::cli
