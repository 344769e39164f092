#include "control/QDXPresetManager.h"

#include <new>

#include "control/StateBank.h"
#include "core/ParameterBank.h"

namespace corvane {

namespace {

constexpr const char* kClipboardName = "MemoA";
constexpr const char* kManualName = "ManualPath";
constexpr const char* kMakerPage = "https://quadrexa.example/";
constexpr const char* kMessageTitle = "QDX Corvane Mono";
constexpr const char* kUnreadName = "error loading preset";
constexpr double kZoomSettingPerPercent = 0.001;
constexpr std::size_t kLargestFileBytes = 4 << 20;  // a bank of all places has a third of it

/// As undo and display tell values apart: to four decimals.
int tenThousandths(double value) { return static_cast<int>(value * 10000.0 + 0.5); }

}  // namespace

QDXPresetManager::QDXPresetManager(QDXMasterController& master, const platform::Services& systemServices)
    : masterController(master),
      services(systemServices),
      settings(services.settings),
      library(SharedLibrary::acquire(services)),
      factoryRecords(library->factoryRecords) {
  editorZoom = library->zoomPercent;
  memoryA.record = memoryA.reference = factoryRecords.front();
  memoryB = memoryA;
  clipboardRecord = factoryRecords.front();
}

QDXPresetManager::~QDXPresetManager() {
  settings.write(kTooltipsSetting, library->tooltipsEnabled ? 1.0 : 0.0);
  settings.write(kZoomSetting, editorZoom * kZoomSettingPerPercent);
}

void QDXPresetManager::noteParameterChange(int id, double given) {
  if (id < 0 || id > kParameters) return;
  const double value = given >= 0.0 ? std::min(given, 1.0) : 0.0;  // also for not-a-number
  const bool held = id < kParameters;
  const auto at = static_cast<std::size_t>(id);
  const double old = held ? static_cast<double>(current->record.values[at]) : -1.0;
  if (!undoing && !presetLoading && tenThousandths(old) != tenThousandths(value))
    undoRing.noteEdit(id, static_cast<float>(value), current->record, services.clock.milliseconds());
  if (presetLoading) return;
  if (held) current->record.values[at] = static_cast<float>(value);
  current->modified = !held || current->record.values != current->reference.values;
}

// ---- lists

/// Runs `change`, which selects, as one step of undo; a selection that stays the same makes none.
template <typename Change>
void QDXPresetManager::asPresetStep(Change change) {
  UndoEntry step;
  step.isPresetStep = true;
  step.selectionBefore = chosen;
  step.before = current->record;
  step.referenceBefore = current->reference;
  change();
  step.selectionAfter = chosen;
  step.after = current->record;
  step.referenceAfter = current->reference;
  if (!undoing && step.selectionAfter != step.selectionBefore) undoRing.add(step);
}

void QDXPresetManager::chooseListKind(ListKind kind) {
  asPresetStep([&] {
    chosen.listKind = static_cast<std::int32_t>(kind);
    if (kind == ListKind::user) rescanUserFolders();
  });
}

void QDXPresetManager::chooseList(int list) {
  asPresetStep([&] { chosen.listIndex = list; });
}

void QDXPresetManager::selectPreset(int entry) { selectPreset({chosen.listKind, chosen.listIndex, entry}); }

void QDXPresetManager::selectPreset(const PresetSelection& selection) {
  asPresetStep([&] {
    chosen = selection;
    PresetRecord record = current->record;
    readPresetEntry(static_cast<ListKind>(chosen.listKind), chosen.listIndex, chosen.presetIndex, record);
    takeUnmodified(record);
  });
}

void QDXPresetManager::previousPreset() { selectPreset(std::max(chosen.presetIndex - 1, 0)); }

void QDXPresetManager::nextPreset() {
  const auto table = presetLists(static_cast<ListKind>(chosen.listKind));
  const PresetList* list = table->list(chosen.listIndex);
  const int last = list ? static_cast<int>(list->entries.size()) - 1 : 0;
  selectPreset(std::max(std::min(chosen.presetIndex + 1, last), 0));
}

void QDXPresetManager::readPresetEntry(ListKind kind, int list, int entry, PresetRecord& record) const {
  const auto table = presetLists(kind);
  const PresetEntry* found = table->entry(list, entry);
  PresetRecord read = record;
  bool usable = found != nullptr;
  if (found && found->presetNumber >= 0) {
    read = library->factoryRecords[static_cast<std::size_t>(found->presetNumber)];
  } else if (found) {
    read.values[0] = -1.0f;
    const PresetList* folder = table->list(found->folderIndex);
    usable = folder && loadPresetFile(folder->folder / found->diskName, read) && read.values[0] >= 0.0f;
    read.setName(found->fileName);
  }
  if (!usable) {
    record.setName(kUnreadName);
    return;
  }
  for (int id = 0; id < kParameters; ++id)
    if (parameterKind(id) & kKindStored)
      record.values[static_cast<std::size_t>(id)] = read.values[static_cast<std::size_t>(id)];
  record.setName(read.name);
}

// ---- memories and undo

/// Both memory and reference become `record`, and the strip with them.
void QDXPresetManager::takeUnmodified(const PresetRecord& record) {
  current->record = current->reference = record;
  current->modified = false;
  applyRecord(current->record);
}

/// A setting that stands in no list.
void QDXPresetManager::takeFromOutside(const PresetRecord& record) {
  takeUnmodified(record);
  chosen.presetIndex = -1;
}

void QDXPresetManager::takeStep(const PresetRecord& record, const PresetRecord& reference) {
  current->record = record;
  current->reference = reference;
  current->modified = record.values != reference.values;
  applyRecord(current->record);
}

/// In a batch, so that no rule between parameters answers: a setting brings all its values itself.
void QDXPresetManager::applyRecord(const PresetRecord& record) {
  presetLoading = true;
  masterController.setParameter(kOpenBatchCommand, 1.0);
  for (int id = 0; id < kParameters; ++id)
    if (parameterKind(id) & kKindStored)
      masterController.setParameter(id, static_cast<double>(record.values[static_cast<std::size_t>(id)]));
  masterController.setParameter(kCloseBatchCommand, 1.0);
  presetLoading = false;
}

void QDXPresetManager::switchMemory(bool toB) {
  current = toB ? &memoryB : &memoryA;
  applyRecord(current->record);
}

void QDXPresetManager::copyMemory() { (current == &memoryA ? memoryB : memoryA) = *current; }

void QDXPresetManager::restoreSelection(const PresetSelection& selection) {
  const bool toUserLists = selection.listKind != chosen.listKind &&
                           selection.listKind == static_cast<std::int32_t>(ListKind::user);
  chosen = selection;
  if (toUserLists) rescanUserFolders();
}

void QDXPresetManager::undo() {
  if (!undoRing.canUndo()) return;
  undoing = true;
  const UndoEntry step = undoRing.current();
  undoRing.stepBack();
  if (step.isPresetStep) restoreSelection(step.selectionBefore);
  takeStep(step.before, step.isPresetStep ? step.referenceBefore : current->reference);
  undoing = false;
}

void QDXPresetManager::redo() {
  if (!undoRing.canRedo()) return;
  undoing = true;
  undoRing.stepForward();
  const UndoEntry step = undoRing.current();
  if (step.isPresetStep) restoreSelection(step.selectionAfter);
  takeStep(step.after, step.isPresetStep ? step.referenceAfter : current->reference);
  undoing = false;
}

// ---- files, clipboard, desktop

PresetResult QDXPresetManager::loadPresetFile(const std::filesystem::path& path, PresetRecord& record) const
    try {
  PresetResult result;
  Bytes content;
  if (platform::readFile(path, kLargestFileBytes, &content, &result.reason))
    return readPresetBlock(content, record);
  result.error = PresetError::notOpened;
  return result;
} catch (const std::bad_alloc&) {
  PresetResult result;
  result.error = PresetError::noMemory;
  return result;
}

PresetResult QDXPresetManager::takePresetFile(const std::filesystem::path& path) {
  PresetRecord record = current->record;
  PresetResult result = loadPresetFile(path, record);
  if (result) takeFromOutside(record);
  return result;
}

PresetResult QDXPresetManager::savePresetFile(const std::filesystem::path& path) const try {
  PresetResult result;
  const Bytes block = presetBlock(current->record, editorWord, editorZoom);
  if (!platform::writeFileSafely(path, block, &result.reason)) result.error = PresetError::notWritten;
  return result;
} catch (const std::bad_alloc&) {
  PresetResult result;
  result.error = PresetError::noMemory;
  return result;
}

std::string QDXPresetManager::withPresetExtension(std::string path) {
  constexpr std::string_view kExtension = ".qdx";
  while (path.ends_with(kExtension)) path.resize(path.size() - kExtension.size());
  return path.append(kExtension);
}

bool QDXPresetManager::copyToClipboard() {
  clipboardRecord = current->record;
  clipboardRecord.setName("clipboard " + services.clock.timeOfDay());
  return services.settings.writeBytes(kClipboardName, presetBlock(clipboardRecord, editorWord, editorZoom));
}

bool QDXPresetManager::pasteFromClipboard() {
  Bytes block;
  if (!services.settings.readBytes(kClipboardName, &block) || !readPresetBlock(block, clipboardRecord))
    return false;
  takeFromOutside(clipboardRecord);
  return true;
}

void QDXPresetManager::openUserFolder() const {
  if (services.desktop.open(userFolder().native()) != platform::Desktop::Opened::yes)
    services.desktop.message(kMessageTitle, "Could not open user's preset folder");
}

void QDXPresetManager::openManual() const {
  std::string manual;
  const bool known = services.settings.readText(kManualName, &manual);
  const auto opened = known ? services.desktop.open(manual) : platform::Desktop::Opened::failed;
  if (opened == platform::Desktop::Opened::noApplication)
    services.desktop.message("Could not open manual file", "Make sure Acrobat Reader is installed");
  else if (opened == platform::Desktop::Opened::failed)
    services.desktop.message(kMessageTitle, "Could not open user manual");
}

void QDXPresetManager::openLink(const char* url) const { services.desktop.open(url ? url : kMakerPage); }

// ---- state

void QDXPresetManager::getStateBank(Bytes& out) {
  factoryRecords.front() = current->record;
  appendStateBank(out, factoryRecords, editorWord, editorZoom);
}

PresetResult QDXPresetManager::setStateBank(ByteView data) try {
  PresetHeader header;
  PresetResult result = readStateBank(data, library->factoryRecords.front(), factoryRecords, header);
  if (!result) return result;
  editorWord = header.editorWord;
  if (header.editorZoom > 0) editorZoom = header.editorZoom;
  const std::size_t stored = header.currentPreset < factoryRecords.size() ? header.currentPreset : 0;
  current = &memoryA;
  memoryA.record = memoryA.reference = factoryRecords[stored];
  memoryA.modified = false;
  memoryB = memoryA;
  chosen.presetIndex = -1;
  masterController.setParameter(kEditorWordCommand, editorWord);
  const double zoom = editorZoom * 0.01;
  masterController.setParameter(kZoomCommand, zoom <= 0.01 ? 1.0 : std::max(zoom, 0.5));
  return result;
} catch (const std::bad_alloc&) {  // of the reading, which comes before any change
  PresetResult result;
  result.error = PresetError::noMemory;
  return result;
}

}  // namespace corvane
