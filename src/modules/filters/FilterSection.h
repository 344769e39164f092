#pragma once

#include <span>

#include "core/dsp/Biquad.h"
#include "core/dsp/RootGlide.h"

namespace corvane {

/// Section of the filter rack: a gliding second-order section that can be switched, or a one-pole.
///
///   one-pole   lp += (x - lp) a0        low-pass lp, high-pass x - lp, 6 dB per octave
///
/// Second-order types are those of GlideFilter: same design, same glide. A one-pole's a0 glides to its target
/// in an exponential of its own. Slopes are made by switching sections, so a switch starts from the target
/// with empty history, and while a section is off neither its glide nor its history can be heard: it costs
/// nothing. Not-a-number input counts as 0. Nothing is allocated. [render]
class FilterSection {
 public:
  /// Stores the design values; passes its input until it is switched on.
  FilterSection(double sampleRateHz, SectionType type, double frequencyHz, double q, double gainDb);

  /// On or off; a change empties the history and ends a glide at its target.
  void setActive(bool on);
  bool isActive() const { return active; }
  void clearHistory() { history = {}; }
  /// Ends a glide at its target at once; the history stays.
  void snapToTarget();
  /// Hz, clamped to 0.001 .. rate; starts a glide. A one-pole takes the frequency beyond the band too.
  void setFrequency(double hz);
  /// Clamped to 0.0001 .. 1000; starts a glide.
  void setQ(double newQ);
  /// dB, clamped to -1000 .. 1000; starts a glide.
  void setGainDb(double db);
  /// Another second-order response; starts a glide.
  void setType(SectionType newType);
  /// Hz; starts a glide.
  void setSampleRate(double hz);

  /// One sample through a section that is on.
  double processSample(double sample);
  static constexpr std::size_t kMostInSeries = 6;
  /// A block of at most kBlockFrames through the sections that are on, in place; equal to `processSample` of
  /// each in turn, bit for bit.
  static void processSeries(std::span<FilterSection* const> series, double* samples, int count);

 private:
  static constexpr std::size_t kGroup = 3;  // more gain little and multiply the loops

  bool isOnePole() const { return type == SectionType::onePoleHigh || type == SectionType::onePoleLow; }
  bool stands() const { return glide.remaining == 0; }
  void retarget();
  void stepGlide();
  void processBuffer(double* samples, int count);
  template <typename... Before>
  static bool runGroup(std::span<FilterSection* const> group, double* samples, int count, Before&... before);

  SectionType type;
  double frequency;  ///< Hz
  double q;
  double gainDb;
  bool active = false;
  double sampleRate;  ///< Hz
  BiquadCoefficients current, target;
  RootGlide glide;
  BiquadHistory history;
};

}  // namespace corvane
