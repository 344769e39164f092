#pragma once

#include <span>
#include <vector>

#include "corvane/StripRunner.h"

namespace corvane::cli {

// What a setting does to tones, measured on a strip as it stands. Levels are of a sine's peak, in dB of full
// scale. A measurement leaves the strip with its history, so each starts with a strip of its own.

inline constexpr double kLowestShownHz = 20.0, kHighestShownHz = 20000.0;

struct ResponsePoint {
  double hz, gainDb;
  double phaseDegrees;  ///< -180 .. 180
};

/// Gain and phase from 20 Hz to 20 kHz, or to nine tenths of half the rate where that is lower, at points in
/// equal ratios. A sine sweeps slowly upward; at each frequency, output and input are compared around the
/// moment at which the sweep passes, so that harmonics, which sound before, stay out. Good to 0.1 dB where
/// the strip answers within a third of a second.
std::vector<ResponsePoint> measureResponse(StripRunner& strip, double rateHz, double levelDb);

struct DynamicsPoint {
  double inputDb, outputDb;  ///< of the tone itself, its harmonics left out
  double gainDb() const { return outputDb - inputDb; }
};

inline constexpr double kQuietestDb = -60.0, kLoudestDb = 0.0;

/// Level out over level in, in steps of 1 dB upward, each held until the output rests.
std::vector<DynamicsPoint> measureDynamics(StripRunner& strip, double rateHz, double toneHz);

struct GainPoint {
  double milliseconds;  ///< from the step up
  double inputDb, gainDb;
};

inline constexpr double kBurstQuietDb = -40.0, kBurstLoudDb = -6.0;
inline constexpr double kBurstMs = 300.0;  ///< from the step up to the step down

/// Gain over time round a burst: a tone that steps from quiet to loud at 0 ms and back at kBurstMs. For 6 ms
/// behind the step down nothing is told: what filters still hold of the loud tone would pass for gain.
std::vector<GainPoint> measureBurst(StripRunner& strip, double rateHz, double toneHz);

struct Harmonic {
  int order;  ///< 1 is the tone
  double hz, levelDb;
};

inline constexpr int kHarmonics = 10;

/// The tone and its harmonics below half the rate, over a second after a second to settle.
std::vector<Harmonic> measureHarmonics(StripRunner& strip, double rateHz, double toneHz, double levelDb);
/// Power of the harmonics over that of the tone, as a share of amplitudes.
double totalDistortion(std::span<const Harmonic> harmonics);

/// The tone nearest to `toneHz` with a whole number of periods in a window of measureDynamics.
double measuredToneHz(double rateHz, double toneHz);

}  // namespace corvane::cli
