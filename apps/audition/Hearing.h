#pragma once

#include <string>
#include <vector>

#include "audition/Sound.h"
#include "audition/Spectrum.h"
#include "core/ModuleFamily.h"
#include "corvane/Setting.h"
#include "corvane/StripRunner.h"

namespace corvane::audition {

/// What a module that changes gain did to the material, dB below no reduction.
struct Reduction {
  std::string module;
  ModuleKind kind;
  double largestDb, meanDb, smallestDb;  ///< mean over the blocks in which the material sounds
};

/// A preset on its material.
struct Hearing {
  Sound output;
  double loudnessIn, loudnessOut;     ///< LUFS
  double truePeakDb;                  ///< of the output, dBTP
  double loudestRmsDb;                ///< RMS of the loudest 300 ms of the output, dBFS
  double tilt;                        ///< change, dB an octave
  std::vector<Reduction> reductions;  ///< in the order of the chain
};

/// Plays `material` through the strip: a run-up first, in which levels settle, then what is measured.
Hearing hear(cli::StripRunner& strip, const cli::Setting& setting, const Sound& material);

/// What two presets are compared by, on the same material and at equal loudness.
struct Character {
  std::vector<double> bandsDb;   ///< third-octave spectrum
  std::vector<double> levelsDb;  ///< level over time, in steps of 20 ms
};
Character characterOf(const Sound& output);
/// dB: root of the sum of the mean squares of both differences.
double distance(const Character& a, const Character& b);

}  // namespace corvane::audition
