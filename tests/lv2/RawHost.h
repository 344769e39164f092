#pragma once

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <lv2/core/lv2.h>
#include <lv2/state/state.h>
#include <lv2/urid/urid.h>

#include <map>
#include <string>
#include <vector>

#include "lv2/Ports.h"
#include "tests/control/Home.h"
#include "tests/rig/RenderGuard.h"

// The plug-in through its entry points alone, as the barest host would call them.

namespace corvane::lv2 {

/// A home of their own for all instances of a test program, so that nothing of the user's is read.
inline void useOwnHome() {
  static const rig::Folder home;
  setenv("HOME", home.path.c_str(), 1);
  setenv("XDG_CONFIG_HOME", (home.path / "config").c_str(), 1);
}

class Binary {
 public:
  Binary() {
    useOwnHome();
    handle = dlopen(LV2_BUNDLE "/corvane.so", RTLD_NOW | RTLD_LOCAL);
    EXPECT_TRUE(handle) << dlerror();
  }
  ~Binary() { dlclose(handle); }
  Binary(const Binary&) = delete;
  Binary& operator=(const Binary&) = delete;
  const LV2_Descriptor* descriptor(std::uint32_t index) const {
    return reinterpret_cast<LV2_Descriptor_Function>(dlsym(handle, "lv2_descriptor"))(index);
  }

 private:
  void* handle = nullptr;
};

/// Maps texts to numbers, as hosts do.
class Uris {
 public:
  LV2_URID id(const std::string& uri) {
    return known.try_emplace(uri, static_cast<LV2_URID>(known.size() + 1)).first->second;
  }
  LV2_URID_Map map{
      this, [](LV2_URID_Map_Handle self, const char* uri) { return static_cast<Uris*>(self)->id(uri); }};
  LV2_Feature feature{LV2_URID__map, &map};

 private:
  std::map<std::string, LV2_URID> known;
};

/// Properties of a saved state.
struct Saved {
  struct Property {
    std::vector<char> bytes;
    LV2_URID type = 0;
  };
  std::map<LV2_URID, Property> properties;

  static LV2_State_Status store(LV2_State_Handle to, std::uint32_t key, const void* value, std::size_t size,
                                std::uint32_t type, std::uint32_t) {
    const char* bytes = static_cast<const char*>(value);
    static_cast<Saved*>(to)->properties[key] = {{bytes, bytes + size}, type};
    return LV2_STATE_SUCCESS;
  }
  static const void* retrieve(LV2_State_Handle from, std::uint32_t key, std::size_t* size,
                              std::uint32_t* type, std::uint32_t* flags) {
    auto& properties = static_cast<Saved*>(from)->properties;
    const auto at = properties.find(key);
    if (at == properties.end()) return nullptr;
    *size = at->second.bytes.size(), *type = at->second.type, *flags = LV2_STATE_IS_POD;
    return at->second.bytes.data();
  }
};

using Floats = std::vector<float>;

/// One instance with every port connected and the controls at their defaults.
class RawStrip {
 public:
  explicit RawStrip(const Binary& binary, double rateHz = 48000.0, bool withKey = false, bool withMap = true)
      : descriptor(*binary.descriptor(withKey)), all(ports()) {
    const LV2_Feature* features[] = {withMap ? &uris.feature : nullptr, nullptr};
    handle = descriptor.instantiate(&descriptor, rateHz, LV2_BUNDLE "/", features);
    for (const ControlPort& port : all.controls) controls.push_back(port.scale.standard);
    meters.assign(all.meters.size(), -999.0f);
    if (!handle) return;
    for (std::size_t k = 0; k < controls.size(); ++k)
      descriptor.connect_port(handle, kFirstControlPort + static_cast<std::uint32_t>(k), &controls[k]);
    for (std::size_t k = 0; k < meters.size(); ++k)
      descriptor.connect_port(handle, all.firstMeter() + static_cast<std::uint32_t>(k), &meters[k]);
    descriptor.connect_port(handle, kLatencyPort, &latency);
  }
  ~RawStrip() {
    if (handle) descriptor.cleanup(handle);
    EXPECT_EQ(violations, 0) << "a run allocated or locked";
  }
  RawStrip(const RawStrip&) = delete;
  RawStrip& operator=(const RawStrip&) = delete;

  float& control(const std::string& symbol) {
    for (std::size_t k = 0; k < controls.size(); ++k)
      if (all.controls[k].symbol == symbol) return controls[k];
    ADD_FAILURE() << "no control " << symbol;
    return controls.front();
  }
  float meter(const std::string& symbol) const {
    for (std::size_t k = 0; k < meters.size(); ++k)
      if (all.meters[k].symbol == symbol) return meters[k];
    ADD_FAILURE() << "no meter " << symbol;
    return 0.0f;
  }

  void connect(const float* in, float* out, const float* key = nullptr) {
    descriptor.connect_port(handle, kInputPort, const_cast<float*>(in));
    descriptor.connect_port(handle, kOutputPort, out);
    descriptor.connect_port(handle, all.key(), const_cast<float*>(key));
  }
  /// Each run is watched: it must neither allocate nor lock.
  void run(std::uint32_t frames) {
    const rig::RenderGuard guard;
    descriptor.run(handle, frames);
    violations += guard.violations();
  }
  void activate() { descriptor.activate(handle); }
  Floats render(const Floats& in, std::size_t block = 512, const float* key = nullptr) {
    return renderInBlocksOf([block] { return block; }, in, key);
  }
  /// `nextLength` tells the frames of each block; 0 is a block as well.
  template <typename NextLength>
  Floats renderInBlocksOf(NextLength nextLength, const Floats& in, const float* key = nullptr) {
    Floats out(in.size(), -99.0f);
    for (std::size_t at = 0; at < in.size();) {
      const std::size_t n = std::min<std::size_t>(nextLength(), in.size() - at);
      connect(in.data() + at, out.data() + at, key ? key + at : nullptr);
      run(static_cast<std::uint32_t>(n));
      at += n;
    }
    return out;
  }

  Saved save() {
    Saved saved;
    EXPECT_EQ(state().save(handle, Saved::store, &saved, 0, nullptr), LV2_STATE_SUCCESS);
    return saved;
  }
  LV2_State_Status restore(Saved saved) {
    return state().restore(handle, Saved::retrieve, &saved, 0, nullptr);
  }
  const LV2_State_Interface& state() const {
    return *static_cast<const LV2_State_Interface*>(descriptor.extension_data(LV2_STATE__interface));
  }

  Uris uris;
  const LV2_Descriptor& descriptor;
  const Ports& all;
  LV2_Handle handle = nullptr;
  Floats controls, meters;
  float latency = -1.0f;
  int violations = 0;
};

/// Bursts of noise and tones at half of full scale: dynamics move, filters ring.
inline Floats programme(std::size_t frames) {
  Floats x(frames);
  std::uint32_t seed = 1;
  for (std::size_t n = 0; n < frames; ++n) {
    seed = seed * 1664525u + 1013904223u;
    const float noise = static_cast<float>(seed >> 8) / 8388608.0f - 1.0f;
    x[n] = n / 2400 % 3 == 2 ? 0.0f : 0.5f * (0.3f * noise + 0.7f * std::sin(0.03f * static_cast<float>(n)));
  }
  return x;
}

}  // namespace corvane::lv2
