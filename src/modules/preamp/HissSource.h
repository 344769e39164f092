#pragma once

#include "modules/preamp/ConsoleTable.h"
#include "modules/preamp/HissFilters.h"
#include "modules/preamp/NoiseGenerator.h"
#include "modules/preamp/PreampTolerances.h"

namespace corvane::preamp {

/// Hiss of a unit: white noise of each channel through a one-pole, then through a shelf and three peaks at
/// hum frequencies, which give each console its own breath.
///
///   s += (2 u - 1 - s) k,  hiss = s * level * scale * the channel's gain
///
/// It runs whether it is heard or not, so that switching it on meets no settling. Nothing allocated. [render]
class HissSource {
 public:
  explicit HissSource(int unit);

  /// Shape of a console's hiss at a rate; filters start empty, the one-pole goes on.
  void configure(const ConsoleRow& console, double sampleRateHz);
  /// Share of the noise level that arrives, before the spread of the unit.
  void setScale(double newScale) { scale = newScale; }
  /// Filters and one-pole to rest. The generators go on: no reset makes the hiss repeat itself.
  void reset();

  /// White noise behind the one-pole, `level` linear.
  void draw(Pair* hiss, int frames, double level);
  /// The same behind shelf and peaks.
  void drawShaped(Pair* hiss, int frames, double level);

  NoiseGenerator generators[2];

 private:
  struct White;

  std::array<ChannelTolerance, 2> tolerances;
  HissFilters filters;  ///< shelf and three peaks
  Pair state{};
  Pair gain;
  double scale = 1.0;
  double share = 0.0;  ///< of the one-pole, per sample
};

}  // namespace corvane::preamp
