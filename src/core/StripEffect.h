#pragma once

#include <cmath>
#include <cstdint>

#include "core/dsp/Biquad.h"
#include "core/dsp/Flush.h"

namespace corvane {

inline constexpr double kLowestRateHz = 44100.0;
inline constexpr double kHighestRateHz = 384000.0;
inline constexpr double kMeterFlush = 1e-14;  // -280 dBFS, far below what a 24-bit converter resolves

/// `hz` within the rates that the strip runs at; not-a-number counts as the lowest.
inline double clampedRate(double hz, double highestHz = kHighestRateHz) {
  return hz > kLowestRateHz ? (hz < highestHz ? hz : highestHz) : kLowestRateHz;
}

/// One sample of a level meter: `magnitude` and `level` linear, the coefficients as shares of the distance.
inline double followLevel(double magnitude, double level, double attack, double release) {
  level += (magnitude - level) * (magnitude > level ? attack : release);
  return flushed(level, kMeterFlush);
}

/// The two level meters of one channel as plain numbers, for a module that steps them inside its own sample
/// loop: recursions that do not wait for each other share the time of the slowest.
struct ChannelMeters {
  double attack, release;  ///< shares of the distance per sample
  double input, output;    ///< levels, linear
  void step(double in, double out) {
    input = followLevel(std::abs(in), input, attack, release);
    output = followLevel(std::abs(out), output, attack, release);
  }
};

/// Base of every module of the rack: the contract between the processor and a module, and the level meters
/// that all modules share.
///
/// Audio is 64-bit, full scale 1.0, in place, in blocks of at most `kBlockFrames`. `in` and `out` are tables
/// of channel pointers, two channels to a pair: entries 2k and 2k+1 are pair k; pair 0 is the main signal,
/// pair 1 the external key. Parameter values are normalised doubles. Everything but construction is called
/// from the render thread, one call after the other: no lock, no allocation.
class StripEffect {
 public:
  /// The first ids of the module's parameters, meters and editor tags. The module can process from here on.
  StripEffect(std::int32_t parameterBase, std::int32_t meterBase, std::int32_t tagBase);
  StripEffect(const StripEffect&) = delete;
  StripEffect& operator=(const StripEffect&) = delete;

  virtual ~StripEffect();
  /// Clears audio state and meters; parameters stay.
  virtual void reset() = 0;
  /// Hz; clamped to what the module runs at. Recomputes all that hangs on it.
  virtual void setSampleRate(double hz) = 0;
  /// `id` absolute, `value` normalised; ids that the module does not know are ignored.
  virtual void setParameter(int id, double value) = 0;
  /// Every own parameter to its default, through `setParameter`.
  virtual void setDefaults() = 0;
  /// Two-channel form.
  virtual void processBlock(double** in, double** out, int frames) = 0;
  /// Single-channel form, the sound path of the strip: reads the first channel of its pair, writes both.
  virtual void processBlockMono(double** in, double** out, int frames) = 0;
  /// `id` absolute; leaves `value` alone for an id that the module does not know.
  virtual void getMeter(int id, double* value) = 0;
  /// Meters to rest.
  virtual void resetMeters() = 0;
  /// The module takes part in the sound.
  virtual void enable() = 0;
  /// The module passes its input; its level meters go on following.
  virtual void disable() = 0;

 protected:
  /// Level meters to silence, coefficients from `sampleRate`.
  void initMeters();
  /// Meter coefficients from `sampleRate`; the levels stay. For `setSampleRate`.
  void updateMeterCoefficients();
  /// One sample of each channel of a pair into the input meter.
  void followInput(double a, double b);
  /// One sample of each channel of a pair into the output meter.
  void followOutput(double a, double b);
  /// Both meters over a mono block: `input` as it came, `output` as it leaves. Publishes both, and keeps the
  /// second channel's followers at the same level, so that a later pass-through shows no old one.
  void followMono(const double* input, const double* output, int frames);
  /// Meters of channel 0 or 1 to step by hand; give them back with `publishMono` or `publishPair`.
  ChannelMeters channelMeters(int channel) const;
  /// Ends a mono block that stepped channel 0 by hand; what `followMono` says of the second channel holds.
  void publishMono(const ChannelMeters& meters);
  /// Ends a two-channel block that stepped both by hand.
  void publishPair(const ChannelMeters& left, const ChannelMeters& right);
  /// Writes `samples` to both channels of the output pair, if the module writes it at all.
  void writeMono(const double* samples, double** out, int frames) const;
  /// The definition of passing a signal unchanged: followers run, samples go to the output pairs.
  void passThroughBlock(double** in, double** out, int frames);
  /// Meters 0 and 1 of the group. True if `id` was one of them.
  bool getLevelMeter(int id, double* value) const;

  std::int32_t parameterBase;
  std::int32_t meterBase;
  std::int32_t tagBase;
  std::int32_t active = 1;       ///< 1 enabled, 0 disabled
  std::int32_t inputPair = 0;    ///< pair that the module reads
  std::int32_t outputPairs = 1;  ///< bit k: pair k is written
  double sampleRate = kLowestRateHz;
  std::int32_t type = 1;             ///< variant; 0 = place empty
  std::int32_t sideChainSource = 0;  ///< 0 own signal, 1 pair 1
  double inputLevel = 0.0;           ///< published meter, linear
  double outputLevel = 0.0;          ///< published meter, linear
  double meterAttack = 0.0;          ///< share of the distance per sample, rising
  double meterRelease = 0.0;         ///< share of the distance per sample, falling
  double inputFollower[2] = {};
  double outputFollower[2] = {};
};

}  // namespace corvane
