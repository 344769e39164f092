#pragma once

#include <string>

#include "control/EditorDesk.h"
#include "platform/system/Clock.h"

namespace corvane::host {

class QDX_AAX_ControllerWrapper;

/// The desk over an instance's controller wrapper, the way its window reaches it. [control]
class ControllerDesk final : public EditorDesk {
 public:
  ControllerDesk(QDX_AAX_ControllerWrapper& controllerWrapper, platform::HoldableClock& instanceClock)
      : wrapper(controllerWrapper), clock(instanceClock) {}

  void edit(int id, double value) override;
  double stored(int id) const override;

  PresetSelection selection() const override;
  void rescanUserFolders() override;
  const char* listName(int kind, int list) const override;
  const char* presetName(int kind, int list, int entry) const override;
  bool selectPreset(const PresetSelection& selection) override;
  void nextPreset() override;
  void previousPreset() override;
  bool loadPreset(const char* path) override;
  bool savePreset(const char* path) override;
  bool copy() override;
  bool paste() override;
  const char* problem() const override { return why.c_str(); }

  const char* name() const override;
  bool isModified() const override;
  bool memoryBIsCurrent() const override;
  void switchMemory(bool toB) override;
  void copyMemory() override;
  bool canUndo() const override;
  bool canRedo() const override;
  void undo() override;
  void redo() override;
  std::array<std::int32_t, kPlaces> rackOrder() const override;

  void holdClock() override { clock.hold(); }
  void advanceClock(std::uint32_t ms) override { clock.advance(ms); }

 private:
  bool accept(bool done, std::string_view otherwise);

  QDX_AAX_ControllerWrapper& wrapper;
  platform::HoldableClock& clock;
  std::string why;
  mutable std::string shown;  ///< holds a text until the next call
};

}  // namespace corvane::host
