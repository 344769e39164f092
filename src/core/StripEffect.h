#pragma once

#include <cmath>
#include <cstdint>
#include <span>

#include "core/dsp/Biquad.h"
#include "core/dsp/Flush.h"
#include "core/dsp/LevelFollower.h"

namespace corvane {

inline constexpr double kLowestRateHz = 44100.0;
inline constexpr double kHighestRateHz = 384000.0;

/// `hz` within the rates that the strip runs at; not-a-number counts as the lowest.
inline double clampedRate(double hz, double highestHz = kHighestRateHz) {
  return hz > kLowestRateHz ? (hz < highestHz ? hz : highestHz) : kLowestRateHz;
}

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

  /// Brings the level meters of `modules` up to the block they processed last. The rack calls it once for all
  /// places, since many meters side by side cost little more than one; a module alone catches up when read.
  static void settleMeters(std::span<StripEffect* const> modules);

 protected:
  /// Level meters to silence, coefficients from `sampleRate`.
  void initMeters();
  /// Meter coefficients from `sampleRate`; the levels stay. For `setSampleRate`.
  void updateMeterCoefficients();
  /// One sample of each channel of a pair into the input meter.
  void followInput(double a, double b);
  /// One sample of each channel of a pair into the output meter.
  void followOutput(double a, double b);
  /// Both meters over a mono block of at most kBlockFrames: `input` as it came, `output` as it leaves. The
  /// second channel's followers take the same level, so that a later pass-through shows no old one.
  void followMono(const double* input, const double* output, int frames);
  /// A third level for modules that meter inside, over the block that `followMono` has just taken.
  void followInside(const double* samples);
  /// Both meters over a two-channel block: two inputs as they came, two outputs as they leave.
  void followPair(const double* const* input, const double* const* output, int frames);
  /// Writes `samples` to both channels of the output pair, if the module writes it at all.
  void writeMono(const double* samples, double** out, int frames) const;
  /// The definition of passing a signal unchanged: followers run, samples go to the output pairs.
  void passThroughBlock(double** in, double** out, int frames);
  /// Meters 0 and 1 of the group. True if `id` was one of them.
  bool getLevelMeter(int id, double* value);

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
  double insideLevel = 0.0;          ///< of `followInside`, linear; up to date behind `getLevelMeter`
  double meterAttack = 0.0;          ///< share of the distance per sample, rising
  double meterRelease = 0.0;         ///< share of the distance per sample, falling
  double inputFollower[2] = {};
  double outputFollower[2] = {};

 private:
  /// A block whose levels are still to be followed.
  struct Pending {
    int frames = 0;       ///< 0: nothing to do
    bool inside = false;  ///< `third` holds samples
    bool passed = false;  ///< both channels of a pair, in and out alike; else one channel's input and output
    bool alike = false;   ///< passed, and `first` holds the samples of both channels
    alignas(16) double first[kBlockFrames];
    alignas(16) double second[kBlockFrames];
    alignas(16) double third[kBlockFrames];
    int jobs = 0;  ///< what `addJobs` made of it
  };

  void settle();
  void keep(const double* first, const double* second, int frames);
  void keepPassed(const double* left, const double* right, int frames);
  /// Every follower of the pair stands at the same level.
  bool followersAgree() const;
  int addJobs(LevelJob* to);
  void take(const LevelJob* from);

  Pending pending;
};

}  // namespace corvane
