#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "corvane/Console.h"
#include "corvane/StartOptions.h"

namespace CLI {
class App;
}

namespace corvane::cli {

/// What the user typed behind `corvane render`.
struct RenderOptions {
  std::vector<std::string> inputs;
  std::string output, outputFolder;
  StartOptions start;
  std::string savePreset, saveState;
  std::string automation, key, format = "float", meters, meterLog;
  std::string picture, pictureTitle, pictureSize;
  std::vector<std::string> bypasses;
  int blockFrames = 512;
  double tailSeconds = 0.0;
  int jobs = 0;  ///< 0: one for each processor
  bool quiet = false;
};

void addRenderCommand(CLI::App& app, RenderOptions& options);
/// Renders; the exit code. Throws Failure and Interrupted.
int runRender(const RenderOptions& options, Console& console);

/// Makes a folder for output and what is missing above it. Throws Failure.
void makeFolder(const std::filesystem::path& folder);

}  // namespace corvane::cli
