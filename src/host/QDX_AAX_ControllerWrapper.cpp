#include "host/QDX_AAX_ControllerWrapper.h"

#include <algorithm>

#include "control/FactoryBank.h"
#include "control/Settings.h"
#include "host/QDX_QcMN_1200_AAX_Parameters_Wrapper.h"

namespace corvane::host {

namespace {
constexpr double kNothing = -1.0;
}

QDX_AAX_ControllerWrapper::QDX_AAX_ControllerWrapper(QDX_QcMN_1200_AAX_Parameters_Wrapper& owner,
                                                     const platform::Services& services)
    : parameters(owner), machine(services) {
  for (int id = 0; id < kIdentifiers; ++id) values[static_cast<std::size_t>(id)] = parameterDefault(id);
  factoryPreset(0, values.data(), nullptr, nullptr);
  pending.fill(kNothing);
  controller = std::make_unique<CorvaneMonoController>(*this);
  presetManager = std::make_unique<QDXPresetManager>(*this, services);
}

QDX_AAX_ControllerWrapper::~QDX_AAX_ControllerWrapper() {
  controller.reset();  // before the presets that it works on
  presetManager.reset();
}

// The controller reads and writes while the presets are still to be made or could not be.
void QDX_AAX_ControllerWrapper::readSetting(int id, double* value) {
  Settings(machine.settings).read(id, value);
}
void QDX_AAX_ControllerWrapper::writeSetting(int id, double value) {
  Settings(machine.settings).write(id, value);
}

void QDX_AAX_ControllerWrapper::setParameter(int id, double value) {
  if (!inCallback) {
    inCallback = true;
    controller->parameterChanged(id, value);
    inCallback = false;
  }
  storeInHost(id, value);
  send(id, value);
}

void QDX_AAX_ControllerWrapper::send(int id, double value) {
  if (id < 0 || id >= kIdentifiers) return;
  const auto at = static_cast<std::size_t>(id);
  if (id >= kParameters) {
    pending[at] = value;
    pendingDirty = true;
  }
  values[at] = value;
}

void QDX_AAX_ControllerWrapper::storeInHost(int id, double given) {
  if (id < 0 || id > kParameters) return;
  const double value = std::clamp(given, 0.0, 1.0);
  if (AAX_IParameter* parameter = parameters.parameterOf(id)) {
    // only a value that differs comes back, so only such a one belongs to the batch
    if (countingBatch && value != parameter->GetNormalizedValue()) ++batchCount;
    parameter->Touch();
    parameter->SetNormalizedValue(value);
    parameter->Release();
  }
  if ((parameterKind(id) & kKindStored) == 0) return;
  if (echoBatch)
    batchIds.push_back(id);
  else
    presetManager->noteParameterChange(id, value);
}

void QDX_AAX_ControllerWrapper::endBatch() {
  echoExpected = 0;
  echoBatch = false;
  // Memory and undo hear of the whole batch at once: it is one step, and none of it is lost.
  for (const int id : batchIds) presetManager->noteParameterChange(id, this->value(id));
  batchIds.clear();
}

void QDX_AAX_ControllerWrapper::editorSetParameter(int id, double value) {
  if (id == kOpenBatchCommand) {
    echoBatch = countingBatch = true;
    batchCount = echoCount = 0;
  } else if (id == kCloseBatchCommand) {
    countingBatch = false;
    echoExpected = batchCount;
    if (echoExpected == 0) endBatch();  // nothing on its way
  } else if (id >= 0 && id < kParameters) {
    storeInHost(id, value);
    return;
  }
  setParameter(id, value);
}

void QDX_AAX_ControllerWrapper::hostValueChanged(int id, double value) {
  if (echoExpected < 1) {
    // What a state, a preset or a rule has stored comes back as well: no rule may answer it a second time, or
    // the Type of a preset would switch off the Monitor of the same preset.
    if (value != this->value(id)) setParameter(id, value);
    return;
  }
  if (echoCount == 0) setParameter(kOpenBatchCommand, 1.0);
  setParameter(id, value);
  if (++echoCount < echoExpected) return;
  setParameter(kCloseBatchCommand, 1.0);
  endBatch();
}

bool QDX_AAX_ControllerWrapper::takePending(double* commands) {
  if (!pendingDirty) return false;
  std::copy(pending.begin() + kParameters, pending.end(), commands);
  pending.fill(kNothing);
  pendingDirty = false;
  return true;
}

}  // namespace corvane::host
