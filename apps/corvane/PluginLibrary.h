#pragma once

#include <filesystem>
#include <memory>

#include "platform/aaxhost/Library.h"

namespace corvane::cli {

/// The strip as hosts load it. Loaded at the first call, then the same for the whole process. Throws Failure
/// that tells what was looked for and where. [any]
const std::shared_ptr<aaxhost::Library>& pluginLibrary();

/// Where the bundle is: what the environment variable CORVANE_PLUGIN names, else beside the program, else in
/// `../lib/corvane` from the program's folder. Throws Failure.
std::filesystem::path findPlugin(const std::filesystem::path& programFolder);

}  // namespace corvane::cli
