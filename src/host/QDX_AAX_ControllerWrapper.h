#pragma once

#include <array>
#include <memory>
#include <vector>

#include "control/CorvaneMonoController.h"
#include "control/QDXPresetManager.h"
#include "core/ParameterBank.h"
#include "platform/aax/AAX_CParameter.h"

namespace corvane::host {

class QDX_QcMN_1200_AAX_Parameters_Wrapper;

/// The value store of an instance and the route between controller, presets, window and host.
///
/// A value has two roads, and both meet the controller once: from the window it goes to the host first and
/// reaches the store as the host's answer; from the controller and the presets it is stored at once and the
/// answer, which brings nothing new, ends there. The values of a preset come back as one batch, so that no
/// rule answers them one by one. [control]
class QDX_AAX_ControllerWrapper final : public QDXMasterController {
 public:
  QDX_AAX_ControllerWrapper(QDX_QcMN_1200_AAX_Parameters_Wrapper& owner, const platform::Services& services);
  ~QDX_AAX_ControllerWrapper() override;

  void setParameter(int id, double value) override;
  void writeSetting(int id, double value) override;
  void readSetting(int id, double* value) override;
  QDXPresetManager* getPresetManager() override { return presetManager.get(); }
  CorvaneMonoController* getController() override { return controller.get(); }

  /// A person's edit in the window: the host is asked, and its answer does the rest.
  void editorSetParameter(int id, double value);
  /// The host's answer to a request that a person's touch stood behind.
  void hostValueChanged(int id, double value);

  /// Value in the store, ids 0 .. 818.
  double value(int id) const { return values[static_cast<std::size_t>(id)]; }
  /// Hands over values for the audio side that have no port, by id - 360; -1 where there is none. False, and
  /// nothing written, if there are none.
  bool takePending(double* commands);

 private:
  void storeInHost(int id, double value);
  void endBatch();
  void send(int id, double value);

  QDX_QcMN_1200_AAX_Parameters_Wrapper& parameters;
  const platform::Services& machine;
  std::unique_ptr<CorvaneMonoController> controller;
  bool inCallback = false;
  std::unique_ptr<QDXPresetManager> presetManager;
  bool echoBatch = false;      ///< values of a batch are on their way through the host
  bool countingBatch = false;  ///< the window is inside a batch
  std::int32_t echoExpected = 0, batchCount = 0, echoCount = 0;
  std::vector<int> batchIds;  ///< parameters of the batch under way
  std::array<double, kIdentifiers> values{};
  std::array<double, kIdentifiers> pending{};  ///< for the audio side, -1 for none
  bool pendingDirty = false;
};

}  // namespace corvane::host
