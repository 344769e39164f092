#include "modules/preamp/HissSource.h"

#include <cmath>
#include <numbers>

#include "core/dsp/FastMath.h"

namespace corvane::preamp {

namespace {

constexpr double kHissFlush = 1e-16;

std::array<NoiseGenerator, 2> seeded(int unit) {
  const UnitRow& row = kUnitRows[static_cast<std::size_t>(unit)];
  return {{{16 * row.seedA, 8 * row.seedB, 2 * row.seedC}, {row.seedA, row.seedB, row.seedC}}};
}

}  // namespace

HissSource::HissSource(int unit)
    : generators{seeded(unit)[0], seeded(unit)[1]},
      tolerances(unitTolerances(unit)),
      gain{tolerances[0].hissGain, tolerances[1].hissGain} {}

void HissSource::configure(const ConsoleRow& console, double sampleRateHz) {
  share = 1.0 - std::exp(-2.0 * std::numbers::pi * console.hissCornerHz / sampleRateHz);
  const auto design = [&](int section, SectionType type, auto rowOfChannel) {
    BiquadCoefficients c[2];
    for (std::size_t channel = 0; channel < 2; ++channel) {
      const SectionRow row = rowOfChannel(tolerances[channel]);
      c[channel] = designSection(type, row.hz, row.q, row.gainDb, sampleRateHz);
    }
    filters.design(section, c[0], c[1]);
  };
  const auto spread = [&](const ChannelTolerance& t, int which) {
    return t.hissPeak[static_cast<std::size_t>((console.firstSpread + which) % 3)];
  };
  filters.clearHistory();
  design(0, SectionType::highShelf, [&](const ChannelTolerance& t) {
    const SectionRow& row = console.hissShelf;
    return SectionRow{row.hz, row.q, row.gainDb * std::sqrt(t.hissShelf)};
  });
  design(1, SectionType::peaking, [&](const ChannelTolerance& t) {
    const SectionRow& row = console.hissPeak1;
    return SectionRow{row.hz * spread(t, 1), row.q * spread(t, 2), row.gainDb * spread(t, 0)};
  });
  design(2, SectionType::peaking, [&](const ChannelTolerance& t) {
    const SectionRow& row = console.hissPeak2;
    return SectionRow{row.hz, row.q * spread(t, 0), row.gainDb * spread(t, 1)};
  });
  design(3, SectionType::peaking, [&](const ChannelTolerance& t) {
    const SectionRow& row = console.hissPeak3;
    return SectionRow{row.hz * spread(t, 0), row.q * spread(t, 1), row.gainDb * spread(t, 2)};
  });
}

void HissSource::reset() {
  state = Pair{};
  filters.clearHistory();
}

/// Generators and one-pole in registers; a call is a frame.
struct HissSource::White {
  White(HissSource& source, double hissLevel)
      : owner(source),
        left(source.generators[0]),
        right(source.generators[1]),
        state(source.state),
        share(source.share),
        level(hissLevel),
        scale(source.scale),
        gain(source.gain) {}
  ~White() { owner.generators[0] = left, owner.generators[1] = right, owner.state = state; }

  [[gnu::always_inline]] Pair operator()() {
    const Pair white = 2.0 * Pair{left.next(), right.next()} - 1.0;
    state = flushed(state + (white - state) * share, kHissFlush);
    return state * level * scale * gain;
  }

  HissSource& owner;
  NoiseGenerator left, right;
  Pair state;
  const double share, level, scale;
  const Pair gain;
};

CORVANE_WIDE_LOOPS void HissSource::draw(Pair* hiss, int frames, double level) {
  White white(*this, level);
  for (int i = 0; i < frames; ++i) hiss[i] = white();
}

CORVANE_WIDE_LOOPS void HissSource::drawShaped(Pair* hiss, int frames, double level) {
  White white(*this, level);
  filters.run(white, hiss, frames);
}

}  // namespace corvane::preamp
