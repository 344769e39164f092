#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "control/QDXBaseParametersController.h"
#include "control/QDXMasterController.h"
#include "core/Rack.h"

namespace corvane {

/// The rules between parameters: positions stay a permutation, at most one monitor is on, an emptied place
/// loses its solo, a new module in an insert gets its defaults. Told of every change, it answers by setting
/// further parameters through the same route. In a batch (a preset, a state) nothing is answered and only the
/// tables follow.
class CorvaneMonoController final : public QDXBaseParametersController {
 public:
  explicit CorvaneMonoController(QDXMasterController& master);
  /// The last one of the process writes the view setting back.
  ~CorvaneMonoController() override;
  CorvaneMonoController(const CorvaneMonoController&) = delete;
  CorvaneMonoController& operator=(const CorvaneMonoController&) = delete;

  void parameterChanged(int id, double value) override;
  int getState(void** data) override;
  bool setState(void* data, int size) override;
  void spareOperation() override {}

  /// First id of the group at each position.
  const std::array<std::int32_t, kPlaces>& getRackOrder() const { return rackOrder; }
  /// Module that stands in insert place 7 or 8.
  int getInsertIndex(int place) const { return insertIndex[static_cast<std::size_t>(place - kInsertX)]; }

  bool swapInProgress = false;      ///< the window swaps two neighbours and sets both positions itself
  std::int32_t viewSetting = 0;     ///< view mode, 0..3; one value for all instances of the process
  std::int32_t miniSelection = -1;  ///< tag of the place shown in the small view, -1 for none

 private:
  void fixedTypeChanged(int id, double value);
  void insertTypeChanged(int place, double value);
  void loadInsertDefaults(int place, int index);
  void positionChanged(int place, double value);
  void moveModule(int base, int position);
  void monitorChanged(int id, double value);
  void clearMonitors();
  void clearSolo(int typeId);
  void setInBatch(int id, double value);
  void sendCurrentSetting();

  QDXMasterController& masterController;
  bool batchOpen = false;
  bool moveInProgress = false;
  std::array<std::int32_t, 2> insertIndex{};
  std::array<std::int32_t, kPlaces> rackOrder{};
  std::array<std::int32_t, kPlaces> toldPosition{};  ///< by place: the last position that the store holds
  std::vector<std::uint8_t> stateBlock;
};

}  // namespace corvane
