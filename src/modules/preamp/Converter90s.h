#pragma once

#include "modules/preamp/ChannelPair.h"
#include "modules/preamp/NoiseGenerator.h"
#include "modules/preamp/SaturationMeter.h"

namespace corvane::preamp {

/// Number on the converter's 18-bit scale with the low bits that its floating format drops: steps of 1 below
/// 512, then of 2 per octave more, up to 64 from 16384 on. Negative numbers come out one code higher first.
int dropLowBits(int level);

/// A 16-bit converter: a clock that wanders by a tenth of a sample, a comparator ladder with unequal weights,
/// and a floating step that costs large signals their low bits. Gain 1, about 1.55 samples late; full scale
/// is an input of 160.
class Converter90s {
 public:
  void reset();
  /// In place; two draws a sample from `clock`. The meter falls by `meterShare` per sample. [render]
  void run(Pair* samples, int frames, NoiseGenerator& clock, SaturationMeter& meter, double meterShare);

 private:
  Pair p1{}, p2{}, p3{};  ///< last three inputs, scaled to codes
};

}  // namespace corvane::preamp
