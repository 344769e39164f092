#include "modules/preamp/PreampFamily.h"

#include "modules/preamp/PreampTable.h"
#include "modules/preamp/StripEffectInput.h"

namespace corvane {

namespace {

using namespace preamp;

constexpr std::array kVariants{Variant{1, "Gain"}, Variant{2, "Pre 60s"}, Variant{3, "Pre 70s"},
                               Variant{4, "Pre 80s"}, Variant{5, "ADC 90s"}};
constexpr std::array kMeters{"Pre:InMeter", "Pre:OutMeter",   "Pre:PstGainMeter",
                             "Pre:Automat", "Pre:InSatMeter", "Pre:xm1"};

constexpr PresetValue kLearning{kAutoIn, 1.0}, kAtMinus12{kRefLevel, 0.6}, kUpAndDown{kAutoLevelMode, 1.0};
constexpr PresetValue kUncoloured{kAnalog, 0.0};
constexpr PresetValue kSoft{kDrive, 0.3333}, kSaturated{kDrive, 0.7333}, kDriven{kDrive, 1.0};
constexpr PresetValue kHissFollows{kNoiseIn, 0.5}, kHissAtMinus80{kNoiseLevel, 0.6667};

constexpr std::array kPresets{
    ModulePreset{"Default", {}},
    ModulePreset{"Clean", {kUncoloured}},
    ModulePreset{"Soft", {kSoft}},
    ModulePreset{"Saturated", {kSaturated}},
    ModulePreset{"Driven", {kDriven}},
    ModulePreset{"Analog", {kSaturated, kHissFollows, kHissAtMinus80}},
    ModulePreset{"Clean [-18dB]", {kLearning, kAtMinus12, kUpAndDown, kUncoloured}},
    ModulePreset{"Soft [-18dB]", {kLearning, kAtMinus12, kUpAndDown, kSoft}},
    ModulePreset{"Saturated [-18dB]", {kLearning, kAtMinus12, kUpAndDown, kSaturated}},
    ModulePreset{"Driven [-18dB]", {kLearning, kAtMinus12, kUpAndDown, kDriven}},
    ModulePreset{"Analog [-18dB]",
                 {kLearning, kAtMinus12, kUpAndDown, kSaturated, kHissFollows, kHissAtMinus80}},
};

std::unique_ptr<StripEffect> make(int parameterBase, int meterBase, int tagBase) {
  return std::make_unique<StripEffectInput>(parameterBase, meterBase, tagBase);
}

}  // namespace

constexpr ModuleFamily kPreampFamily{
    .kind = ModuleKind::preamp,
    .prefix = "Pre",
    .title = "PREAMP",
    .firstInsertIndex = 1,
    .variants = kVariants,
    .rows = kRows,
    .meters = kMeters,
    .presetLength = kParameterSpan,
    .presets = kPresets,
    .make = make,
};

}  // namespace corvane
