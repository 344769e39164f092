#include "modules/dehummer/DehummerFamily.h"

#include "modules/dehummer/DehummerTable.h"
#include "modules/dehummer/StripEffectDehummer.h"

namespace corvane {

namespace {

using namespace dehummer;

constexpr std::array kVariants{Variant{1, "De-hummer"}};
constexpr std::array kMeters{"In", "Out", "Reduction"};

constexpr double kFull = 0.0;  // -48 dB
constexpr double k50Hz = 0.0, k60Hz = 1.0;

// clang-format off
constexpr std::array kPresets{
    ModulePreset{"Default", {}},
    ModulePreset{"USA basic",       {{kAttenuation, kFull}, {kMains, k60Hz}}},
    ModulePreset{"China basic",     {{kAttenuation, kFull}, {kMains, k50Hz}}},
    ModulePreset{"India basic",     {{kAttenuation, kFull}, {kMains, k50Hz}}},
    ModulePreset{"Japan 1",         {{kAttenuation, kFull}, {kMains, k50Hz}}},
    ModulePreset{"Japan 2",         {{kAttenuation, kFull}, {kMains, k60Hz}}},
    ModulePreset{"Europe basic",    {{kAttenuation, kFull}, {kMains, k50Hz}}},
    ModulePreset{"Australia basic", {{kAttenuation, kFull}, {kMains, k50Hz}}},
    ModulePreset{"Venezuela",       {{kAttenuation, kFull}, {kMains, k60Hz}}},
    ModulePreset{"Nepal",           {{kAttenuation, kFull}, {kMains, k50Hz}}},
};
// clang-format on

std::unique_ptr<StripEffect> make(int parameterBase, int meterBase, int tagBase) {
  return std::make_unique<StripEffectDehummer>(parameterBase, meterBase, tagBase);
}

}  // namespace

constexpr ModuleFamily kDehummerFamily{
    .kind = ModuleKind::special,
    .prefix = "",
    .title = "DE-HUMMER",
    .firstInsertIndex = 114,
    .variants = kVariants,
    .rows = kRows,
    .meters = kMeters,
    .presetLength = kOffset + 1,
    .presets = kPresets,
    .make = make,
};

}  // namespace corvane
