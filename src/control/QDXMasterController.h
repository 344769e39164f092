#pragma once

namespace corvane {

class CorvaneMonoController;
class QDXPresetManager;

/// The route by which the control side and the window reach the store of values and everything behind it. The
/// adapter of a host implements it. [control]
class QDXMasterController {
 public:
  virtual ~QDXMasterController() = default;
  /// Stores the value and passes it on: to the controller's rules, unless it is one of them that sets it, to
  /// the host, the window and the audio side. Ids of the bank and commands.
  virtual void setParameter(int id, double value) = 0;
  virtual void writeSetting(int id, double value) = 0;
  /// Leaves `value` alone where nothing is stored.
  virtual void readSetting(int id, double* value) = 0;
  virtual QDXPresetManager* getPresetManager() = 0;
  virtual CorvaneMonoController* getController() = 0;
};

// Commands of the control side, beyond the ids of the bank.
inline constexpr int kEditorWordCommand = 819;
inline constexpr int kZoomCommand = 849;
inline constexpr int kOpenBatchCommand = 860;
inline constexpr int kCloseBatchCommand = 861;

}  // namespace corvane
