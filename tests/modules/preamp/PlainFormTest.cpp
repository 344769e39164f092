#include <gtest/gtest.h>

#include "modules/preamp/ColourStage.h"
#include "tests/modules/preamp/PlainColour.h"
#include "tests/rig/Signals.h"

namespace corvane::preamp {
namespace {

using namespace rig;

constexpr Colour kColours[] = {Colour::console60s, Colour::console70s, Colour::console80s,
                               Colour::converter90s};

/// Faint (where flushes act), quiet, loud and silent stretches, the two channels unlike each other.
std::pair<Samples, Samples> programme(double rateHz) {
  Samples left = joined(noise(1e-12, 0.01, rateHz, 2), noise(0.01, 0.02, rateHz, 3));
  left = joined(left, sine(110.0, 0.9, 0.05, rateHz));
  left = joined(joined(left, silence(0.02, rateHz)), noise(1.0, 0.02, rateHz, 5));
  Samples right(left.size());
  for (std::size_t n = 0; n < left.size(); ++n) right[n] = left[n] * (n % 700 < 350 ? 0.3 : -1.1);
  return {left, right};
}

struct Setting {
  double drive, hissLevel;
  HissMode mode;
};

/// Both forms of one unit in the same setting, fed block by block.
struct Rivals {
  Rivals(int unit, Colour colour, double rateHz, const Setting& s)
      : fast(std::make_unique<ColourStage>(unit)), plain(unit, colour, rateHz) {
    if (colour == Colour::converter90s) fast->setSampleRate(rateHz);  // as "Pre 70s", whose hiss it keeps
    fast->setColour(colour);
    fast->setDrive(s.drive), fast->setHissLevel(s.hissLevel), fast->setHissMode(s.mode);
    fast->setSampleRate(rateHz);
    plain.drive = s.drive, plain.hissLevel = s.hissLevel, plain.noiseMode = static_cast<int>(s.mode);
  }
  void setColour(Colour colour) { fast->setColour(colour), plain.setColour(colour); }

  /// Largest difference over both channels, as a share of the largest sample.
  double difference(Samples left, Samples right) {
    constexpr std::size_t kBlocks[] = {64, 17, 1, 64, 2, 4, 64, 3, 5};
    Samples plainLeft = left, plainRight = right;
    double worst = 0.0;
    for (std::size_t at = 0, n = 0, turn = 0; at < left.size(); at += n) {
      n = std::min(kBlocks[turn++ % std::size(kBlocks)], left.size() - at);
      fast->process(&left[at], &right[at], static_cast<int>(n));
      plain.process(&plainLeft[at], &plainRight[at], static_cast<int>(n));
      for (std::size_t i = at; i < at + n; ++i)
        worst = std::max({worst, std::abs(left[i] - plainLeft[i]), std::abs(right[i] - plainRight[i])});
    }
    return worst / peak(plainLeft);
  }

  std::unique_ptr<ColourStage> fast;
  PlainColour plain;
};

TEST(ColourStage, FastFormIsThePlainForm) {
  for (const Colour colour : kColours)
    for (const double rateHz : {44100.0, 48000.0, 384000.0})
      for (const Setting& s : {Setting{1.26, 0.0, HissMode::off},
                               {40.0, 5e-5, HissMode::autoMute},
                               {1265.0, 1.7e-3, HissMode::on}}) {
        Rivals rivals(static_cast<int>(colour) * 3, colour, rateHz, s);
        const auto [left, right] = programme(rateHz);
        // The logarithms of the push-pull stage round differently, by some 1e-15, and the bell at 33 Hz at
        // 384 kHz makes up to a million times as much of each rounding; the others have the same operations
        // in the same order.
        EXPECT_LE(rivals.difference(left, right), colour == Colour::console60s ? 1e-10 : 0.0)
            << "type " << static_cast<int>(colour) << " at " << rateHz << ", drive " << s.drive;
        EXPECT_NEAR(rivals.fast->saturation(), rivals.plain.satMeter, 1e-13);
      }
}

TEST(ColourStage, ChangesItsModelInTheMiddleOfLoudSoundAndKeepsAllButTheFilters) {
  Rivals rivals(7, Colour::console60s, 48000.0, {300.0, 1e-3, HissMode::on});
  const auto [left, right] = programme(48000.0);
  for (const Colour colour : {Colour::console70s, Colour::console70s, Colour::console80s,
                              Colour::converter90s, Colour::console60s, Colour::console80s}) {
    rivals.setColour(colour);
    EXPECT_LE(rivals.difference(left, right), 1e-12) << "type " << static_cast<int>(colour);
  }
}

// 1e-15: two roundings of the polynomial and those of its coefficients; worst seen 3e-16.
TEST(PushPullCurves, AreTheirLawsInTablesToARounding) {
  const auto law = [](auto arc, long double scale, long double x) {
    const long double p = 8.0L / std::pow(16.0L, 0.6L), w = std::pow(p, 0.125L);
    return std::pow(arc(std::pow(scale * x, p) * w) / w, 1.0L / p) / scale / x;
  };
  const auto atan = [](long double y) { return std::atan(y); };
  const auto tanh = [](long double y) { return std::tanh(y); };
  const long double p = 8.0L / std::pow(16.0L, 0.6L);
  for (double x = 1e-9; x < 2000.0; x *= 1.00137) {
    const auto rising = static_cast<double>(law(atan, 1.22L - p / 8.0L, x));
    const auto falling = static_cast<double>(law(tanh, 1.1L - p / 8.0L, x));
    ASSERT_NEAR(risingGain()(x) / rising, 1.0, 1e-15) << x;
    ASSERT_NEAR(fallingGain()(x) / falling, 1.0, 1e-15) << x;
  }
}

TEST(Converter, DropsTheBitsThatTheFloatingStepDropsOnEveryCode) {
  for (int code = 0; code < 65536; ++code) {
    const int level = (code - 32768) * 4;
    ASSERT_EQ(dropLowBits(level), PlainColour::plainFloatingStep(level)) << level;
  }
}

}  // namespace
}  // namespace corvane::preamp
