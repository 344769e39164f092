#pragma once

#include <array>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "platform/system/Trace.h"

namespace corvane {

// The lists in which a user finds presets: by category, by designer, and the user's own folders.

inline constexpr int kPresetLists = 128;  ///< in a table
inline constexpr std::size_t kPresetListEntries = 512;
inline constexpr std::size_t kPresetListName = 64;  ///< characters
inline constexpr int kMainFolderList = 127;  ///< where the root of the user's folders stands in its table

enum class ListKind : std::int32_t { categories = 0, designers = 1, user = 2 };

struct PresetEntry {
  std::int32_t presetNumber = -1;  ///< in the factory bank; -1 for a file
  std::string fileName;            ///< as shown: without extension, at most kPresetListName characters
  std::int32_t folderIndex = 0;    ///< the list of the file's folder
  std::string diskName;            ///< the file's full name
};

struct PresetList {
  std::string name;
  std::filesystem::path folder;  ///< of a user's list
  std::vector<PresetEntry> entries;
};

struct PresetTable {
  std::array<std::unique_ptr<PresetList>, kPresetLists> lists;
  int count = 0;  ///< lists in a row from 0; beyond them only kMainFolderList may stand

  /// Null for a number out of range or without a list.
  const PresetList* list(int number) const;
  const PresetEntry* entry(int listNumber, int entryNumber) const;
};

PresetTable makeCategoryLists();
PresetTable makeDesignerLists();

/// Presets below `root`, one folder deep: list 0 is "All", the folders follow by name, the root itself is
/// "#MAIN FOLDER". Names are ordered without regard to case.
PresetTable scanUserFolders(const std::filesystem::path& root, platform::Trace& trace);

}  // namespace corvane
