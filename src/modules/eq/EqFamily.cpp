#include "modules/eq/EqFamily.h"

#include "modules/eq/EqPresets.h"
#include "modules/eq/EqTable.h"
#include "modules/eq/StripEffectEq.h"

namespace corvane {

namespace {

constexpr std::array kVariants{Variant{1, "Bellform"}, Variant{2, "Lumenband"}, Variant{3, "Tonbox"}};
constexpr std::array kMeters{"EQ:InMeter", "EQ:OutMeter", "EQ:xm1", "EQ:xm2"};

std::unique_ptr<StripEffect> make(int parameterBase, int meterBase, int tagBase) {
  return std::make_unique<StripEffectEq>(parameterBase, meterBase, tagBase);
}

}  // namespace

constexpr ModuleFamily kEqFamily{
    .kind = ModuleKind::eq,
    .prefix = "EQ",
    .title = "EQ",
    .firstInsertIndex = 65,
    .variants = kVariants,
    .rows = eq::kRows,
    .meters = kMeters,
    .presetLength = 48,
    .presets = eq::kPresets,
    .make = make,
};

}  // namespace corvane
