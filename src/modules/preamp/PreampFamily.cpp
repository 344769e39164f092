#include "modules/preamp/PreampFamily.h"

#include "modules/PassingModule.h"
#include "modules/preamp/PreampTable.h"

namespace corvane {

namespace {

constexpr std::array kVariants{Variant{1, "Gain"}, Variant{2, "Pre 60s"}, Variant{3, "Pre 70s"}, Variant{4, "Pre 80s"}, Variant{5, "ADC 90s"}};
constexpr std::array kMeters{"Pre:InMeter", "Pre:OutMeter", "Pre:PstGainMeter", "Pre:Automat", "Pre:InSatMeter", "Pre:xm1"};
constexpr std::array kPresets{ModulePreset{"Default", {}}};

}  // namespace

constexpr ModuleFamily kPreampFamily{
    .kind = ModuleKind::preamp,
    .prefix = "Pre",
    .title = "PREAMP",
    .firstInsertIndex = 1,
    .variants = kVariants,
    .rows = preamp::kRows,
    .meters = kMeters,
    .presetLength = 32,
    .presets = kPresets,
    .make = makePassingModule,
};

}  // namespace corvane
