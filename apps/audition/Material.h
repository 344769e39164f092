#pragma once

#include <filesystem>
#include <map>
#include <string>

#include "audition/Sound.h"

namespace corvane::audition {

inline constexpr double kMaterialSeconds = 5.0;

/// What a preset is heard on, chosen by the words of its name within its category: "Snare@ak414" is heard on
/// a snare. `category` is empty for the starting points, which are chosen by their names alone.
std::string materialFor(const std::string& category, const std::string& preset);
/// What all presets of a category are compared on: the full kit for the drums, a mix for what has no
/// category.
std::string commonMaterial(const std::string& category);

/// Where recorded sounds are.
struct SoundFolders {
  std::filesystem::path kits = "/usr/share/hydrogen/data/drumkits";
  std::filesystem::path voices = "/usr/share/sounds/alsa";
};

/// Materials by name, each made once, levelled, kMaterialSeconds long. One thread.
class MaterialShelf {
 public:
  explicit MaterialShelf(SoundFolders where) : folders(std::move(where)) {}
  /// Throws cli::Failure for a file that is missing.
  const Sound& get(const std::string& name);

 private:
  Sound make(const std::string& name);
  SoundFolders folders;
  std::map<std::string, Sound> made;
};

}  // namespace corvane::audition
