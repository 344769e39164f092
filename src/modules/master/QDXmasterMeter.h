#pragma once

#include <cstdint>

#include "core/StripEffect.h"

namespace corvane {

/// Peak, mean-square and over meters of one channel.
struct MasterMeterChannel {
  double peak = 0.0;                              ///< decaying peak of the rectified signal, linear
  double meanSquare = 0.0;                        ///< stays squared; the root comes at reading
  double blockPeak = 0.0, blockMeanSquare = 0.0;  ///< the same at the start of the block
  std::int32_t clipCount = 0;                     ///< consecutive samples at or above full scale
  std::int32_t over = 0;                          ///< latch, 0 or 1..4
};

/// The meter of the master output. Readings use the scale on which +10 dB over full scale is 1.0.
class QDXmasterMeter {
 public:
  /// Hz, clamped; clears all values.
  void setMeterRate(double hz);
  /// Levels, counts and latches to rest.
  void clearMeter() { left = right = {}; }
  void clearOvers();
  /// Keeps the live values of the block before, so that a reading between blocks misses no peak.
  void startBlock();
  /// One sample's over count and peak. `m`: rectified, linear.
  void followPeak(double m, MasterMeterChannel& channel) const;

  static double readPeak(const MasterMeterChannel& channel);
  static double readRms(const MasterMeterChannel& channel);
  /// One read for each refresh of a display: counts the latch down and dims `shown`, the brightness 0..1.
  static double readOver(MasterMeterChannel& channel, double& shown);

 protected:
  MasterMeterChannel left, right;

 private:
  double peakRelease = 0.0;  ///< share of the peak lost per sample
};

inline constexpr std::int32_t kClipThreshold = 3;  // an over needs this many samples in a row
inline constexpr std::int32_t kOverLatch = 4;      // full brightness for three reads, then dimming

inline void QDXmasterMeter::followPeak(double m, MasterMeterChannel& channel) const {
  if (m >= 1.0) {
    if (++channel.clipCount >= kClipThreshold) channel.over = kOverLatch;
  } else {
    channel.clipCount = 0;
  }
  channel.peak = m > channel.peak ? m : channel.peak - channel.peak * peakRelease;
}

}  // namespace corvane
