#include "modules/limiter/LimiterFamily.h"

#include "modules/limiter/LimiterTable.h"
#include "modules/limiter/StripEffectLimiter.h"

namespace corvane {

namespace {

constexpr std::array kVariants{Variant{1, "Opto Lim"}, Variant{2, "VCA Lim"}, Variant{7, "BrickWall"},
                               Variant{12, "Saturator"}};
constexpr std::array kMeters{"Lim:InMeter", "Lim:OutMeter", "Lim:GRMeter", "Lim:xm1"};

constexpr ModulePreset preset(const char* name, double attack, double release, double ceiling, double output,
                              double hpf, double link, double soft) {
  using namespace limiter;
  return {name,
          {{kAttack, attack},
           {kRelease, release},
           {kCeiling, ceiling},
           {kOutput, output},
           {kHpf, hpf},
           {kLink, link},
           {kSoft, soft}}};
}

// clang-format off
constexpr std::array kPresets{
    ModulePreset{"Default", {}},
    //      name                 attack  release ceiling output  HPF     link soft
    preset("Density",            0.4014, 0.2157, 0.44,   0.65,   0.0,    0.0, 1.0),
    preset("Full Bass Control",  0.3471, 0.4375, 0.5,    0.5825, 0.0,    1.0, 1.0),
    preset("Almost Brickwall",   0.0,    0.199,  0.5,    0.5,    0.0,    0.0, 0.0),
    preset("Fat Bass",           0.233,  0.4225, 0.56,   0.65,   0.0,    1.0, 1.0),
    preset("A little smash",     0.375,  0.2283, 0.245,  0.6067, 0.0,    0.0, 0.0),
    preset("Kick It",            0.1579, 0.3652, 0.6867, 0.5,    0.0,    0.0, 0.0),
    preset("Funky",              0.6407, 0.4885, 0.5379, 0.5,    0.431,  0.0, 1.0),
    preset("Group",              0.3154, 0.1881, 0.5316, 0.5,    0.431,  0.0, 1.0),
    preset("Walking Bass",       0.31,   0.6101, 0.2851, 0.6134, 0.4828, 1.0, 1.0),
};
// clang-format on

std::unique_ptr<StripEffect> make(int parameterBase, int meterBase, int tagBase) {
  return std::make_unique<StripEffectLimiter>(parameterBase, meterBase, tagBase);
}

}  // namespace

constexpr ModuleFamily kLimiterFamily{
    .kind = ModuleKind::limiter,
    .prefix = "Lim",
    .title = "LIMITER",
    .firstInsertIndex = 81,
    .variants = kVariants,
    .rows = limiter::kRows,
    .meters = kMeters,
    .presetLength = 32,
    .presets = kPresets,
    .make = make,
};

}  // namespace corvane
