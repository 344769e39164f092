#pragma once

#include <cstdint>
#include <initializer_list>

#include "core/dsp/Biquad.h"

namespace corvane {

/// A quantity on its way: value now, where it goes, and the step per sample.
struct GlideTrack {
  double value = 0.0, goal = 0.0, step = 0.0;
};

/// The glide of a second-order section: two zeros, two poles and the gain move in straight lines, so every
/// set on the way is the set of a stable filter.
class RootGlide {
 public:
  /// `lengthSamples`: how long a glide takes; 1 makes a change land on the next sample.
  explicit RootGlide(std::int32_t lengthSamples) : length(lengthSamples) { rest(); }

  /// The identity: gain 1, one zero at 1, nothing moving.
  void rest();
  /// Starts a glide of full length from where the tracks stand to the roots of `target`.
  void aim(const BiquadCoefficients& target);
  /// All tracks to their goals, nothing moving.
  void snap();
  /// One sample of a running glide: moves the tracks and rebuilds `c` from them, a0 apart.
  void advance(BiquadCoefficients& c);

  std::int32_t remaining = 0;  ///< samples
  std::int32_t length;         ///< samples

 private:
  GlideTrack zero1Real, zero1Imag, zero2Real, zero2Imag;
  GlideTrack pole1Real, pole1Imag, pole2Real, pole2Imag;
  GlideTrack gain;

  template <typename Action>
  void forEach(Action action) {
    for (GlideTrack* t : {&zero1Real, &zero1Imag, &zero2Real, &zero2Imag, &pole1Real, &pole1Imag, &pole2Real,
                          &pole2Imag, &gain})
      action(*t);
  }
};

inline void RootGlide::advance(BiquadCoefficients& c) {
  forEach([](GlideTrack& t) { t.value += t.step; });
  --remaining;
  c.a0 = 1.0;
  c.b0 = gain.value;
  c.b1 = -(zero1Real.value + zero2Real.value) * gain.value;
  c.b2 = (zero1Real.value * zero2Real.value - zero1Imag.value * zero2Imag.value) * gain.value;
  c.a1 = -(pole1Real.value + pole2Real.value);
  c.a2 = pole1Real.value * pole2Real.value - pole1Imag.value * pole2Imag.value;
}

}  // namespace corvane
