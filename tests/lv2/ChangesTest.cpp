#include <cmath>
#include <random>

#include "core/Rack.h"
#include "tests/lv2/RawHost.h"

// What a mix with automation on every lane does. The harm: a change that clicks louder than the sound.

namespace corvane::lv2 {
namespace {

constexpr double kRateHz = 48000.0;
constexpr float kAmplitude = 0.1f;
constexpr std::size_t kFrames = 2880;

/// 100 Hz, six whole periods; its own steps are 0.0013.
Floats tone() {
  Floats x(kFrames);
  for (std::size_t n = 0; n < x.size(); ++n) x[n] = kAmplitude * std::sin(0.0130899694f * static_cast<float>(n));
  return x;
}

class Lv2Changes : public ::testing::TestWithParam<std::size_t> {
 protected:
  /// Largest step of the output while `change` runs every so many samples.
  template <typename Change>
  float largestStep(RawStrip& strip, Change change) {
    strip.render(x);  // settled
    float step = 0.0f, before = strip.render(x).back();
    Floats y(kFrames);
    for (std::size_t n = 0; n < kFrames; n += GetParam()) {
      change();
      const std::size_t frames = std::min(GetParam(), kFrames - n);
      strip.connect(&x[n], &y[n]);
      strip.run(static_cast<std::uint32_t>(frames));
      for (std::size_t k = n; k < n + frames; ++k) {
        if (!std::isfinite(y[k])) return HUGE_VALF;
        step = std::max(step, std::abs(y[k] - before));
        before = y[k];
      }
    }
    return step;
  }

  static void fillFixedPlaces(RawStrip& strip) {
    for (const char* type : {"gate_type", "lim_type", "mstr_type"}) strip.control(type) = 1.0f;
  }

  Binary binary;
  const Floats x = tone();
};

TEST_P(Lv2Changes, AControlThatMovesByATenthIsNoClick) {
  RawStrip strip(binary, kRateHz);
  fillFixedPlaces(strip);
  for (std::size_t k = 0; k < ports().controls.size(); ++k) {
    const ControlPort& port = ports().controls[k];
    const auto form = port.scale.form;
    if (form == Scale::Form::toggle || form == Scale::Form::choice || port.symbol.starts_with("ins"))
      continue;
    const float here = port.scale.standard;
    const double p = port.scale.normalised(here);
    const float there = port.scale.physical(p < 0.5 ? p + 0.1 : p - 0.1);
    bool away = false;
    EXPECT_LE(largestStep(strip, [&] { strip.controls[k] = (away = !away) ? there : here; }), 0.01f)
        << port.symbol;
    strip.controls[k] = here;
  }
}

// Modules change places at once, without a fade: the step is what they make of the sound, not silence.
TEST_P(Lv2Changes, AnyOrderOfTheRackStaysWithinTheSound) {
  RawStrip strip(binary, kRateHz);
  fillFixedPlaces(strip);
  std::vector<std::size_t> positions;
  for (std::size_t k = 0; k < ports().controls.size(); ++k)
    if (ports().controls[k].symbol.ends_with("_position")) positions.push_back(k);
  ASSERT_EQ(positions.size(), std::size_t{kPlaces});
  std::mt19937 random(3);
  EXPECT_LE(largestStep(strip,
                        [&] {
                          strip.controls[positions[random() % kPlaces]] =
                              static_cast<float>(1 + random() % kPlaces);
                        }),
            kAmplitude);
}

INSTANTIATE_TEST_SUITE_P(Every, Lv2Changes, ::testing::Values(10, 100, 1000));

}  // namespace
}  // namespace corvane::lv2
