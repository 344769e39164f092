#pragma once

#include <array>

#include "core/dsp/GlideFilter.h"
#include "modules/dehummer/DehummerTable.h"

namespace corvane {

inline constexpr int kHarmonics = 18;

/// What the comb takes away, and where.
struct HumSetting {
  double fundamentalHz = 60.0;
  double attenuationDb = -12.0;  ///< of the fundamental, 0 or below
  double darkness = 0.25;        ///< 0..1, decades by which the harmonics' curve stays below its highest
  dehummer::HarmonicBalance balance;
};

/// Weight of harmonic 1 .. 18 against the fundamental, for a darkness 0..1. The curve falls as the harmonics
/// of rectified mains do.
double harmonicWeight(int harmonic, double darkness);
/// Weight of a harmonic's parity, 0..1.
inline double parityWeight(int harmonic, const dehummer::HarmonicBalance& balance) {
  return harmonic % 2 == 1 ? balance.oddWeight : balance.evenWeight;
}
/// Gain in dB of the notch at a harmonic.
double notchGainDb(int harmonic, const HumSetting& setting);

/// One channel's eighteen notches, and the band-passes through which one listens to what they take.
/// Frequencies and gains glide. [render]
class HarmonicComb {
 public:
  HarmonicComb();

  /// Histories to silence, glides to their ends.
  void reset();
  /// Hz; all sections glide to their new designs.
  void setSampleRate(double hz);
  /// Every section to its multiple of the fundamental.
  void updateHarmonicFrequencies(const HumSetting& setting);
  /// Every notch to its gain.
  void updateHarmonicGains(const HumSetting& setting);

  /// The notches in series, in place.
  void cut(double* samples, int frames);
  /// Twice the hum that the listening bank finds in `input`; only the harmonics that are heard run.
  void hear(const double* input, double* output, int frames, const HumSetting& setting);

 private:
  template <typename Action>
  void forEachSection(Action action) {
    for (auto* bank : {&notch, &listen})
      for (GlideFilter& section : *bank) action(section);
  }

  std::array<GlideFilter, kHarmonics> notch, listen;  ///< harmonic 1 first
};

}  // namespace corvane
