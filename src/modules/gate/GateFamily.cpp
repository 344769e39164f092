#include "modules/gate/GateFamily.h"

#include "modules/PassingModule.h"
#include "modules/gate/GateTable.h"

namespace corvane {

namespace {

constexpr std::array kVariants{Variant{1, "Expander"}, Variant{2, "Gate"}, Variant{3, "Ducker"}};
constexpr std::array kMeters{"Gate:InMeter", "Gate:OutMeter", "Gate:GRMeter", "Gate:xm1"};
constexpr std::array kPresets{ModulePreset{"Default", {}}};

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
    .make = makePassingModule,
};

}  // namespace corvane
