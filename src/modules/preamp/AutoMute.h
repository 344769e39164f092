#pragma once

#include <array>
#include <cstdint>

#include "modules/preamp/ChannelPair.h"
#include "modules/preamp/NoiseGenerator.h"

namespace corvane::preamp {

/// Follows the signal so that hiss is heard with it alone: silent in silence, full from about -60 dB on.
///
/// The level is the largest of 16 samples drawn at random from the last 150 ms and of the sample at hand;
/// four one-poles in a row (50 ms up, 150 ms down), the first held at -60 dB, make it the gain of the hiss.
/// [render]
class AutoMute {
 public:
  /// Hz; followers stay.
  void setSampleRate(double hz);
  /// Followers to silence. What the memory holds is overwritten in time.
  void reset();
  /// Gain for each sample; `input` is the signal before the hiss. Takes 16 draws a sample from `generator`.
  void run(const Pair* input, double* gains, int frames, NoiseGenerator& generator);

 private:
  static constexpr std::uint32_t kMemory = 65536;  // samples: 150 ms up to 384 kHz
  std::array<double, kMemory> peaks{};
  std::uint32_t index = kMemory - 1;
  std::array<double, 4> followers{};
  double rate = 0.0;              ///< Hz
  double rise = 0.0, fall = 0.0;  ///< shares per sample
};

}  // namespace corvane::preamp
