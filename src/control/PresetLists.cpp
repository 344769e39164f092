#include "control/PresetLists.h"

#include <algorithm>
#include <string_view>

#include "control/FactoryBank.h"
#include "platform/system/Files.h"

namespace corvane {

namespace {

constexpr std::string_view kExtension = ".qdx";

PresetList& addList(PresetTable& table, std::string_view name) {
  auto& list = table.lists[static_cast<std::size_t>(table.count++)];
  list = std::make_unique<PresetList>();
  list->name = name.substr(0, kPresetListName);
  return *list;
}

void addEntry(PresetList& list, const PresetEntry& entry) {
  if (list.entries.size() < kPresetListEntries) list.entries.push_back(entry);
}

/// Group word `which` (0 category, 1 designer) of every preset, and an "All" in front.
PresetTable makeFactoryLists(std::size_t which, const std::vector<std::string_view>& names) {
  PresetTable table;
  PresetList& all = addList(table, "All");
  std::vector<PresetList*> lists;
  lists.reserve(names.size());
  for (const std::string_view name : names) lists.push_back(name.empty() ? nullptr : &addList(table, name));
  for (int index = 0; index < kFactoryPlaces; ++index) {
    char name[kPresetNameBytes];
    std::int32_t group[2] = {-1, -1};
    factoryPreset(index, nullptr, name, group);
    if (name[0] == '\0') continue;
    const PresetEntry entry{index, name, 0, {}};
    addEntry(all, entry);
    const std::int32_t number = group[which];
    if (number < 0 || number >= static_cast<std::int32_t>(lists.size())) continue;
    if (PresetList* list = lists[static_cast<std::size_t>(number)]) addEntry(*list, entry);
  }
  return table;
}

char lowered(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

/// Without regard to case; names equal but for case in the order of their bytes, so that a scan always gives
/// the same order.
bool before(std::string_view a, std::string_view b) {
  const auto byte = [](char c) { return static_cast<unsigned char>(lowered(c)); };
  if (std::ranges::lexicographical_compare(a, b, {}, byte, byte)) return true;
  if (std::ranges::lexicographical_compare(b, a, {}, byte, byte)) return false;
  return a < b;
}

/// At most `limit` bytes, without half a character at the end.
std::string cutName(std::string_view name, std::size_t limit) {
  if (name.size() <= limit) return std::string(name);
  std::size_t end = limit;
  while (end > 0 && (static_cast<unsigned char>(name[end]) & 0xC0) == 0x80 && limit - end < 4) --end;
  return std::string(name.substr(0, end));
}

void fillFromFolder(PresetList& list, int number, platform::Trace& trace) {
  trace.line("Looking for *.qdx files in: " + list.folder.native());
  for (const auto& file : platform::listFolder(list.folder)) {
    if (file.isFolder || file.name.size() <= kExtension.size() || !file.name.ends_with(kExtension)) continue;
    const std::string_view stem = std::string_view(file.name).substr(0, file.name.size() - kExtension.size());
    addEntry(list, {-1, cutName(stem, kPresetListName), number, file.name});
  }
  std::ranges::sort(list.entries, before, &PresetEntry::fileName);
}

}  // namespace

const PresetList* PresetTable::list(int number) const {
  return number >= 0 && number < kPresetLists ? lists[static_cast<std::size_t>(number)].get() : nullptr;
}

const PresetEntry* PresetTable::entry(int listNumber, int entryNumber) const {
  const PresetList* found = list(listNumber);
  const bool exists = found && entryNumber >= 0 && entryNumber < static_cast<int>(found->entries.size());
  return exists ? &found->entries[static_cast<std::size_t>(entryNumber)] : nullptr;
}

PresetTable makeCategoryLists() {
  const auto names = factoryCategories();
  return makeFactoryLists(0, {names.begin(), names.end()});
}

PresetTable makeDesignerLists() {
  std::vector<std::string_view> names;
  for (const Designer& designer : factoryDesigners()) names.emplace_back(designer.name);
  return makeFactoryLists(1, names);
}

PresetTable scanUserFolders(const std::filesystem::path& root, platform::Trace& trace) {
  trace.line("Plugin's Main Preset Folder: " + root.native());
  PresetTable table;
  PresetList& all = addList(table, "All");

  auto& main = table.lists[kMainFolderList];
  main = std::make_unique<PresetList>();
  main->name = "#MAIN FOLDER";
  main->folder = root;
  fillFromFolder(*main, kMainFolderList, trace);
  for (const PresetEntry& entry : main->entries) addEntry(all, entry);

  std::vector<std::string> folders;
  if (!root.empty())
    for (const auto& folder : platform::listFolder(root))
      if (folder.isFolder && !folder.name.starts_with('.')) folders.push_back(folder.name);
  folders.resize(std::min<std::size_t>(folders.size(), kMainFolderList - 1));
  std::ranges::sort(folders, before);
  for (const std::string& name : folders) {
    const int number = table.count;
    PresetList& list = addList(table, cutName(name, kPresetListName));
    list.folder = root / name;
    fillFromFolder(list, number, trace);
    for (const PresetEntry& entry : list.entries) addEntry(all, entry);
  }
  std::ranges::sort(all.entries, before, &PresetEntry::fileName);
  return table;
}

}  // namespace corvane
