#include "modules/filters/FiltersFamily.h"

#include "modules/filters/FiltersTable.h"
#include "modules/filters/StripEffectFilters.h"

namespace corvane {

namespace {

constexpr std::array kVariants{Variant{1, "Basic Filters"}, Variant{2, "Pro Filters"},
                               Variant{3, "Filters Ext. s.c.", "S.C. Filters"}};
constexpr std::array kMeters{"Flt:InMeter", "Flt:OutMeter", "Flt:xm1", "Flt:xm2"};

constexpr ModulePreset preset(const char* name, double gain, double freq, double q, double type,
                              double hpfFreq, double hpfSlope) {
  return {name,
          {{filters::kParametricGain, gain},
           {filters::kParametricFreq, freq},
           {filters::kParametricQ, q},
           {filters::kParametricType, type},
           {filters::kHpfFreq, hpfFreq},
           {filters::kHpfSlope, hpfSlope}}};
}

// clang-format off
constexpr std::array kPresets{
    ModulePreset{"Default", {}},
    //     name                     gain    freq    Q       type  HPF freq, slope
    preset("Vocal Basic",           0.4583, 0.4337, 0.555,  0.5,  0.301,  1.0),
    preset("Acoustic Gtr Basic",    0.4583, 0.2594, 0.5,    0.5,  0.272,  0.5),
    preset("Electric Guitar Basic", 0.5,    0.159,  0.5,    0.75, 0.199,  0.0),
    preset("Bass Guitar Basic",     0.4583, 0.2917, 0.555,  0.5,  0.1505, 0.0),
    ModulePreset{"Piano Basic", {{filters::kHpfFreq, 0.301}, {filters::kHpfSlope, 0.5}}},
    preset("Horn Basic",            0.4379, 0.5663, 0.5,    1.0,  0.3891, 1.0),
    preset("Snare Basic",           0.5208, 0.3656, 0.4628, 0.5,  0.301,  0.5),
    preset("Kick Basic",            0.5208, 0.2007, 0.4628, 0.5,  0.0,    0.0),
    preset("OverHeads Basic",       0.4583, 0.5663, 0.568,  0.5,  0.5485, 1.0),
    ModulePreset{"XXX", {}},
};
// clang-format on

std::unique_ptr<StripEffect> make(int parameterBase, int meterBase, int tagBase) {
  return std::make_unique<StripEffectFilters>(parameterBase, meterBase, tagBase);
}

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
    .make = make,
};

}  // namespace corvane
