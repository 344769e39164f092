#pragma once

#include <array>
#include <cstdint>

#include "control/UndoRing.h"
#include "core/Rack.h"

namespace corvane {

/// What a person at the window of one instance does and reads, for programs that stand in for the window:
/// test drivers, scripts. The plug-in makes it, a host finds it as custom data of the effect's parameters
/// object; plain types alone cross the library's boundary. Texts hold until the next call. [control], in a
/// turn of the host's.
class EditorDesk {
 public:
  /// Id of the custom data, "Dsk1", which is a pointer to the instance's desk. Changes when this class does.
  static constexpr std::uint32_t kCustomDataId = 0x44736B31;

  // Values, by id of the bank, 0 .. 1.

  /// A knob turned: the host is asked, and its answer does the rest.
  virtual void edit(int id, double value) = 0;
  /// What the plug-in's own store holds; hosts may hold another value, by automation.
  virtual double stored(int id) const = 0;

  // Presets. List kinds: 0 categories, 1 designers, 2 the user's folders.

  virtual PresetSelection selection() const = 0;
  /// Reads the user's folders anew.
  virtual void rescanUserFolders() = 0;
  /// Null where there is no such list or entry.
  virtual const char* listName(int kind, int list) const = 0;
  virtual const char* presetName(int kind, int list, int entry) const = 0;
  /// False, with `problem`, for a list or entry that does not exist and a file that cannot be read.
  virtual bool selectPreset(const PresetSelection& selection) = 0;
  /// One further up or down the list, stopping at its ends.
  virtual void nextPreset() = 0;
  virtual void previousPreset() = 0;
  /// Preset files, by absolute path. False, with `problem`, and nothing changed.
  virtual bool loadPreset(const char* path) = 0;
  virtual bool savePreset(const char* path) = 0;
  /// False where the user's store of settings has none, or cannot be written.
  virtual bool copy() = 0;
  virtual bool paste() = 0;
  /// Why the last operation was refused, in words.
  virtual const char* problem() const = 0;

  // The setting in use, its memories and its steps.

  virtual const char* name() const = 0;
  virtual bool isModified() const = 0;
  virtual bool memoryBIsCurrent() const = 0;
  virtual void switchMemory(bool toB) = 0;
  /// The memory in use over the other one.
  virtual void copyMemory() = 0;
  virtual bool canUndo() const = 0;
  virtual bool canRedo() const = 0;
  virtual void undo() = 0;
  virtual void redo() = 0;
  /// First id of the group at each position.
  virtual std::array<std::int32_t, kPlaces> rackOrder() const = 0;

  // Time, as the steps of undo see it.

  /// From here on the clock stands and moves by `advanceClock` alone; its time of day starts at 00:00:00.
  virtual void holdClock() = 0;
  virtual void advanceClock(std::uint32_t ms) = 0;

 protected:
  ~EditorDesk() = default;  // the instance owns it
};

}  // namespace corvane
