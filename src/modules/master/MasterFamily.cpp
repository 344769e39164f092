#include "modules/master/MasterFamily.h"

#include "modules/master/MasterTable.h"
#include "modules/master/StripEffectOutput.h"

namespace corvane {

namespace {

constexpr std::array kVariants{Variant{1, "Master Control"}};
constexpr std::array kMeters{"Mstr:InMeter", "Mstr:OutMeter", "Mstr:Peak L", "Mstr:Peak R",
                             "Mstr:RMS L",   "Mstr:RMS R",    "Mstr:xm1",    "Mstr:xm2",
                             "Mstr:xm3",     "Mstr:xm4",      "Mstr:xm5",    "Mstr:xm6"};
constexpr std::array kPresets{ModulePreset{"Default", {}}};
constexpr int kPresetLength = master::kMeasurementPoint + 1;

std::unique_ptr<StripEffect> make(int parameterBase, int meterBase, int tagBase) {
  return std::make_unique<StripEffectOutput>(parameterBase, meterBase, tagBase);
}

}  // namespace

constexpr ModuleFamily kMasterFamily{
    .kind = ModuleKind::master,
    .prefix = "Mstr",
    .title = "CONTROL",
    .firstInsertIndex = 97,
    .variants = kVariants,
    .rows = master::kRows,
    .meters = kMeters,
    .presetLength = kPresetLength,
    .presets = kPresets,
    .make = make,
};

}  // namespace corvane
