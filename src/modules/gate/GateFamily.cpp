#include "modules/gate/GateFamily.h"

#include "modules/gate/GateTable.h"
#include "modules/gate/StripEffectExpander.h"

namespace corvane {

namespace {

constexpr std::array kVariants{Variant{1, "Expander"}, Variant{2, "Gate"}, Variant{3, "Ducker"}};
constexpr std::array kMeters{"Gate:InMeter", "Gate:OutMeter", "Gate:GRMeter", "Gate:xm1"};

constexpr ModulePreset preset(const char* name, double attack, double release, double ratio, double hold,
                              double threshold, double shape, double range, double hpfIn, double hpfFreq,
                              double lpfIn, double lpfFreq) {
  return {name,
          {{gate::kAttack, attack},
           {gate::kRelease, release},
           {gate::kRatio, ratio},
           {gate::kHold, hold},
           {gate::kThreshold, threshold},
           {gate::kShape, shape},
           {gate::kRange, range},
           {gate::kHpfIn, hpfIn},
           {gate::kHpfFreq, hpfFreq},
           {gate::kLpfIn, lpfIn},
           {gate::kLpfFreq, lpfFreq}}};
}

// clang-format off
constexpr std::array kPresets{
    ModulePreset{"Default", {}},
    //     name               attack  release ratio   hold    thresh. shape   range   HPF in, freq  LPF in, freq
    preset("Kick 1",          0.195,  0.6924, 0.5,    0.1682, 0.6157, 0.5,    0.4702, 0.0, 0.0,     1.0, 0.6354),
    preset("Kick 2",          0.3251, 0.7297, 0.5,    0.1682, 0.7244, 0.3994, 0.2611, 0.0, 0.0,     1.0, 0.6654),
    preset("Kick 3",          0.1646, 0.4567, 0.4,    0.5,    0.5,    0.76,   0.5933, 0.0, 0.0,     0.0, 1.0),
    preset("Snare 1",         0.255,  0.365,  0.7225, 0.4517, 0.425,  0.5333, 0.3817, 1.0, 0.0,     1.0, 0.25),
    preset("Snare 2",         0.2515, 0.6093, 0.5,    0.2268, 0.5121, 0.3994, 0.5745, 0.0, 0.0,     1.0, 0.3059),
    preset("Snare @Bottom 1", 0.2515, 0.6093, 0.5,    0.2268, 0.1206, 0.3994, 0.5745, 0.0, 0.0,     1.0, 0.3059),
    preset("Snare @Bottom 2", 0.255,  0.4767, 0.7225, 0.4517, 0.3867, 0.5333, 0.0417, 1.0, 0.0,     1.0, 0.25),
    preset("Hi-Hat 1",        0.0,    0.4125, 0.5897, 0.5624, 0.6781, 0.386,  0.4336, 1.0, 0.2314,  1.0, 0.7893),
    preset("Hi-Hat 2",        0.1,    0.3225, 0.5797, 0.6124, 0.6901, 0.486,  0.5336, 1.0, 0.3821,  1.0, 0.7993),
    preset("XXX",             0.5,    0.5,    0.5,    0.5,    0.5,    0.5,    0.5,    0.5, 0.5,     0.5, 0.5),
};
// clang-format on

std::unique_ptr<StripEffect> make(int parameterBase, int meterBase, int tagBase) {
  return std::make_unique<StripEffectExpander>(parameterBase, meterBase, tagBase);
}

}  // namespace

constexpr ModuleFamily kGateFamily{
    .kind = ModuleKind::gate,
    .prefix = "Gate",
    .title = "GATE",
    .firstInsertIndex = 33,
    .variants = kVariants,
    .rows = gate::kRows,
    .meters = kMeters,
    .presetLength = 32,
    .presets = kPresets,
    .make = make,
};

}  // namespace corvane
