#pragma once

#include <array>
#include <deque>
#include <memory>
#include <utility>
#include <vector>

#include "control/CorvaneMonoController.h"
#include "control/QDXPresetManager.h"
#include "core/CorvaneMonoEffect.h"
#include "core/ParameterBank.h"
#include "tests/control/Home.h"

namespace corvane::rig {

/// A host with one strip in it: the store of values, the host's own idea of them, which comes back later, and
/// the audio side, which gets what the host holds.
class HostDouble final : public QDXMasterController {
 public:
  explicit HostDouble(Home& userHome) : home(userHome), settings(userHome.settings) {
    factoryPreset(0, values.data(), nullptr, nullptr);
    hostValues = values;
    controller = std::make_unique<CorvaneMonoController>(*this);
    presets = std::make_unique<QDXPresetManager>(*this, home.services);
  }

  // What the strip calls.
  void setParameter(int id, double value) override {
    if (!inCallback) {
      inCallback = true;
      controller->parameterChanged(id, value);
      inCallback = false;
    }
    storeInHost(id, value);
    if (id >= kParameters) commands.emplace_back(id, value);
    if (id < kIdentifiers) values[static_cast<std::size_t>(id)] = value;
  }
  void writeSetting(int id, double value) override { settings.write(id, value); }
  void readSetting(int id, double* value) override { settings.read(id, value); }
  QDXPresetManager* getPresetManager() override { return presets.get(); }
  CorvaneMonoController* getController() override { return controller.get(); }

  // What people and hosts do.

  /// A knob moved in the window, a second after the last one unless told.
  void edit(int id, double value, std::uint32_t afterMs = 1000) {
    home.clock.nowMs += afterMs;
    storeInHost(id, value);
    deliver();
  }
  /// An automation lane: no touch, so the store never hears of it.
  void automate(int id, double value) { hostValues[static_cast<std::size_t>(id)] = value; }
  /// The host brings back what was asked of it.
  void deliver() {
    while (!echoes.empty()) {
      const auto [id, value] = echoes.front();
      echoes.pop_front();
      hostValues[static_cast<std::size_t>(id)] = value;
      if (values[static_cast<std::size_t>(id)] != value) setParameter(id, value);
    }
  }
  /// The packets of the next block.
  void feed(CorvaneMonoEffect& processor) {
    deliver();
    for (int id = 0; id < kParameters; ++id)
      if (parameterKind(id) & kKindAnnounced)
        processor.setParameter(
            id, static_cast<double>(static_cast<float>(hostValues[static_cast<std::size_t>(id)])));
  }

  double operator[](int id) const { return values[static_cast<std::size_t>(id)]; }
  float inMemory(int id) const { return presets->currentRecord().values[static_cast<std::size_t>(id)]; }
  std::vector<std::uint8_t> state() {
    void* data = nullptr;
    const int size = controller->getState(&data);
    const auto* bytes = static_cast<const std::uint8_t*>(data);
    return {bytes, bytes + size};
  }
  void setState(std::vector<std::uint8_t> block) {
    controller->setState(block.data(), static_cast<int>(block.size()));
    deliver();
  }

  Home& home;
  std::array<double, kIdentifiers> values{}, hostValues{};
  std::vector<std::pair<int, double>> commands;
  std::unique_ptr<CorvaneMonoController> controller;
  std::unique_ptr<QDXPresetManager> presets;

 private:
  void storeInHost(int id, double given) {
    if (id > kParameters) return;
    const double value = std::clamp(given, 0.0, 1.0);
    std::erase_if(echoes, [id](const auto& echo) { return echo.first == id; });  // the last request decides
    if (hostValues[static_cast<std::size_t>(id)] != value) echoes.emplace_back(id, value);
    if (parameterKind(id) & kKindStored) presets->noteParameterChange(id, value);
  }

  Settings settings;
  bool inCallback = false;
  std::deque<std::pair<int, double>> echoes;
};

}  // namespace corvane::rig
