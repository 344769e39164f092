#pragma once

#include <memory>
#include <string>
#include <vector>

#include "control/PresetBytes.h"
#include "control/QDXMasterController.h"
#include "control/SharedLibrary.h"
#include "control/UndoRing.h"

namespace corvane {

/// The presets of one instance: what the user has chosen, the memories A and B, undo, files, clipboard, and
/// the presets inside a session's state. It holds no value of its own beside these records: every change goes
/// through the master controller, and every change comes back through `noteParameterChange`. [control]
/// throughout.
class QDXPresetManager {
 public:
  QDXPresetManager(QDXMasterController& master, const platform::Services& services);
  /// Writes the window's settings.
  ~QDXPresetManager();
  QDXPresetManager(const QDXPresetManager&) = delete;
  QDXPresetManager& operator=(const QDXPresetManager&) = delete;

  // The setting in use.
  const PresetRecord& currentRecord() const { return current->record; }
  bool isModified() const { return current->modified; }
  /// Told of every change of a parameter, whoever makes it.
  void noteParameterChange(int id, double value);

  // Lists and what is chosen in them.
  std::shared_ptr<const PresetTable> presetLists(ListKind kind) const { return library->table(kind); }
  const PresetSelection& selection() const { return chosen; }
  /// The list in use, without a change of the sound; the user's lists are read anew. Each is a step of undo.
  void chooseListKind(ListKind kind);
  void chooseList(int list);
  /// Entry of the list in use.
  void selectPreset(int entry);
  /// Entry of any list, in one step; the user's lists are as they were last read.
  void selectPreset(const PresetSelection& selection);
  /// One further up or down the list, stopping at its ends.
  void previousPreset();
  void nextPreset();
  /// A record that cannot be read keeps its values and gets an error text for a name.
  void readPresetEntry(ListKind kind, int list, int entry, PresetRecord& record) const;

  // Memories and undo.
  void switchMemory(bool toB);
  bool memoryBIsCurrent() const { return current == &memoryB; }
  void copyMemory();
  void undo();
  void redo();
  bool canUndo() const { return undoRing.canUndo(); }
  bool canRedo() const { return undoRing.canRedo(); }

  // Files, clipboard, desktop.
  void rescanUserFolders() { library->rescanUserFolders(); }
  /// Where the user's presets are; empty for a user without a home.
  const std::filesystem::path& userFolder() const { return library->userRoot; }
  /// Reads a file into `record`. A caller who must know whether the file holds a whole setting sets the first
  /// value to -1 before: it stays below 0 for one that does not begin at the first id.
  PresetResult loadPresetFile(const std::filesystem::path& path, PresetRecord& record) const;
  /// The file becomes the current setting; ids that it does not name keep their values. Like a paste, it
  /// stands in no list and is no step of undo. On a fault nothing changes.
  PresetResult takePresetFile(const std::filesystem::path& path);
  /// Writes the current setting: the old file or the new one, never half.
  PresetResult savePresetFile(const std::filesystem::path& path) const;
  /// `path` with exactly one ".qdx" at its end.
  static std::string withPresetExtension(std::string path);
  /// False where the store of settings cannot be written.
  bool copyToClipboard();
  /// False, and nothing changed, where there is no preset to paste.
  bool pasteFromClipboard();
  void openUserFolder() const;
  void openManual() const;
  /// The maker's page for null.
  void openLink(const char* url) const;

  // Settings of the user.
  void writeSetting(int id, double value) const { settings.write(id, value); }
  void readSetting(int id, double* value) const { settings.read(id, value); }
  bool tooltipsEnabled() const { return library->tooltipsEnabled; }
  void setTooltipsEnabled(bool enabled) { library->tooltipsEnabled = enabled; }

  // The part of a session's state that holds presets.
  void getStateBank(Bytes& out);
  /// Both memories become the setting that `data` says is current. On a fault nothing changes.
  PresetResult setStateBank(ByteView data);

  std::int32_t editorWord = 0;  ///< a word of the window, carried in files and state
  std::int32_t editorZoom;      ///< per cent

 private:
  struct Memory {
    PresetRecord record;
    PresetRecord reference;  ///< as it was loaded
    bool modified = false;   ///< whether the two differ
  };

  void takeUnmodified(const PresetRecord& record);
  void takeFromOutside(const PresetRecord& record);
  void takeStep(const PresetRecord& record, const PresetRecord& reference);
  void applyRecord(const PresetRecord& record);
  void restoreSelection(const PresetSelection& selection);
  template <typename Change>
  void asPresetStep(Change change);

  QDXMasterController& masterController;
  const platform::Services services;
  const Settings settings;
  const std::shared_ptr<SharedLibrary> library;
  PresetSelection chosen;
  bool presetLoading = false;
  bool undoing = false;
  UndoRing undoRing;
  Memory memoryA, memoryB;
  Memory* current = &memoryA;
  std::vector<PresetRecord> factoryRecords;  ///< the factory bank, as sessions have changed it
  PresetRecord clipboardRecord;
};

}  // namespace corvane
