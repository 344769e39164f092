#include <lv2/core/lv2.h>
#include <lv2/core/lv2_util.h>
#include <lv2/log/log.h>
#include <lv2/log/logger.h>

#include <exception>
#include <memory>

#include "lv2/Effect.h"
#include "lv2/Ports.h"
#include "lv2/State.h"
#include "lv2/Strip.h"

// The functions by which an LV2 host knows the library. Nothing is thrown across them.

namespace corvane::lv2 {

namespace {

struct Held {
  Strip strip;
  State state;
};
Held& heldBy(LV2_Handle handle) { return *static_cast<Held*>(handle); }

LV2_Handle make(const char* bundle, double rateHz, const LV2_Feature* const* features, bool withKey) {
  // without the host's log, a logger writes to the error stream
  auto* log = static_cast<LV2_Log_Log*>(lv2_features_data(features, LV2_LOG__log));
  auto* map = static_cast<LV2_URID_Map*>(lv2_features_data(features, LV2_URID__map));
  LV2_Log_Logger logger;
  lv2_log_logger_init(&logger, map, map ? log : nullptr);
  const auto refuse = [&logger](const char* why) -> LV2_Handle {
    lv2_log_error(&logger, "QDX Corvane Mono: %s\n", why);
    return nullptr;
  };
  if (!bundle) return refuse("the host does not say where the bundle is");
  try {
    return new Held{Strip(sharedEffect(bundle), rateHz, withKey), State(map)};
  } catch (const std::exception& error) {
    return refuse(error.what());
  } catch (...) {
    return refuse("could not be made");
  }
}

LV2_Handle instantiateMono(const LV2_Descriptor*, double rateHz, const char* bundle,
                           const LV2_Feature* const* features) {
  return make(bundle, rateHz, features, false);
}
LV2_Handle instantiateSideChain(const LV2_Descriptor*, double rateHz, const char* bundle,
                                const LV2_Feature* const* features) {
  return make(bundle, rateHz, features, true);
}

void connectPort(LV2_Handle handle, std::uint32_t port, void* location) {
  heldBy(handle).strip.connect(port, location);
}
void activate(LV2_Handle handle) { heldBy(handle).strip.activate(); }
void run(LV2_Handle handle, std::uint32_t frames) { heldBy(handle).strip.run(frames); }
void deactivate(LV2_Handle) {}
void cleanup(LV2_Handle handle) { delete &heldBy(handle); }

LV2_State_Status save(LV2_Handle handle, LV2_State_Store_Function store, LV2_State_Handle to, std::uint32_t,
                      const LV2_Feature* const*) try {
  return heldBy(handle).state.save(heldBy(handle).strip, store, to);
} catch (...) {
  return LV2_STATE_ERR_UNKNOWN;
}

LV2_State_Status restore(LV2_Handle handle, LV2_State_Retrieve_Function retrieve, LV2_State_Handle from,
                         std::uint32_t, const LV2_Feature* const*) try {
  return heldBy(handle).state.restore(heldBy(handle).strip, retrieve, from);
} catch (...) {
  return LV2_STATE_ERR_UNKNOWN;
}

const void* extensionData(const char* uri) {
  static constexpr LV2_State_Interface kState{save, restore};
  return std::string_view(uri) == LV2_STATE__interface ? &kState : nullptr;
}

constexpr LV2_Descriptor kDescriptors[] = {
    {kPluginUri, instantiateMono, connectPort, activate, run, deactivate, cleanup, extensionData},
    {kSideChainPluginUri, instantiateSideChain, connectPort, activate, run, deactivate, cleanup,
     extensionData},
};

}  // namespace

}  // namespace corvane::lv2

extern "C" __attribute__((visibility("default"))) const LV2_Descriptor* lv2_descriptor(std::uint32_t index) {
  using corvane::lv2::kDescriptors;
  return index < std::size(kDescriptors) ? &kDescriptors[index] : nullptr;
}
