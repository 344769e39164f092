#include "corvane/Setting.h"

#include <algorithm>

#include "control/CorvaneMonoController.h"
#include "core/ParameterBank.h"

namespace corvane::cli {

namespace {

/// The route on which the controller answers one edit: values stay in the setting, and a window's settings
/// are nobody's here.
class EditRoute final : public QDXMasterController {
 public:
  explicit EditRoute(Setting& edited) : setting(edited), controller(*this) {
    // The controller starts with the default rack: a batch tells it what stands where, and answers nothing.
    controller.parameterChanged(kOpenBatchCommand, 1.0);
    for (const Place& place : kRack)
      for (const int offset : {kTypeOffset, kPositionOffset})
        controller.parameterChanged(place.parameterBase + offset,
                                    setting.value(place.parameterBase + offset));
    controller.parameterChanged(kCloseBatchCommand, 1.0);
  }

  void setParameter(int id, double value) override {
    if (!answering) {
      answering = true;
      controller.parameterChanged(id, value);
      answering = false;
    }
    setting.store(id, std::clamp(value, 0.0, 1.0));
  }
  void writeSetting(int, double) override {}
  void readSetting(int, double*) override {}
  QDXPresetManager* getPresetManager() override { return nullptr; }
  CorvaneMonoController* getController() override { return &controller; }

 private:
  Setting& setting;
  CorvaneMonoController controller;
  bool answering = false;
};

}  // namespace

Setting::Setting() {
  for (int id = 0; id < kParameters; ++id) values[static_cast<std::size_t>(id)] = parameterDefault(id);
}

void Setting::edit(int id, double value) { EditRoute(*this).setParameter(id, value); }

const ModuleFamily* familyInPlace(int place, const Setting& setting) {
  const Place& group = kRack[static_cast<std::size_t>(place)];
  return place < kFixedPlaces ? &familyOfKind(group.kind)
                              : familyOfInsertIndex(decodeInsertIndex(setting.value(group.parameterBase)));
}

}  // namespace corvane::cli
