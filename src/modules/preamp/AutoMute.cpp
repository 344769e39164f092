#include "modules/preamp/AutoMute.h"

#include <algorithm>
#include <cmath>

namespace corvane::preamp {

namespace {

constexpr int kDraws = 16;
constexpr double kMemorySeconds = 0.15;
constexpr double kFullLevel = 0.001;         // -60 dB
constexpr double kFullScale = 0.001 + 1e-7;  // keeps the full gain a hair below 1
constexpr double kSilence = 1e-200;          // where a follower counts as 0
constexpr double kRest = 1e-7;               // of the last three followers

}  // namespace

void AutoMute::setSampleRate(double hz) {
  rate = hz;
  rise = 1.0 - std::exp(-6.283 / (0.05 * hz));
  fall = 1.0 - std::exp(-6.283 / (0.15 * hz));
}

void AutoMute::reset() {
  index = kMemory - 1;
  followers = {0.0, kRest, kRest, kRest};
}

void AutoMute::run(const Pair* input, double* gains, int frames, NoiseGenerator& generator) {
  NoiseGenerator dice = generator;
  auto [level, second, third, fourth] = followers;
  const auto follow = [this](double& follower, double target) {
    follower += (target - follower) * (target > follower ? rise : fall);
  };
  for (int i = 0; i < frames; ++i) {
    double m = largerLane(absolute(input[i]));
    peaks[index] = m;
    index = (index - 1) % kMemory;
    for (int draw = 0; draw < kDraws; ++draw) {
      const auto back = static_cast<std::uint32_t>(dice.next() * rate * kMemorySeconds);
      m = std::max(m, peaks[(index + back) % kMemory]);
    }
    follow(level, m);
    level = std::min(level, kFullLevel);
    follow(second, level / kFullScale);
    follow(third, second);
    follow(fourth, third);
    gains[i] = fourth;
  }
  generator = dice;
  followers = {level, second, third, fourth};
  // Nothing flushes them on the way: after minutes of silence they would turn denormal, which costs dearly.
  for (double& follower : followers)
    if (follower < kSilence) follower = 0.0;
}

}  // namespace corvane::preamp
