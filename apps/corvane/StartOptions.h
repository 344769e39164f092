#pragma once

#include <string>
#include <vector>

#include "corvane/Failure.h"
#include "corvane/StripRunner.h"

namespace CLI {
class App;
}

namespace corvane::cli {

/// Which setting a command starts from: a preset or a state, then edits, then bare values.
struct StartOptions {
  std::string preset, state;
  std::vector<std::string> sets, raws;
};

void addStartOptions(CLI::App& command, StartOptions& options);
/// A strip with that setting, as it stands before the first sample. Throws Failure.
StripRunner startFrom(const StartOptions& options);

/// Does to the strip what a list of `--set` and then of `--raw` arguments says. Throws Failure.
void applyArguments(StripRunner& strip, const std::vector<std::string>& sets,
                    const std::vector<std::string>& raws);

/// Runs `apply` and puts the argument in front of what it refuses.
template <typename Apply>
void withArgument(const char* option, const std::string& argument, Apply apply) {
  try {
    apply();
  } catch (const Failure& failure) {
    throw Failure(failure.exitCode, fmt::format("{} {}: {}", option, argument, failure.what()));
  }
}

}  // namespace corvane::cli
