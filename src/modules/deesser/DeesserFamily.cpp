#include "modules/deesser/DeesserFamily.h"

#include "modules/deesser/DeesserTable.h"
#include "modules/deesser/StripEffectDeesser.h"

namespace corvane {

namespace {

using namespace deesser;

constexpr std::array kVariants{Variant{1, "De-esser"}};
constexpr std::array kMeters{"In", "Out", "Reduction"};

// clang-format off
constexpr std::array kPresets{
    ModulePreset{"Default", {}},
    ModulePreset{"Voice 1",          {{kFrequency, 0.8},    {kResonance, 0.97}}},
    ModulePreset{"Voice 2",          {{kFrequency, 0.72}}},
    ModulePreset{"Voice 3",          {{kFrequency, 0.5936}, {kResonance, 0.6367}, {kSensitivity, 0.4033}, {kRange, 0.3484}, {kRatio, 0.0}, {kMode, 0.0}}},
    ModulePreset{"Wind 1",           {{kFrequency, 0.4467}, {kResonance, 0.75},   {kSensitivity, 0.6867}, {kRange, 0.4967}, {kRatio, 0.0}, {kMode, 1.0}}},
    ModulePreset{"Wind 2",           {{kFrequency, 0.5617}, {kResonance, 0.375},  {kSensitivity, 0.7317}, {kRange, 0.535},  {kRatio, 0.0}, {kMode, 1.0}}},
    ModulePreset{"Drum Resonance 1", {{kFrequency, 0.4934}, {kResonance, 0.6784}, {kSensitivity, 0.87},   {kRange, 0.4983}, {kRatio, 1.0}, {kMode, 1.0}}},
    ModulePreset{"Drum Resonance 2", {{kFrequency, 0.57},   {kResonance, 0.6784}, {kSensitivity, 0.87},   {kRange, 0.4983}, {kRatio, 1.0}, {kMode, 1.0}}},
    ModulePreset{"Drum Resonance 3", {{kFrequency, 0.5393}, {kResonance, 0.6292}, {kSensitivity, 0.5901}, {kRange, 0.5823}, {kRatio, 0.0}, {kMode, 0.0}}},
    ModulePreset{"Hi-Hat",           {{kFrequency, 0.6984}, {kResonance, 0.6784}, {kSensitivity, 0.6867}, {kRange, 0.29},   {kRatio, 1.0}, {kMode, 1.0}}},
};
// clang-format on

std::unique_ptr<StripEffect> make(int parameterBase, int meterBase, int tagBase) {
  return std::make_unique<StripEffectDeesser>(parameterBase, meterBase, tagBase);
}

}  // namespace

constexpr ModuleFamily kDeesserFamily{
    .kind = ModuleKind::special,
    .prefix = "",
    .title = "DE-ESSER",
    .firstInsertIndex = 113,
    .variants = kVariants,
    .rows = kRows,
    .meters = kMeters,
    .presetLength = kMode + 1,
    .presets = kPresets,
    .make = make,
};

}  // namespace corvane
