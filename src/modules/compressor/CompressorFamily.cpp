#include "modules/compressor/CompressorFamily.h"

#include "modules/compressor/CompressorTable.h"
#include "modules/compressor/StripEffectCompressor.h"

namespace corvane {

namespace {

constexpr std::array kVariants{Variant{1, "Opto Clamper"}, Variant{2, "FET Clamper"},
                               Variant{3, "VCA Clamper"}};
constexpr std::array kMeters{"Comp:InMeter", "Comp:OutMeter", "Comp:GRMeter", "Comp:xm1"};

constexpr ModulePreset preset(const char* name, double attack, double release, double threshold, double ratio,
                              double mix, double makeupGain, double hpf, double link) {
  return {name,
          {{compressor::kAttack, attack},
           {compressor::kRelease, release},
           {compressor::kThreshold, threshold},
           {compressor::kRatio, ratio},
           {compressor::kMix, mix},
           {compressor::kMakeupGain, makeupGain},
           {compressor::kHpf, hpf},
           {compressor::kLink, link}}};
}

// clang-format off
constexpr std::array kPresets{
    ModulePreset{"Default", {}},
    //     name            attack  release threshold ratio   mix   makeup HPF  link
    preset("Soft comp",    0.3333, 0.301,  0.74,     0.1882, 1.0,  0.15,  0.0, 1.0),
    preset("Density",      0.2594, 0.0536, 0.68,     0.5,    1.0,  0.225, 0.5, 1.0),
    preset("Master Track", 0.159,  0.301,  0.68,     0.7249, 0.75, 0.3,   1.0, 1.0),
    preset("Fast Limit",   0.1003, 0.301,  0.62,     0.856,  1.0,  0.45,  0.0, 1.0),
    preset("Hard Limit",   0.0,    0.301,  0.62,     1.0,    1.0,  0.45,  0.0, 1.0),
    preset("Slow Limit",   0.159,  0.5509, 0.68,     0.856,  1.0,  0.375, 0.0, 1.0),
    preset("Squeezer",     0.159,  0.5509, 0.44,     0.856,  1.0,  0.45,  1.0, 1.0),
    preset("Destructor",   0.0,    0.0,    0.56,     0.921,  1.0,  0.6,   0.0, 1.0),
    preset("Parallel",     0.3,    0.4,    0.62,     0.856,  0.5,  0.45,  0.5, 1.0),
};
// clang-format on

std::unique_ptr<StripEffect> make(int parameterBase, int meterBase, int tagBase) {
  return std::make_unique<StripEffectCompressor>(parameterBase, meterBase, tagBase);
}

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
    .make = make,
};

}  // namespace corvane
