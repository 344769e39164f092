#include "modules/filters/FiltersFamily.h"

#include "modules/PassingModule.h"
#include "modules/filters/FiltersTable.h"

namespace corvane {

namespace {

constexpr std::array kVariants{Variant{1, "Basic Filters"}, Variant{2, "Pro Filters"}, Variant{3, "Filters Ext. s.c."}};
constexpr std::array kMeters{"Flt:InMeter", "Flt:OutMeter", "Flt:xm1", "Flt:xm2"};
constexpr std::array kPresets{ModulePreset{"Default", {}}};

}  // namespace

constexpr ModuleFamily kFiltersFamily{
    .kind = ModuleKind::filters,
    .prefix = "Flt",
    .title = "FILTERS",
    .firstInsertIndex = 17,
    .variants = kVariants,
    .rows = filters::kRows,
    .meters = kMeters,
    .presetLength = 32,
    .presets = kPresets,
    .make = makePassingModule,
};

}  // namespace corvane
