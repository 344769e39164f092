#include "host/ControllerDesk.h"

#include "host/QDX_AAX_ControllerWrapper.h"

namespace corvane::host {

namespace {

bool isListKind(int kind) { return kind >= 0 && kind <= static_cast<int>(ListKind::user); }

}  // namespace

/// Keeps the reason of a refusal.
bool ControllerDesk::accept(bool done, std::string_view otherwise) {
  why = done ? "" : otherwise;
  return done;
}

void ControllerDesk::edit(int id, double value) { wrapper.editorSetParameter(id, value); }

double ControllerDesk::stored(int id) const { return id >= 0 && id < kIdentifiers ? wrapper.value(id) : 0.0; }

// ---- presets

PresetSelection ControllerDesk::selection() const { return wrapper.getPresetManager()->selection(); }

void ControllerDesk::rescanUserFolders() { wrapper.getPresetManager()->rescanUserFolders(); }

const char* ControllerDesk::listName(int kind, int list) const {
  if (!isListKind(kind)) return nullptr;
  const auto table = wrapper.getPresetManager()->presetLists(static_cast<ListKind>(kind));
  const PresetList* found = table->list(list);
  if (!found) return nullptr;
  shown = found->name;
  return shown.c_str();
}

const char* ControllerDesk::presetName(int kind, int list, int entry) const {
  if (!isListKind(kind)) return nullptr;
  const auto table = wrapper.getPresetManager()->presetLists(static_cast<ListKind>(kind));
  const PresetEntry* found = table->entry(list, entry);
  if (!found) return nullptr;
  shown = found->fileName;
  return shown.c_str();
}

bool ControllerDesk::selectPreset(const PresetSelection& selection) {
  if (!presetName(selection.listKind, selection.listIndex, selection.presetIndex))
    return accept(false, "there is no such preset");
  QDXPresetManager& presets = *wrapper.getPresetManager();
  const auto table = presets.presetLists(static_cast<ListKind>(selection.listKind));
  const PresetEntry* entry = table->entry(selection.listIndex, selection.presetIndex);
  if (const PresetList* folder = table->list(entry->folderIndex); entry->presetNumber < 0 && folder) {
    PresetRecord probe = presets.currentRecord();
    const PresetResult result = presets.loadPresetFile(folder->folder / entry->diskName, probe);
    if (!result) return accept(false, describe(result));
  }
  presets.selectPreset(selection);
  return accept(true, "");
}

void ControllerDesk::nextPreset() { wrapper.getPresetManager()->nextPreset(); }
void ControllerDesk::previousPreset() { wrapper.getPresetManager()->previousPreset(); }

bool ControllerDesk::loadPreset(const char* path) {
  const PresetResult result = wrapper.getPresetManager()->takePresetFile(path);
  return accept(static_cast<bool>(result), describe(result));
}

bool ControllerDesk::savePreset(const char* path) {
  QDXPresetManager& presets = *wrapper.getPresetManager();
  const PresetResult result = presets.savePresetFile(path);
  if (result) presets.rescanUserFolders();
  return accept(static_cast<bool>(result), describe(result));
}

bool ControllerDesk::copy() {
  return accept(wrapper.getPresetManager()->copyToClipboard(), "the settings store cannot be written");
}

bool ControllerDesk::paste() {
  return accept(wrapper.getPresetManager()->pasteFromClipboard(), "there is nothing to paste");
}

// ---- the setting in use

const char* ControllerDesk::name() const { return wrapper.getPresetManager()->currentRecord().name; }
bool ControllerDesk::isModified() const { return wrapper.getPresetManager()->isModified(); }
bool ControllerDesk::memoryBIsCurrent() const { return wrapper.getPresetManager()->memoryBIsCurrent(); }
void ControllerDesk::switchMemory(bool toB) { wrapper.getPresetManager()->switchMemory(toB); }
void ControllerDesk::copyMemory() { wrapper.getPresetManager()->copyMemory(); }
bool ControllerDesk::canUndo() const { return wrapper.getPresetManager()->canUndo(); }
bool ControllerDesk::canRedo() const { return wrapper.getPresetManager()->canRedo(); }
void ControllerDesk::undo() { wrapper.getPresetManager()->undo(); }
void ControllerDesk::redo() { wrapper.getPresetManager()->redo(); }
std::array<std::int32_t, kPlaces> ControllerDesk::rackOrder() const {
  return wrapper.getController()->getRackOrder();
}

}  // namespace corvane::host
