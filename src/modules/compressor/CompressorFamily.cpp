#include "modules/compressor/CompressorFamily.h"

#include "modules/PassingModule.h"
#include "modules/compressor/CompressorTable.h"

namespace corvane {

namespace {

constexpr std::array kVariants{Variant{1, "Opto Clamper"}, Variant{2, "FET Clamper"}, Variant{3, "VCA Clamper"}};
constexpr std::array kMeters{"Comp:InMeter", "Comp:OutMeter", "Comp:GRMeter", "Comp:xm1"};
constexpr std::array kPresets{ModulePreset{"Default", {}}};

}  // namespace

constexpr ModuleFamily kCompressorFamily{
    .kind = ModuleKind::compressor,
    .prefix = "Comp",
    .title = "COMPRESSOR",
    .firstInsertIndex = 49,
    .variants = kVariants,
    .rows = compressor::kRows,
    .meters = kMeters,
    .presetLength = 32,
    .presets = kPresets,
    .make = makePassingModule,
};

}  // namespace corvane
