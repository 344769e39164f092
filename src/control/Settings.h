#pragma once

#include "platform/system/SettingsStore.h"

namespace corvane {

// Ids of the settings that outlive the program.
inline constexpr int kViewSetting = 792;      ///< view mode / 3
inline constexpr int kTooltipsSetting = 847;  ///< 0 or 1
inline constexpr int kZoomSetting = 849;      ///< per cent * 0.001

/// Values 0..1 by id in the user's settings store. [control]
class Settings {
 public:
  explicit Settings(platform::SettingsStore& userStore) : store(userStore) {}
  /// Leaves `value` alone where nothing usable is stored.
  void read(int id, double* value) const;
  /// What cannot be written is lost: nothing is thrown.
  void write(int id, double value) const;

 private:
  platform::SettingsStore& store;
};

}  // namespace corvane
