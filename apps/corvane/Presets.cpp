#include "corvane/Presets.h"

#include <algorithm>
#include <optional>

#include "control/FactoryBank.h"
#include "control/PresetBytes.h"
#include "control/QDXPresetManager.h"
#include "control/SharedLibrary.h"
#include "core/ParameterBank.h"
#include "corvane/Failure.h"
#include "corvane/PendingFile.h"
#include "corvane/Words.h"
#include "platform/system/Files.h"
#include "platform/system/Services.h"

namespace corvane::cli {

namespace fs = std::filesystem;

namespace {

constexpr std::size_t kLargestPresetBytes = 1 << 20;  // far more than any preset
constexpr std::int32_t kPlainZoom = 100;              // per cent, of a window that nobody opened

bool isPresetFile(const std::string& words) { return lowerCase(words).ends_with(".qdx"); }

ListedPreset factoryPresetAt(int index) {
  char name[kPresetNameBytes] = "";
  std::int32_t group[2] = {-1, kHouseDesigner};
  factoryPreset(index, nullptr, name, group);
  const auto categories = factoryCategories();
  const bool grouped = group[0] >= 0 && group[0] < std::ssize(categories);
  return {.index = index,
          .name = name,
          .category = grouped ? categories[static_cast<std::size_t>(group[0])] : "",
          .designer = factoryDesigners()[static_cast<std::size_t>(group[1])].name,
          .file = {}};
}

LoadedPreset fromFactory(const ListedPreset& preset) {
  LoadedPreset loaded{preset, {}};
  double values[kParameters] = {};
  factoryPreset(preset.index, values, nullptr, nullptr);
  for (int id = 0; id < kParameters; ++id)
    if (parameterKind(id) & kKindStored) loaded.setting.store(id, values[id]);
  return loaded;
}

LoadedPreset fromFile(ListedPreset preset) {
  PresetResult result;
  platform::Bytes content;
  PresetRecord record;
  LoadedPreset loaded;
  for (int id = 0; id < kParameters; ++id)  // what the file does not name stays at its default
    record.values[static_cast<std::size_t>(id)] = static_cast<float>(loaded.setting.value(id));
  if (platform::readFile(preset.file, kLargestPresetBytes, &content, &result.reason))
    result = readPresetBlock(content, record);
  else
    result.error = PresetError::notOpened;
  if (!result) fail("{}: {}", printable(preset.file), describe(result));
  for (int id = 0; id < kParameters; ++id)
    if (parameterKind(id) & kKindStored)
      loaded.setting.store(id, static_cast<double>(record.values[static_cast<std::size_t>(id)]));
  if (preset.name.empty()) preset.name = record.name;
  loaded.listed = std::move(preset);
  return loaded;
}

LoadedPreset fromName(const std::string& words) {
  std::vector<ListedPreset> presets = factoryPresets();
  std::ranges::move(userPresets(), std::back_inserter(presets));
  std::vector<const ListedPreset*> found;
  for (const auto& preset : presets)
    if (lowerCase(preset.name) == lowerCase(words)) found.push_back(&preset);
  if (found.size() > 1) {
    std::string which;
    for (const ListedPreset* preset : found)
      which += (which.empty() ? "" : ", ") +
               (preset->index >= 0 ? std::to_string(preset->index) : printable(preset->file));
    refuse("several presets have the name \"{}\": {}", words, which);
  }
  if (found.size() == 1) return found[0]->index >= 0 ? fromFactory(*found[0]) : fromFile(*found[0]);
  std::vector<std::string> names;
  names.reserve(presets.size());
  for (const auto& preset : presets) names.push_back(preset.name);
  const std::string near = nearestOf(words, names);
  if (near.empty()) refuse("no preset \"{}\"; `corvane presets` lists all", words);
  refuse("no preset \"{}\"; nearest: {}", words, near);
}

}  // namespace

std::vector<ListedPreset> factoryPresets() {
  std::vector<ListedPreset> presets;
  presets.reserve(kFactoryPlaces);
  for (int index = 0; index < kFactoryPlaces; ++index) presets.push_back(factoryPresetAt(index));
  return presets;
}

std::vector<ListedPreset> userPresets() {
  const auto table = SharedLibrary::acquire(platform::systemServices())->table(ListKind::user);
  std::vector<ListedPreset> presets;
  const PresetList* all = table->list(0);
  if (!all) return presets;
  for (const PresetEntry& entry : all->entries)
    if (const PresetList* folder = table->list(entry.folderIndex))
      presets.push_back({.index = -1,
                         .name = entry.fileName,
                         .category = folder->name,
                         .designer = "",
                         .file = folder->folder / entry.diskName});
  return presets;
}

LoadedPreset loadPreset(const std::string& words) {
  if (isPresetFile(words))
    return fromFile({.index = -1, .name = "", .category = "", .designer = "", .file = words});
  const bool isIndex = !words.empty() && words.find_first_not_of("0123456789") == words.npos;
  if (!isIndex) return fromName(words);
  const auto index = numberOf(words).value_or(kFactoryPlaces);
  if (index >= kFactoryPlaces)
    refuse("no preset {}; the factory bank has 0 to {}", words, kFactoryPlaces - 1);
  return fromFactory(factoryPresetAt(static_cast<int>(index)));
}

std::string presetFileName(const std::string& path) { return QDXPresetManager::withPresetExtension(path); }

void savePreset(const std::string& path, const Setting& setting) {
  const fs::path target = presetFileName(path);
  PresetRecord record;
  record.setName(target.stem().string());
  for (int id = 0; id < kParameters; ++id)
    record.values[static_cast<std::size_t>(id)] = static_cast<float>(setting.value(id));
  const Bytes block = presetBlock(record, 0, kPlainZoom);
  writeFile(target, {reinterpret_cast<const char*>(block.data()), block.size()});
}

}  // namespace corvane::cli
