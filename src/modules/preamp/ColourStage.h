#pragma once

#include "modules/preamp/AutoMute.h"
#include "modules/preamp/Console60s.h"
#include "modules/preamp/ConsoleInput.h"
#include "modules/preamp/ConsoleParabola.h"
#include "modules/preamp/Converter90s.h"
#include "modules/preamp/HissSource.h"

namespace corvane::preamp {

enum class HissMode { off, autoMute, on };

/// Model of a console input or a converter, on both channels of the pair.
///
///   + hiss -> input stage (drive) -> crosstalk -> model -> low tone -> level brought back
///
/// A converter has neither input stage, crosstalk nor low tone. Every unit has tolerances of its own.
/// Nothing allocated. [render]
class ColourStage {
 public:
  /// `unit` 0 .. 15 picks the tolerances and the seeds. Stands as "Pre 70s" at the lowest rate.
  explicit ColourStage(int unit);

  /// Hz, clamped already. All state to rest but the hiss generators, which go on.
  void setSampleRate(double hz);
  /// As `setSampleRate` at the same rate, but the envelopes of the push-pull stage stay.
  void reset();
  /// Another model. Filters start empty, every other state goes on as it is. A converter takes over the hiss
  /// filter and the low-pass as the console before it left them.
  void setColour(Colour colour);
  /// Linear gain into the stage.
  void setDrive(double gain) { drive.target = gain; }
  /// Linear level of the hiss.
  void setHissLevel(double level) { hissLevel.target = level; }
  void setHissMode(HissMode mode) { hissMode = mode; }

  /// In place, at most `kBlockFrames`.
  void process(double* left, double* right, int frames);

  double saturation() const { return meter.level; }
  void clearMeter() { meter.level = 0.0; }

 private:
  /// A control that moves once a block.
  struct Glide {
    double target = 1.0, current = 1.0;
    void step(double share) { current = flushed(current + (target - current) * share, kFilterFlush); }
  };

  void configure();
  void moveControls();
  /// Hiss on top of the signal, and the low-pass that comes with it.
  void addHiss(Pair* samples, int frames);
  void runInput(Pair* samples, int frames);
  void runCrosstalk(Pair* samples, int frames);
  /// Crosstalk, model, meter and low tone, one behind the other.
  void runConsole(Pair* samples, int frames);
  /// Low tone and meter in one loop, two recursions that do not wait for each other; false, and nothing
  /// changed, where a flush or a guard against not-a-number would have acted.
  bool runToneBesideMeter(Pair* samples, const double* levels, int frames);
  /// The same as `runConsole` for the parabola, as fast as the samples allow.
  void runParabola(Pair* samples, int frames);
  /// An even number of frames all in one loop; false, and nothing changed, where a flush or a guard against
  /// not-a-number would have acted.
  bool runParabolaTogether(Pair* samples, int frames);

  double sampleRate;
  Colour colour = Colour::console70s;
  const ConsoleRow* console = &consoleOf(Colour::console70s);  ///< last one configured
  Glide drive, hissLevel;
  HissMode hissMode = HissMode::off;
  double controlShare = 0.0;  ///< per block for the controls, per sample for the falling meter
  double compensation = 1.0, compensatedDrive = 1.0;

  HissSource hiss;
  AutoMute autoMute;
  ConsoleInput input;
  Console60s pushPull;
  ConsoleParabola parabola;
  Converter90s converter;
  SectionPair lowpass = alike(), crosstalkBand = alike(), lowTone = alike();
  SaturationMeter meter;
};

}  // namespace corvane::preamp
