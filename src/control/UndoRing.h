#pragma once

#include <array>
#include <cstdint>

#include "control/PresetRecord.h"

namespace corvane {

/// Which preset of which list the user has chosen.
struct PresetSelection {
  std::int32_t listKind = 0, listIndex = 0;
  std::int32_t presetIndex = 0;  ///< -1 for a setting from outside the lists
  bool operator==(const PresetSelection&) const = default;
};

/// One step that can be taken back.
struct UndoEntry {
  PresetRecord after, before;
  bool isPresetStep = false;  ///< selected a preset, or moved through the lists
  PresetSelection selectionBefore, selectionAfter;
  PresetRecord referenceAfter, referenceBefore;  ///< of a preset step: what "modified" is measured against
};

/// The last steps of one instance: a ring of eight entries. Edits that follow each other quickly, such as one
/// movement of a knob or a rule that sets several parameters, make one step. [control]
class UndoRing {
 public:
  static constexpr std::uint32_t kGestureMs = 51;  ///< edits less than this apart belong together

  /// `id` goes from its value in `memory` to `value` at time `nowMs`; `memory` still holds the old setting.
  void noteEdit(int id, float value, const PresetRecord& memory, std::uint32_t nowMs);
  /// A step that was made as a whole.
  void add(const UndoEntry& entry);

  bool canUndo() const { return cursor != oldest; }
  bool canRedo() const { return cursor != newest; }
  /// The step to take back; then `stepBack`. Only if `canUndo`.
  const UndoEntry& current() const { return at(cursor); }
  void stepBack() { cursor = (cursor + kEntries - 1) % kEntries; }
  /// Goes to the step to make again, which `current` then is. Only if `canRedo`.
  void stepForward() { cursor = (cursor + 1) % kEntries; }

 private:
  static constexpr int kEntries = 8;

  UndoEntry& openStep();
  UndoEntry& at(int index) { return ring[static_cast<std::size_t>(index)]; }
  const UndoEntry& at(int index) const { return ring[static_cast<std::size_t>(index)]; }

  std::array<UndoEntry, kEntries> ring;
  int oldest = 0, newest = 0, cursor = 0;  ///< the entry at `oldest` is where undo stops, not a step
  std::uint32_t lastEditMs = 0;
};

}  // namespace corvane
