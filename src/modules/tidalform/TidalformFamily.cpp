#include "modules/tidalform/TidalformFamily.h"

#include "modules/PassingModule.h"
#include "modules/tidalform/TidalformTable.h"

namespace corvane {

namespace {

constexpr std::array kVariants{Variant{1, "Tidalform"}};
constexpr std::array kMeters{"In", "Out", "Gain", "Indicator"};
constexpr std::array kPresets{ModulePreset{"Default", {}}};

}  // namespace

constexpr ModuleFamily kTidalformFamily{
    .kind = ModuleKind::special,
    .prefix = "",
    .title = "TIDALFORM",
    .firstInsertIndex = 115,
    .variants = kVariants,
    .rows = tidalform::kRows,
    .meters = kMeters,
    .presetLength = 25,
    .presets = kPresets,
    .make = makePassingModule,
};

}  // namespace corvane
