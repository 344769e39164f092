#include "control/CorvaneMonoController.h"

#include <algorithm>
#include <cassert>
#include <mutex>

#include "control/QDXPresetManager.h"
#include "control/Settings.h"
#include "control/StateBank.h"
#include "core/ParameterBank.h"

namespace corvane {

namespace {

// in the head of a state block
constexpr std::size_t kViewAt = 0, kMiniAt = 8;
constexpr std::int32_t kStateVersion = 1200;

// Sizes of blocks that other programs wrote: without a head, or with another bank.
constexpr std::array kForeignStateBytes{18985, 621649, 621873};
/// Size of the blocks from before the limiter had modes.
constexpr int kOldLimiterStateBytes = 1119153;
constexpr int kLimiterType = 192, kLimiterCeiling = 210, kLimiterMode = 217, kLimiterSmooth = 220,
              kLimiterShape = 221;

/// The view mode that all instances of the process show.
struct SharedView {
  std::mutex mutex;  ///< hosts may open instances on several threads
  int controllers = 0;
  std::int32_t value = 0;
};
SharedView& sharedView() {
  static SharedView shared;
  return shared;
}

std::int32_t decodeView(double value) { return static_cast<std::int32_t>(value * 3.0 + 0.5); }

std::size_t at(int index) { return static_cast<std::size_t>(index); }
int typeIdOf(int place) { return kRack[at(place)].parameterBase; }

void appendWord(std::vector<std::uint8_t>& out, std::int32_t value) {
  for (int shift = 0; shift < 32; shift += 8)
    out.push_back(static_cast<std::uint8_t>(static_cast<std::uint32_t>(value) >> shift));
}

std::int32_t readWord(ByteView bytes, std::size_t from) {
  std::uint32_t value = 0;
  for (std::size_t k = 0; k < 4; ++k) value |= static_cast<std::uint32_t>(bytes[from + k]) << 8 * k;
  return static_cast<std::int32_t>(value);
}

}  // namespace

CorvaneMonoController::CorvaneMonoController(QDXMasterController& master) : masterController(master) {
  for (int place = 0; place < kPlaces; ++place) {
    rackOrder[at(place)] = typeIdOf(place);
    toldPosition[at(place)] = place;
  }
  SharedView& shared = sharedView();
  const std::lock_guard lock(shared.mutex);
  if (shared.controllers++ == 0) {
    double stored = 0.0;
    masterController.readSetting(kViewSetting, &stored);
    shared.value = decodeView(stored);
  }
  viewSetting = shared.value;
}

CorvaneMonoController::~CorvaneMonoController() {
  SharedView& shared = sharedView();
  const std::lock_guard lock(shared.mutex);
  if (--shared.controllers == 0) masterController.writeSetting(kViewSetting, shared.value / 3.0);
}

void CorvaneMonoController::parameterChanged(int id, double given) {
  const double value = given >= 0.0 ? std::min(given, 1.0) : 0.0;  // also for not-a-number
  if (id == kOpenBatchCommand || id == kCloseBatchCommand) {
    batchOpen = id == kOpenBatchCommand;
    return;
  }
  if (id == kViewSetting) {
    SharedView& shared = sharedView();
    const std::lock_guard lock(shared.mutex);
    viewSetting = shared.value = decodeView(value);
    return;
  }
  const int place = placeOfParameter(id);
  if (place < 0) return;
  switch (id - typeIdOf(place)) {
    case kTypeOffset:
      return place < kFixedPlaces ? fixedTypeChanged(id, value) : insertTypeChanged(place, value);
    case kPositionOffset: return positionChanged(place, value);
    case kMuteOffset:
    case kSoloOffset: return clearMonitors();
    case kMonitorOffset: return monitorChanged(id, value);
    default: return;
  }
}

void CorvaneMonoController::fixedTypeChanged(int id, double value) {
  if (decodeVariant(value) == 0) clearSolo(id);
  clearMonitors();
}

void CorvaneMonoController::insertTypeChanged(int place, double value) {
  std::int32_t& held = insertIndex[at(place - kInsertX)];
  const int index = decodeInsertIndex(value);
  const int kind = kindOfInsertIndex(index);
  // Variants of one family share their parameters and keep them; the special modules share none.
  const bool parametersDiffer =
      kind != kindOfInsertIndex(held) || kind == static_cast<int>(ModuleKind::special);
  if (index != held && !batchOpen && parametersDiffer) loadInsertDefaults(place, index);
  held = index;
  if (index == 0) clearSolo(typeIdOf(place));
  clearMonitors();
}

void CorvaneMonoController::loadInsertDefaults(int place, int index) {
  const ModuleFamily* family = familyOfInsertIndex(index);
  if (!family) return;
  for (int offset = kFirstOwnOffset; offset < kRack[at(place)].parameterCount; ++offset)
    masterController.setParameter(typeIdOf(place) + offset, defaultValue(*family, offset));
}

void CorvaneMonoController::positionChanged(int place, double value) {
  if (moveInProgress && !swapInProgress) return;
  const int position = std::clamp(decodePosition(value), 0, kPlaces - 1);
  if (swapInProgress || batchOpen) {
    rackOrder[at(position)] = typeIdOf(place);
    toldPosition[at(place)] = position;
    return;
  }
  moveInProgress = true;
  moveModule(place, position);
  moveInProgress = false;
}

/// Takes the place out of the order and puts it in at `position`; those in between close the gap and are
/// told.
void CorvaneMonoController::moveModule(int moved, int position) {
  const auto inOrder = [this](int place) {
    return rackOrder[at(toldPosition[at(place)])] == typeIdOf(place);
  };
  std::array<int, kPlaces> order{};
  for (int place = 0; place < kPlaces; ++place) order[at(place)] = place;
  // A preset may have told two places one position: then their order in the rack decides, and all are told
  // anew.
  std::ranges::stable_sort(order, {}, [this](int place) { return toldPosition[at(place)]; });
  bool consistent = true;
  for (int place = 0; place < kPlaces; ++place) consistent = consistent && inOrder(place);

  moveInOrder(order, moved, position);

  const auto previous = toldPosition;
  for (int k = 0; k < kPlaces; ++k) {
    rackOrder[at(k)] = typeIdOf(order[at(k)]);
    toldPosition[at(order[at(k)])] = k;
  }
  for (int k = 0; k < kPlaces; ++k) {
    const int place = order[at(k)];
    if (place != moved && (!consistent || previous[at(place)] != k))
      masterController.setParameter(typeIdOf(place) + kPositionOffset, k / 8.0);
  }
}

void CorvaneMonoController::monitorChanged(int id, double value) {
  if (value <= 0.5 || batchOpen) return;
  clearMonitors();
  masterController.setParameter(id, value);
}

void CorvaneMonoController::clearMonitors() {
  if (batchOpen) return;
  for (const Place& place : kRack) masterController.setParameter(place.parameterBase + kMonitorOffset, 0.0);
}

void CorvaneMonoController::clearSolo(int typeId) {
  if (!batchOpen) masterController.setParameter(typeId + kSoloOffset, 0.0);
}

int CorvaneMonoController::getState(void** data) {
  QDXPresetManager* presets = masterController.getPresetManager();
  if (!presets) return 0;
  stateBlock.clear();
  appendWord(stateBlock, viewSetting);
  appendWord(stateBlock, kStateVersion);
  appendWord(stateBlock, miniSelection);
  stateBlock.insert(stateBlock.end(), 20, 0xFF);
  constexpr std::array<std::uint8_t, 8> kMinusOne{0, 0, 0, 0, 0, 0, 0xF0, 0xBF};  // as a double
  for (int k = 0; k < 8; ++k) stateBlock.insert(stateBlock.end(), kMinusOne.begin(), kMinusOne.end());
  stateBlock.resize(kStateHeadBytes, 0);
  presets->getStateBank(stateBlock);
  *data = stateBlock.data();
  return static_cast<int>(stateBlock.size());
}

bool CorvaneMonoController::setState(void* data, int size) {
  QDXPresetManager* presets = masterController.getPresetManager();
  if (!presets || !data || size < static_cast<int>(kStateHeadBytes) ||
      std::ranges::find(kForeignStateBytes, size) != kForeignStateBytes.end())
    return false;
  const ByteView block(static_cast<const std::uint8_t*>(data), static_cast<std::size_t>(size));
  // The host may hand back the very block that getState gave it, and applying a state can make a new one.
  const std::int32_t storedView = readWord(block, kViewAt), storedMini = readWord(block, kMiniAt);

  batchOpen = true;
  const bool read = static_cast<bool>(presets->setStateBank(block.subspan(kStateHeadBytes)));
  if (read) sendCurrentSetting();
  batchOpen = false;
  if (!read) return false;

  miniSelection = storedMini;
  if (storedView >= 0) viewSetting = std::min(storedView, 3);
  setInBatch(kViewSetting, viewSetting * 0.33333);
  if (size != kOldLimiterStateBytes) return true;
  setInBatch(kLimiterMode, 0.0);
  setInBatch(kLimiterSmooth, 0.5);
  setInBatch(kLimiterShape, 0.2);
  if (decodeVariant(static_cast<double>(presets->currentRecord().values[kLimiterType])) == 0)
    setInBatch(kLimiterCeiling, 0.8);
  return true;
}

void CorvaneMonoController::sendCurrentSetting() {
  const PresetRecord record = masterController.getPresetManager()->currentRecord();
  for (int id = 0; id < kParameters; ++id)
    if (parameterKind(id) & (kKindAnnounced | kKindStored))
      masterController.setParameter(id, static_cast<double>(record.values[at(id)]));
}

void CorvaneMonoController::setInBatch(int id, double value) {
  batchOpen = true;
  masterController.setParameter(id, value);
  batchOpen = false;
}

}  // namespace corvane
