#include "modules/limiter/LimiterFamily.h"

#include "modules/PassingModule.h"
#include "modules/limiter/LimiterTable.h"

namespace corvane {

namespace {

constexpr std::array kVariants{Variant{1, "Opto Lim"}, Variant{2, "VCA Lim"}, Variant{7, "BrickWall"}, Variant{12, "Saturator"}};
constexpr std::array kMeters{"Lim:InMeter", "Lim:OutMeter", "Lim:GRMeter", "Lim:xm1"};
constexpr std::array kPresets{ModulePreset{"Default", {}}};

}  // namespace

constexpr ModuleFamily kLimiterFamily{
    .kind = ModuleKind::limiter,
    .prefix = "Lim",
    .title = "LIMITER",
    .firstInsertIndex = 81,
    .variants = kVariants,
    .rows = limiter::kRows,
    .meters = kMeters,
    .presetLength = 32,
    .presets = kPresets,
    .make = makePassingModule,
};

}  // namespace corvane
