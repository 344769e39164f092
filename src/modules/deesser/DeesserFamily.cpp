#include "modules/deesser/DeesserFamily.h"

#include "modules/PassingModule.h"
#include "modules/deesser/DeesserTable.h"

namespace corvane {

namespace {

constexpr std::array kVariants{Variant{1, "De-esser"}};
constexpr std::array kMeters{"In", "Out", "Reduction"};
constexpr std::array kPresets{ModulePreset{"Default", {}}};

}  // namespace

constexpr ModuleFamily kDeesserFamily{
    .kind = ModuleKind::special,
    .prefix = "",
    .title = "DE-ESSER",
    .firstInsertIndex = 113,
    .variants = kVariants,
    .rows = deesser::kRows,
    .meters = kMeters,
    .presetLength = 22,
    .presets = kPresets,
    .make = makePassingModule,
};

}  // namespace corvane
