#include <gtest/gtest.h>

#include "modules/preamp/ColourStage.h"
#include "tests/modules/preamp/PlainColour.h"
#include "tests/rig/Signals.h"

namespace corvane::preamp {
namespace {

using namespace rig;

constexpr Colour kColours[] = {Colour::console60s, Colour::console70s, Colour::console80s,
                               Colour::converter90s};

/// Quiet, loud and silent stretches, the two channels unlike each other.
std::pair<Samples, Samples> programme(double rateHz) {
  Samples left = joined(noise(0.01, 0.02, rateHz, 3), sine(110.0, 0.9, 0.05, rateHz));
  left = joined(joined(left, silence(0.02, rateHz)), noise(1.0, 0.02, rateHz, 5));
  Samples right(left.size());
  for (std::size_t n = 0; n < left.size(); ++n) right[n] = left[n] * (n % 700 < 350 ? 0.3 : -1.1);
  return {left, right};
}

struct Setting {
  double drive, hissLevel;
  HissMode mode;
};

TEST(ColourStage, FastFormIsThePlainForm) {
  for (const Colour colour : kColours)
    for (const double rateHz : {44100.0, 48000.0, 384000.0})
      for (const Setting& s : {Setting{1.26, 0.0, HissMode::off},
                               {40.0, 5e-5, HissMode::autoMute},
                               {1265.0, 1.7e-3, HissMode::on}}) {
        const int unit = static_cast<int>(colour) * 3;
        auto fast = std::make_unique<ColourStage>(unit);
        // A converter's hiss keeps the filters of the console configured before, at the rate of that time.
        if (colour == Colour::converter90s) fast->setSampleRate(rateHz);
        fast->setColour(colour);
        fast->setDrive(s.drive), fast->setHissLevel(s.hissLevel), fast->setHissMode(s.mode);
        fast->setSampleRate(rateHz);
        PlainColour plain(unit, colour, rateHz);
        plain.drive = s.drive, plain.hissLevel = s.hissLevel, plain.noiseMode = static_cast<int>(s.mode);
        auto [left, right] = programme(rateHz);
        Samples plainLeft = left, plainRight = right;
        double worst = 0.0;
        for (std::size_t at = 0, n = 0; at < left.size(); at += n) {
          n = std::min<std::size_t>(at % 3 == 0 ? 64 : 17, left.size() - at);
          fast->process(&left[at], &right[at], static_cast<int>(n));
          plain.process(&plainLeft[at], &plainRight[at], static_cast<int>(n));
          for (std::size_t i = at; i < at + n; ++i)
            worst = std::max({worst, std::abs(left[i] - plainLeft[i]), std::abs(right[i] - plainRight[i])});
        }
        // 1e-12: some tens of roundings around full scale, gathered by filters down to 2 Hz
        EXPECT_LT(worst, 1e-12) << "type " << static_cast<int>(colour) << " at " << rateHz << ", drive "
                                << s.drive;
        EXPECT_NEAR(fast->saturation(), plain.satMeter, 1e-13);
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
