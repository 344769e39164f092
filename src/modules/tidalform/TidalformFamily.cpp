#include "modules/tidalform/TidalformFamily.h"

#include "modules/tidalform/StripEffectTidalform.h"
#include "modules/tidalform/TidalformTable.h"

namespace corvane {

namespace {

using namespace tidalform;

constexpr std::array kVariants{Variant{1, "Tidalform"}};
constexpr std::array kMeters{"In", "Out", "Gain", "Indicator"};

constexpr ModulePreset preset(const char* name, double threshold, double time, double frequency, double above,
                              double below, double q, double transition, double filterType,
                              double controlMode) {
  return {name,
          {{kThreshold, threshold},
           {kTime, time},
           {kFrequency, frequency},
           {kAbove, above},
           {kBelow, below},
           {kQ, q},
           {kTransition, transition},
           {kFilterType, filterType},
           {kControlMode, controlMode}}};
}

// clang-format off
constexpr std::array kPresets{
    ModulePreset{"Default", {}},
    //                            thr   time  freq  above below q     trans type  control
    preset("Acc Gtr Res Cntr 1",  0.51, 0.5 , 0.31, 0.28, 0.5 , 0.57, 0.5 , 0.5 , 0.5),
    preset("Acc Gtr Res Cntr 2",  0.59, 0.5 , 0.23, 0.28, 0.5 , 0.57, 0.5 , 0.5 , 0.5),
    preset("Brighten Up",         0.21, 0.65, 0.62, 0.5 , 0.61, 0.26, 1.0 , 1.0 , 0.5),
    preset("Deessing 1",          0.51, 0.35, 0.85, 0.25, 0.5 , 0.57, 0.5 , 0.5 , 0.5),
    preset("High Shelf Control",  0.5 , 0.2 , 0.77, 0.25, 0.62, 0.51, 0.5 , 1.0 , 0.5),
    preset("Low Extension",       0.21, 0.35, 0.3 , 0.5 , 0.71, 0.26, 1.0 , 0.0 , 0.5),
    preset("Plosive Control",     0.6 , 0.0 , 0.29, 0.0 , 0.5 , 0.26, 0.25, 0.0 , 0.5),
    preset("Snr Springs Ext",     0.5 , 0.0 , 0.6 , 0.31, 0.69, 0.51, 0.5 , 1.0 , 0.5),
    ModulePreset{"Init", {}},
};
// clang-format on

std::unique_ptr<StripEffect> make(int parameterBase, int meterBase, int tagBase) {
  return std::make_unique<StripEffectTidalform>(parameterBase, meterBase, tagBase);
}

}  // namespace

constexpr ModuleFamily kTidalformFamily{
    .kind = ModuleKind::special,
    .prefix = "",
    .title = "TIDALFORM",
    .firstInsertIndex = 115,
    .variants = kVariants,
    .rows = kRows,
    .meters = kMeters,
    .presetLength = kControlMode + 1,
    .presets = kPresets,
    .make = make,
};

}  // namespace corvane
