#include "corvane/PluginLibrary.h"

#include <cstdlib>

#include "corvane/Failure.h"

namespace corvane::cli {

namespace fs = std::filesystem;

namespace {

constexpr const char* kVariable = "CORVANE_PLUGIN";
constexpr const char* kBundle = "QDX Corvane Mono.aaxplugin";

fs::path programFolder() {
  std::error_code ignored;
  return fs::read_symlink("/proc/self/exe", ignored).parent_path();
}

std::shared_ptr<aaxhost::Library> loaded() try {
  return aaxhost::Library::load(findPlugin(programFolder()));
} catch (const aaxhost::HostError& error) {
  fail("{}", error.what());
}

}  // namespace

fs::path findPlugin(const fs::path& programFolder) {
  std::error_code ignored;
  const char* const named = std::getenv(kVariable);
  if (named && *named) {
    if (!fs::exists(named, ignored)) fail("{}={}: no such file or folder", kVariable, printable(named));
    return named;
  }
  const fs::path beside = programFolder / kBundle,
                 installed = (programFolder / "../lib/corvane").lexically_normal() / kBundle;
  for (const fs::path& candidate : {beside, installed})
    if (fs::exists(candidate, ignored)) return candidate;
  fail("cannot find the plug-in: neither {} nor {} is there; {} can name another place",
       printable(beside.string()), printable(installed.string()), kVariable);
}

const std::shared_ptr<aaxhost::Library>& pluginLibrary() {
  static const std::shared_ptr<aaxhost::Library> library = loaded();
  return library;
}

}  // namespace corvane::cli
