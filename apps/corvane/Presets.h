#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "corvane/Setting.h"

namespace corvane::cli {

/// A preset as a list shows it: of the factory bank, or a file of the user's.
struct ListedPreset {
  int index = -1;  ///< in the factory bank; -1 for a file
  std::string name, category, designer;
  std::filesystem::path file;
};

std::vector<ListedPreset> factoryPresets();
/// The files in the user's preset folders; the category is the folder.
std::vector<ListedPreset> userPresets();

struct LoadedPreset {
  ListedPreset listed;
  Setting setting;
};

/// A preset by its name (letter case aside), its index in the factory bank, or its file. Throws Failure, for
/// an unknown name with the nearest ones.
LoadedPreset loadPreset(const std::string& words);

/// `path` with ".qdx" at its end, exactly once.
std::string presetFileName(const std::string& path);
/// Writes the setting under the name of its file. Throws Failure.
void savePreset(const std::string& path, const Setting& setting);

}  // namespace corvane::cli
