#include "control/UndoRing.h"

namespace corvane {

/// Behind the cursor: what lay ahead can no longer be made again.
UndoEntry& UndoRing::openStep() {
  cursor = newest = (cursor + 1) % kEntries;
  if (newest == oldest) oldest = (oldest + 1) % kEntries;
  return at(newest);
}

void UndoRing::noteEdit(int id, float value, const PresetRecord& memory, std::uint32_t nowMs) {
  const std::uint32_t sinceLast = nowMs - lastEditMs;
  lastEditMs = nowMs;
  // A gesture cannot go on in a step that has been taken back, or in the choice of a preset.
  const bool hasOpenGesture = newest != oldest && cursor == newest && !at(newest).isPresetStep;
  if (sinceLast >= kGestureMs || !hasOpenGesture) {
    UndoEntry& entry = openStep();
    entry.isPresetStep = false;
    entry.before = entry.after = memory;
  }
  if (id < kParameters) at(newest).after.values[static_cast<std::size_t>(id)] = value;
}

void UndoRing::add(const UndoEntry& entry) { openStep() = entry; }

}  // namespace corvane
