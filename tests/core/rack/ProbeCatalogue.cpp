#include <array>

#include "tests/core/rack/ProbeModules.h"

namespace corvane {

namespace {

constexpr std::array kRows{
    Row{16, "First", 0.25, kContinuous, linear(0.0, 1.0), " ", kNoDisplay},
    Row{17, "Second", 0.75, kContinuous, linear(0.0, 1.0), " ", kNoDisplay},
};
constexpr std::array kMeters{"In", "Out", "Reduction", "Spare"};
constexpr std::array kOne{Variant{1, "One"}};
constexpr std::array kTwo{Variant{1, "One"}, Variant{2, "Two"}};
constexpr std::array kThree{Variant{1, "One"}, Variant{2, "Two"}, Variant{3, "Three"}};

template <int Number>
std::unique_ptr<StripEffect> make(int parameters, int meters, int tags) {
  static constexpr std::array kNames{"pre", "flt", "gate", "comp", "eq", "lim", "mstr", "dee", "deh", "tid"};
  return std::make_unique<probe::ProbeModule>(kNames[Number], parameters, meters, tags);
}

template <int Number>
constexpr ModuleFamily family(ModuleKind kind, int firstInsertIndex, std::span<const Variant> variants) {
  return {kind, "", "", firstInsertIndex, variants, kRows, kMeters, 32, {}, make<Number>};
}

constexpr std::array kFamilies{
    family<0>(ModuleKind::preamp, 1, kThree),  family<1>(ModuleKind::filters, 17, kThree),
    family<2>(ModuleKind::gate, 33, kThree),   family<3>(ModuleKind::compressor, 49, kThree),
    family<4>(ModuleKind::eq, 65, kThree),     family<5>(ModuleKind::limiter, 81, kTwo),
    family<6>(ModuleKind::master, 97, kOne),   family<7>(ModuleKind::special, 113, kOne),
    family<8>(ModuleKind::special, 114, kOne), family<9>(ModuleKind::special, 115, kOne),
};

}  // namespace

std::span<const ModuleFamily* const> moduleFamilies() {
  static const auto table = [] {
    std::array<const ModuleFamily*, kFamilies.size()> made{};
    for (std::size_t k = 0; k < made.size(); ++k) made[k] = &kFamilies[k];
    return made;
  }();
  return table;
}

}  // namespace corvane
