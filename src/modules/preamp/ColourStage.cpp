#include "modules/preamp/ColourStage.h"

#include <algorithm>
#include <cmath>

#include "core/StripEffect.h"
#include "core/dsp/FastMath.h"
#include "core/dsp/Staggered.h"

namespace corvane::preamp {

namespace {

constexpr double kCompensation =
    0.9576;  // nearly the inverse of the drive: 20 dB more comes out 0.85 dB louder
constexpr double kInputGain80s = 0.794328234724282;  // -2 dB

double controlShareAt(double sampleRateHz) {
  return 1.0 - std::pow(0.1091012, 1.0 / (sampleRateHz * 200 * 0.001 * 0.015625));
}

Pair biasTrims(int unit) {
  const auto tolerances = unitTolerances(unit);
  return Pair{tolerances[0].bias, tolerances[1].bias};
}

Pair offsetTrims(int unit) {
  const auto tolerances = unitTolerances(unit);
  return Pair{tolerances[0].offset, tolerances[1].offset};
}

/// One after the other, written out: a loop would keep its state in memory.
template <typename Frame>
[[gnu::always_inline]] inline void twice(int step, Frame frame) {
  frame(2 * step);
  frame(2 * step + 1);
}

/// Whether a flush would act on any of an even number of outputs.
[[gnu::always_inline]] inline bool anySmall(const Pair* outputs, int frames) {
  QuadMask small{};
  for (int i = 0; i < frames; i += 2) small |= isSmall(twoFrames(outputs + i));
  return anyLane(small);
}

}  // namespace

ColourStage::ColourStage(int unit)
    : sampleRate(kLowestRateHz), hiss(unit), input(biasTrims(unit)), parabola(offsetTrims(unit)) {
  setSampleRate(kLowestRateHz);
}

void ColourStage::setSampleRate(double hz) {
  sampleRate = hz;
  controlShare = controlShareAt(hz);
  autoMute.setSampleRate(hz);
  parabola.setSampleRate(hz);
  pushPull.setSampleRate(hz);
  configure();
  reset();
}

void ColourStage::reset() {
  drive.current = drive.target;
  hissLevel.current = hissLevel.target;
  hiss.reset();
  autoMute.reset();
  input.reset();
  parabola.reset();
  converter.reset();
  for (SectionPair* section : {&lowpass, &crosstalkBand, &lowTone}) clearHistory(*section);
  clearMeter();
}

void ColourStage::setColour(Colour newColour) {
  colour = newColour;
  configure();
}

void ColourStage::configure() {
  const double rateScale = std::sqrt(sampleRate / 44100.0);  // the same density of noise at every rate
  if (colour == Colour::converter90s) return hiss.setScale(rateScale);
  console = &consoleOf(colour);
  const auto design = [this](SectionPair& section, SectionType type, const SectionRow& row) {
    section = alike(designSection(type, row.hz, row.q, row.gainDb, sampleRate));
  };
  hiss.configure(*console, sampleRate);
  hiss.setScale(console->hissScale * rateScale);
  if (colour != Colour::console80s) input.configure(*console, sampleRate);
  if (colour != Colour::console60s) parabola.configure(colour);
  design(lowpass, SectionType::onePoleLow, {console->lowpassHz, 1.0});
  design(crosstalkBand, SectionType::bandPass, console->crosstalk);
  design(lowTone, SectionType::peaking, console->lowTone);
}

void ColourStage::moveControls() {
  drive.step(controlShare);
  hissLevel.step(controlShare);
  if (drive.current == compensatedDrive) return;
  compensatedDrive = drive.current;
  compensation = std::pow(1.0 / drive.current, kCompensation);
}

void ColourStage::addHiss(Pair* samples, int frames) {
  Pair noise[kBlockFrames];
  if (colour == Colour::converter90s)
    hiss.draw(noise, frames, hissLevel.current);
  else
    hiss.drawShaped(noise, frames, hissLevel.current);
  if (hissMode == HissMode::off) return;
  if (hissMode == HissMode::autoMute) {
    double gains[kBlockFrames];
    autoMute.run(samples, gains, frames, hiss.generators[0]);
    for (int i = 0; i < frames; ++i) noise[i] *= gains[i];
  }
  for (int i = 0; i < frames; ++i) samples[i] += noise[i];
  Pair filtered[kBlockFrames];
  for (int i = 0; i < frames; ++i) filtered[i] = samples[i];
  // The 70s have the low-pass on paper alone.
  if (colour != Colour::console70s) runSection(lowpass, filtered, frames);
  for (int i = 0; i < frames; ++i)
    samples[i] = console->filteredShare * filtered[i] + console->plainShare * samples[i];
}

CORVANE_WIDE_LOOPS void ColourStage::runInput(Pair* samples, int frames) {
  const double gain = drive.current;
  if (colour == Colour::console60s || colour == Colour::console70s)
    input.run(samples, frames, gain);
  else if (colour == Colour::console80s)
    for (int i = 0; i < frames; ++i) samples[i] = gain * samples[i] * kInputGain80s * 0.5;
  else
    for (int i = 0; i < frames; ++i) samples[i] = gain * samples[i];
}

void ColourStage::runCrosstalk(Pair* samples, int frames) {
  Pair other[kBlockFrames];
  std::copy_n(samples, frames, other);
  runSection(crosstalkBand, other, frames);
  for (int i = 0; i < frames; ++i) samples[i] -= swapped(other[i]) * console->crosstalkGain;
}

void ColourStage::runConsole(Pair* samples, int frames) {
  double levels[kBlockFrames];
  runCrosstalk(samples, frames);
  if (colour == Colour::console60s)
    pushPull.run(samples, levels, frames);
  else
    parabola.run(samples, levels, frames);
  if (!runToneBesideMeter(samples, levels, frames)) {
    meter.follow(levels, frames, controlShare);
    runSection(lowTone, samples, frames);
  }
}

bool ColourStage::runToneBesideMeter(Pair* samples, const double* levels, int frames) {
  BareSection tone(lowTone);
  const double share = controlShare;
  double lamp = meter.level;
  bool lampFlushed = false;
  PairMask small{};
  Pair out[kBlockFrames];
  for (int i = 0; i < frames; ++i) {
    lamp = SaturationMeter::moved(lamp, std::min(levels[i], 1.0), share);
    lampFlushed |= flushed(lamp, SaturationMeter::kFlush) != lamp;
    out[i] = tone.step(samples[i]);
    small |= isSmall(out[i]);
  }
  if (lampFlushed || anyLane(small) || !tone.isExact()) return false;
  meter.level = lamp;
  lowTone = tone.section;
  std::copy_n(out, frames, samples);
  return true;
}

// A step of a stage takes two frames, in one register where neither waits for the other. Each stage is a step
// behind the stage before it, so that their recursions overlap.

CORVANE_WIDE_LOOPS bool ColourStage::runParabolaTogether(Pair* samples, int frames) {
  BareSection band(crosstalkBand), highPass(parabola.steps().filter), tone(lowTone);
  auto model = parabola.steps();
  const double crosstalk = console->crosstalkGain, share = controlShare;
  double lamp = meter.level;
  bool lampFlushed = false;
  QuadMask clipFlushed{};
  Pair banded[kBlockFrames], magnitudes[kBlockFrames], bent[kBlockFrames], clips[kBlockFrames];
  Pair lopsided[kBlockFrames], levelled[kBlockFrames], shaped[kBlockFrames], out[kBlockFrames];
  staggered(
      frames / 2, [&](int step) { twice(step, [&](int i) { banded[i] = band.step(samples[i]); }); },
      [&](int step) {
        const int i = 2 * step;
        const Quad y = twoFrames(banded + i), coupled = twoFrames(samples + i) - swapped(y) * crosstalk;
        Quad magnitude;
        store(model.bend(coupled, magnitude), bent + i);
        store(magnitude, magnitudes + i);
      },
      [&](int step) {
        twice(step, [&](int i) {
          clips[i] = model.clip = model.moved(bent[i]);
          lamp = SaturationMeter::moved(lamp, std::min(largerLane(magnitudes[i]), 1.0), share);
          lampFlushed |= flushed(lamp, SaturationMeter::kFlush) != lamp;
        });
      },
      [&](int step) {
        const int i = 2 * step;
        const Quad clip = twoFrames(clips + i);
        clipFlushed |= flushed(clip, ConsoleParabola::Steps::kClipFlush) != clip;
        store(model.lopsided(twoFrames(bent + i), clip), lopsided + i);
      },
      [&](int step) { twice(step, [&](int i) { levelled[i] = highPass.step(lopsided[i]); }); },
      [&](int step) {
        const int i = 2 * step;
        store(model.output(twoFrames(levelled + i)), shaped + i);
      },
      [&](int step) { twice(step, [&](int i) { out[i] = tone.step(shaped[i]); }); });
  if (lampFlushed || anyLane(clipFlushed) || anySmall(banded, frames) || anySmall(levelled, frames) ||
      anySmall(out, frames) || !band.isExact() || !highPass.isExact() || !tone.isExact())
    return false;
  model.filter = highPass.section;
  parabola.store(model);
  crosstalkBand = band.section, lowTone = tone.section;
  meter.level = lamp;
  std::copy_n(out, frames, samples);
  return true;
}

void ColourStage::runParabola(Pair* samples, int frames) {
  const int pairs = frames - frames % 2;
  if (pairs > 0 && !runParabolaTogether(samples, pairs)) runConsole(samples, pairs);
  if (pairs < frames) runConsole(samples + pairs, 1);
}

void ColourStage::process(double* left, double* right, int frames) {
  if (frames < 1) return;
  Pair x[kBlockFrames];
  for (int i = 0; i < frames; ++i) x[i] = numbersOrZero(Pair{left[i], right[i]});
  moveControls();
  addHiss(x, frames);

  runInput(x, frames);
  if (colour == Colour::converter90s)
    converter.run(x, frames, hiss.generators[0], meter, controlShare);
  else if (colour == Colour::console60s)
    runConsole(x, frames);
  else
    runParabola(x, frames);
  for (int i = 0; i < frames; ++i) {
    const Pair y = numbersOrZero(x[i]) * compensation;
    left[i] = y[0], right[i] = y[1];
  }
}

}  // namespace corvane::preamp
