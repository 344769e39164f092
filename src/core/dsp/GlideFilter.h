#pragma once

#include <cstdint>

#include "core/dsp/Biquad.h"
#include "core/dsp/RootGlide.h"

namespace corvane {

/// Second-order section whose coefficient changes glide along the paths of its poles and zeros, so that a
/// moving parameter never clicks and a moving filter is stable at every instant.
///
///   y[n] = b0 x[n] + b1 x[n-1] + b2 x[n-2] - a1 y[n-1] - a2 y[n-2]
///
/// A glide takes 60 ms at 44.1 kHz and the same number of samples (2646) at every other rate. Not-a-number
/// input counts as 0. Nothing is allocated; design runs in `retarget` alone. [render]
class GlideFilter {
 public:
  /// Stores the design values; the section passes its input until its owner sets `active`.
  GlideFilter(double sampleRateHz, SectionType type, double frequencyHz, double q, double gainDb);

  /// Identity from here on: tracks at rest, history empty, no glide.
  void clearState();
  /// Empties the history alone; coefficients and glide stay.
  void clearHistory() { history = {}; }
  /// Ends a glide at its target at once; the history stays.
  void snapToTarget();
  /// Hz, clamped to 0.001 .. `sampleRate`; starts a glide.
  void setFrequency(double hz);
  /// Clamped to 0.0001 .. 1000; starts a glide.
  void setQ(double newQ);
  /// dB, clamped to -1000 .. 1000; starts a glide.
  void setGainDb(double db);
  /// Designs the target from the fields and starts a glide from where the tracks stand. For owners that
  /// write the fields themselves.
  void retarget();

  /// Replaces `count` samples.
  void processBuffer(double* samples, int count);
  /// One sample through the section.
  double processSample(double sample);
  /// `current` for the next sample: a step of a running glide, else the design itself.
  void stepGlide();

  /// Magnitude of the target design at `hz`, linear.
  double targetMagnitude(double hz) const { return magnitude(target, hz, sampleRate); }

  SectionType type;
  double frequency;  ///< Hz
  double q;
  double gainDb;
  bool active = false;  ///< while false the design is the identity and the input passes
  double sampleRate;    ///< Hz
  BiquadCoefficients current;
  BiquadCoefficients target;
  RootGlide glide;
  BiquadHistory history;
};

inline void GlideFilter::stepGlide() {
  if (glide.remaining > 0)
    glide.advance(current);
  else
    current = target;
}

inline double GlideFilter::processSample(double sample) {
  if (type == SectionType::none) return sample;
  if (!active) {
    history = {};
    return sample;
  }
  stepGlide();
  return filterSample(sample, current, history);
}

}  // namespace corvane
