#include "modules/preamp/ColourStage.h"

#include <algorithm>
#include <cmath>

#include "core/StripEffect.h"

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
  hiss.draw(noise, frames, hissLevel.current);
  if (colour != Colour::converter90s) hiss.shape(noise, frames);
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

void ColourStage::runInput(Pair* samples, int frames) {
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

void ColourStage::process(double* left, double* right, int frames) {
  if (frames < 1) return;
  Pair x[kBlockFrames];
  double levels[kBlockFrames];
  for (int i = 0; i < frames; ++i) x[i] = numbersOrZero(Pair{left[i], right[i]});
  moveControls();
  addHiss(x, frames);

  runInput(x, frames);
  if (colour == Colour::converter90s) {
    converter.run(x, frames, hiss.generators[0], meter, controlShare);
  } else {
    runCrosstalk(x, frames);
    if (colour == Colour::console60s)
      pushPull.run(x, levels, frames);
    else
      parabola.run(x, levels, frames);
    meter.follow(levels, frames, controlShare);
    runSection(lowTone, x, frames);
  }
  for (int i = 0; i < frames; ++i) {
    const Pair y = numbersOrZero(x[i]) * compensation;
    left[i] = y[0], right[i] = y[1];
  }
}

}  // namespace corvane::preamp
