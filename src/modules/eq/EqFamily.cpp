#include "modules/eq/EqFamily.h"

#include "modules/PassingModule.h"
#include "modules/eq/EqTable.h"

namespace corvane {

namespace {

constexpr std::array kVariants{Variant{1, "Bellform"}, Variant{2, "Lumenband"}, Variant{3, "Tonbox"}};
constexpr std::array kMeters{"EQ:InMeter", "EQ:OutMeter", "EQ:xm1", "EQ:xm2"};
constexpr std::array kPresets{ModulePreset{"Default", {}}};

}  // namespace

constexpr ModuleFamily kEqFamily{
    .kind = ModuleKind::eq,
    .prefix = "EQ",
    .title = "EQ",
    .firstInsertIndex = 65,
    .variants = kVariants,
    .rows = eq::kRows,
    .meters = kMeters,
    .presetLength = 48,
    .presets = kPresets,
    .make = makePassingModule,
};

}  // namespace corvane
