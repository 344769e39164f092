#pragma once

namespace corvane::preamp {

/// Polarity switch of one channel that passes through zero in a straight line instead of clicking.
///
///   y = x p,  p from +1 to -1 or back in 8 ms, 250 per second of full scale
class Polarity {
 public:
  /// Starts the way to +1 or -1; to where it stands already, nothing moves.
  void turn(bool inverted, double sampleRateHz) {
    target = inverted ? -1.0 : 1.0;
    step = kSlopePerSecond * target / sampleRateHz;
  }
  /// Ends a turn at once.
  void finish() { now = target, step = 0.0; }

  /// In place. [render]
  void run(double* samples, int frames) {
    int i = 0;
    for (; i < frames && step != 0.0; ++i) {
      now += step;
      if (step > 0.0 ? now >= target : now <= target) finish();
      samples[i] *= now;
    }
    if (now == 1.0) return;
    for (; i < frames; ++i) samples[i] *= now;
  }

 private:
  static constexpr double kSlopePerSecond = 250.0;
  double target = 1.0, now = 1.0;
  double step = 0.0;  ///< per sample, signed; 0 at rest
};

}  // namespace corvane::preamp
