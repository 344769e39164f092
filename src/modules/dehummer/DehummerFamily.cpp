#include "modules/dehummer/DehummerFamily.h"

#include "modules/PassingModule.h"
#include "modules/dehummer/DehummerTable.h"

namespace corvane {

namespace {

constexpr std::array kVariants{Variant{1, "De-hummer"}};
constexpr std::array kMeters{"In", "Out", "Reduction"};
constexpr std::array kPresets{ModulePreset{"Default", {}}};

}  // namespace

constexpr ModuleFamily kDehummerFamily{
    .kind = ModuleKind::special,
    .prefix = "",
    .title = "DE-HUMMER",
    .firstInsertIndex = 114,
    .variants = kVariants,
    .rows = dehummer::kRows,
    .meters = kMeters,
    .presetLength = 21,
    .presets = kPresets,
    .make = makePassingModule,
};

}  // namespace corvane
