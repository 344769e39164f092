#pragma once

#include <string>
#include <vector>

namespace corvane::lv2 {

struct BundleFile {
  std::string name, text;
};

/// What a host reads about the bundle, as Turtle: the manifest, the two plug-ins, and the factory settings as
/// presets, one file for each category. Made from the list of ports and the factory bank.
std::vector<BundleFile> bundleFiles();

}  // namespace corvane::lv2
