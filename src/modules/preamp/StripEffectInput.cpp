#include "modules/preamp/StripEffectInput.h"

#include <algorithm>
#include <atomic>
#include <cmath>

#include "core/Rack.h"
#include "modules/preamp/PreampFamily.h"
#include "modules/preamp/PreampTable.h"

namespace corvane {

namespace {

enum Meter { kPostGainMeter = 2, kAutomatMeter, kSaturationMeter };

/// Each preamp that is built is the next unit of sixteen; the first of a process is unit 1.
int nextUnit() {
  static std::atomic<std::uint8_t> built{0};
  return static_cast<std::uint8_t>(built.fetch_add(1) + 1) % preamp::kUnits;
}

// Gain into the colour and level of the hiss at the knobs' low stops.
constexpr double kLowestDrive = 4 * 0.31622777;
constexpr double kLowestHiss = 0.57 * 3e-6;

double fromDb(double db) { return std::pow(10.0, 0.05 * db); }

/// Where the gain knob would stand for this gain.
double knobPosition(double gain) {
  return std::clamp(findRow(kPreampFamily, preamp::kGain)->taper.normalised(20.0 * std::log10(gain)), 0.0,
                    1.0);
}

}  // namespace

StripEffectInput::StripEffectInput(std::int32_t parameters, std::int32_t meters, std::int32_t tags)
    : StripEffect(parameters, meters, tags), colour(nextUnit()) {
  StripEffectInput::setDefaults();
  StripEffectInput::setSampleRate(kLowestRateHz);
  StripEffectInput::reset();
}

void StripEffectInput::reset() {
  for (preamp::Polarity& channel : polarity) channel.finish();
  initMeters();
  gain.reset();
  colour.reset();
}

void StripEffectInput::setSampleRate(double hz) {
  sampleRate = clampedRate(hz);
  updateMeterCoefficients();
  gain.setSampleRate(sampleRate);
  colour.setSampleRate(sampleRate);
}

void StripEffectInput::setType(double value) {
  type = decodeVariant(value);
  // Without a colour of its own a type leaves the 60s configured behind the scenes.
  const std::int32_t lowest = static_cast<std::int32_t>(preamp::Colour::console60s);
  const std::int32_t highest = static_cast<std::int32_t>(preamp::Colour::converter90s);
  colour.setColour(static_cast<preamp::Colour>(std::clamp(type, lowest, highest)));
}

void StripEffectInput::setParameter(int id, double value) {
  const int offset = id - parameterBase;
  const auto physical = [&] { return physicalValue(kPreampFamily, offset, value); };
  const auto ratio = [&] { return physicalValue(kPreampFamily, offset, std::clamp(value, 0.0, 1.0)); };
  const auto isOn = [&] { return physical() != 0.0; };
  switch (offset) {
    case kTypeOffset: setType(value); break;
    case preamp::kGain: gain.setGain(fromDb(physical())); break;
    case preamp::kAutoIn: gain.setAutomated(isOn()); break;
    case preamp::kRefLevel: gain.setReference(fromDb(physical())); break;
    case preamp::kAutoDetectMode: gain.setDetectsRms(isOn()); break;
    case preamp::kAutoLevelMode: gain.setMayLift(isOn()); break;
    case preamp::kPhaseLeft: polarity[0].turn(isOn(), sampleRate); break;
    case preamp::kPhaseRight: polarity[1].turn(isOn(), sampleRate); break;
    case preamp::kAnalog:
      analog = isOn();
      colour.clearMeter();
      break;
    case preamp::kDrive: colour.setDrive(kLowestDrive * ratio()); break;
    case preamp::kNoiseIn: colour.setHissMode(static_cast<preamp::HissMode>(physical())); break;
    case preamp::kNoiseLevel: colour.setHissLevel(kLowestHiss * ratio()); break;
    default: break;
  }
}

void StripEffectInput::setDefaults() { sendDefaults(kPreampFamily, *this, parameterBase); }

void StripEffectInput::processBlockMono(double** in, double** out, int frames) {
  if (passes()) return passThroughBlock(in, out, frames);
  double input[kBlockFrames], y[kBlockFrames];
  std::copy_n(in[2 * inputPair], frames, input);
  std::copy_n(input, frames, y);
  polarity[0].run(y, frames);
  gain.processMono(y, frames);
  if (isColoured()) {
    double amplified[kBlockFrames], second[kBlockFrames];
    std::copy_n(y, frames, amplified);
    std::copy_n(y, frames, second);
    colour.process(y, second, frames);
    followMono(input, y, frames);
    followInside(amplified);
  } else {
    followMono(input, y, frames);
    followInside(y);
  }
  writeMono(y, out, frames);
}

void StripEffectInput::processBlock(double** in, double** out, int frames) {
  if (passes()) return passThroughBlock(in, out, frames);
  double input[2][kBlockFrames], y[2][kBlockFrames];
  for (int channel = 0; channel < 2; ++channel) {
    std::copy_n(in[2 * inputPair + channel], frames, input[channel]);
    std::copy_n(input[channel], frames, y[channel]);
    polarity[channel].run(y[channel], frames);
  }
  gain.processPair(y[0], y[1], frames);
  double amplified[kBlockFrames];
  for (int i = 0; i < frames; ++i) amplified[i] = std::max(std::abs(y[0][i]), std::abs(y[1][i]));
  if (isColoured()) colour.process(y[0], y[1], frames);
  const double* const inputs[] = {input[0], input[1]};
  const double* const outputs[] = {y[0], y[1]};
  followPair(inputs, outputs, frames);
  for (int i = 0; i < frames; ++i)
    insideLevel = followLevel(amplified[i], insideLevel, meterAttack, meterRelease);
  for (int pair = 0; (outputPairs >> pair) != 0; ++pair) {
    if ((outputPairs >> pair & 1) == 0) continue;
    std::copy_n(y[0], frames, out[2 * pair]);
    std::copy_n(y[1], frames, out[2 * pair + 1]);
  }
}

void StripEffectInput::getMeter(int id, double* value) {
  if (getLevelMeter(id, value)) return;
  switch (id - meterBase) {
    case kPostGainMeter: *value = insideLevel; break;
    case kAutomatMeter: *value = knobPosition(gain.aimedGain()); break;
    case kSaturationMeter: *value = colour.saturation(); break;
    default: break;
  }
}

void StripEffectInput::resetMeters() {
  initMeters();
  colour.clearMeter();
}

}  // namespace corvane
