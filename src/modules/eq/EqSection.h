#pragma once

#include "core/StripEffect.h"
#include "core/dsp/GlideFilter.h"
#include "core/dsp/Pair.h"
#include "modules/eq/EqDesign.h"

namespace corvane::eq {

/// Two states behind a section that listens to what it puts out.
template <typename V>
struct Track {
  V trackLow{}, trackBand{};
};

/// Shares of the distance per sample, and the drive of the gain that they steer.
template <typename V>
struct TrackCoefficients {
  V trackLowCoeff{}, trackBandCoeff{}, drive{};
};

/// Soft limit inside a recursion: y / (k |y| + 1). `V`: a double or a pack of them, here and below.
template <typename V>
[[gnu::always_inline]] inline V softened(V y, V k) {
  return y / (absolute(y) * k + 1.0);
}

/// Soft gain behind a recursion: an eighth of y is turned down by the level of y between a quarter of the
/// section's frequency plus fs / 200 and 3500 Hz.
template <typename V>
[[gnu::always_inline]] inline V tracked(V y, const TrackCoefficients<V>& c, Track<V>& t) {
  t.trackLow = flushed(t.trackLow + (y - t.trackLow) * c.trackLowCoeff, kFilterFlush);
  t.trackBand = flushed(t.trackBand + (y - t.trackLow - t.trackBand) * c.trackBandCoeff, kFilterFlush);
  return y / (1.0 + c.drive * absolute(t.trackBand)) * 0.125 + y * 0.875;
}

/// One section of an equaliser: a gliding second-order filter with the analog character of its equaliser,
/// which is part of the recursion in Bellform and stands behind it in Lumenband and Tonbox. [render]
class EqSection {
 public:
  /// `driveShare`: how much of the character's drive acts behind the recursion.
  explicit EqSection(double driveShare = 1.0);

  /// Takes new design values, within the limits of the filter, and glides there.
  void design(const SectionDesign& design);
  /// Designs anew at a rate in Hz, with a glide. The drive behind the recursion stays as `setAnalog` left it.
  void setSampleRate(double hz);
  /// Character on or off. The drive behind the recursion is taken from the design values of this moment.
  void setAnalog(bool on);
  /// To the target at once, all history empty.
  void reset();
  bool gliding() const { return filter.glide.remaining > 0; }

  /// One sample with the limit inside the recursion: Bellform.
  double processSaturating(double sample);
  /// One sample with the soft gain behind the recursion: Lumenband and Tonbox.
  double processTracking(double sample);

  GlideFilter filter;
  bool saturate = false;
  double feedbackDrive = 0.0;  ///< of the limit inside the recursion; follows the design values
  TrackCoefficients<double> trackCoefficients;
  Track<double> track;

 private:
  void retarget();

  double driveShare;
};

inline double EqSection::processSaturating(double sample) {
  filter.stepGlide();
  const double x0 = numberOrZero(sample);
  double y = numberOrZero(biquadSum(x0, filter.current, filter.history));
  if (saturate) y = softened(y, feedbackDrive);
  y = flushed(y, kFilterFlush);
  pushHistory(x0, y, filter.history);
  return y;
}

inline double EqSection::processTracking(double sample) {
  filter.stepGlide();
  const double y = filterSample(sample, filter.current, filter.history);
  return saturate ? tracked(y, trackCoefficients, track) : y;
}

}  // namespace corvane::eq
