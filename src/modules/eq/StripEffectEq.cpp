#include "modules/eq/StripEffectEq.h"

#include <algorithm>
#include <cmath>

#include "core/Rack.h"
#include "modules/eq/EqFamily.h"

namespace corvane {

using namespace eq;

namespace {

constexpr double kFadeFlush = 1e-19, kGainFlush = 1e-14;
constexpr double kStartHz[kBands] = {8000.0, 3000.0, 500.0, 100.0};

/// A step falls to 0.109 (-19.2 dB) in 3.125 ms.
double fadeCoefficient(double sampleRateHz) {
  return 1.0 - std::pow(0.1091012, 1.0 / (0.2 * sampleRateHz * 0.015625));
}

double physical(int offset, double p) { return physicalValue(kEqFamily, offset, position(p)); }

}  // namespace

void StripEffectEq::Smoothed::run(Ramp& ramp, int frames, double share, double flush) {
  ramp.still = false;
  for (int i = 0; i < frames; ++i) {
    const double next = flushed(current + (target - current) * share, flush);
    if (next == current) {  // at rest: every further step is the same
      ramp.still = i == 0;
      std::fill(ramp.values + i, ramp.still ? ramp.values + 1 : ramp.values + frames, current);
      return;
    }
    ramp.values[i] = current = next;
  }
}

StripEffectEq::StripEffectEq(std::int32_t parameters, std::int32_t meters, std::int32_t tags)
    : StripEffect(parameters, meters, tags) {
  for (const Band band : {kHi, kHm, kLm, kLo}) {
    bands[band].bandFrequency = kStartHz[band];
    bands[band].bandShape = static_cast<std::int32_t>(
        physical(offsetOf(band, kShape), defaultValue(kEqFamily, offsetOf(band, kShape))));
    fade[band].target = 1.0;
    design(band);
  }
  setAnalog(true);
  StripEffectEq::setSampleRate(kLowestRateHz);
  StripEffectEq::reset();
}

bool StripEffectEq::passes() const { return active == 0 || type < kBellform || type > kTonbox; }

void StripEffectEq::reset() {
  initMeters();
  outGain.current = outGain.target;
  for (EqChannel& channel : channels) channel.reset();
  for (const Band band : {kHi, kHm, kLm, kLo}) {
    fade[band].current = 0.0;
    toneGain[band].current = tonboxStartGain(bands[band]);
  }
}

void StripEffectEq::setSampleRate(double hz) {
  sampleRate = clampedRate(hz);
  updateMeterCoefficients();
  for (EqChannel& channel : channels) channel.setSampleRate(sampleRate);
  updateCoefficients();
}

void StripEffectEq::updateCoefficients() {
  fadeCoeff = fadeCoefficient(sampleRate);
  gains.analogCoeff = analogCoefficient(type, sampleRate);
}

void StripEffectEq::setParameter(int id, double value) {
  const int offset = id - parameterBase;
  if (offset == kTypeOffset) {
    type = decodeVariant(value);
    updateCoefficients();
  } else if (offset >= kFirstBand && offset < kOut) {
    setBand(static_cast<Band>((offset - kFirstBand) / kBandParameters),
            static_cast<BandParameter>((offset - kFirstBand) % kBandParameters), value);
  } else if (offset == kOut) {
    outGain.target = std::pow(10.0, outGainDb(position(value)) / 20.0);
  } else if (offset == kAnalog) {
    setAnalog(physical(kAnalog, value) != 0.0);
  }
}

void StripEffectEq::setBand(Band band, BandParameter parameter, double p) {
  EqBand& setting = bands[band];
  const double value = physical(offsetOf(band, parameter), p);
  switch (parameter) {
    case kIn:
      setting.bandIn = static_cast<std::int32_t>(value);
      fade[band].target = value;
      return;
    case kGain: setting.bandGain = value; break;
    case kFreq: setting.bandFrequency = value; break;
    case kShape: setting.bandShape = static_cast<std::int32_t>(value); break;
  }
  design(band);
}

void StripEffectEq::design(Band band) {
  for (EqChannel& channel : channels) channel.design(band, bands[band]);
  toneGain[band].target = tonboxGain(band, bands[band]);
}

void StripEffectEq::setAnalog(bool on) {
  analogOn = on;
  for (EqChannel& channel : channels) channel.setAnalog(on);
}

void StripEffectEq::setDefaults() { sendDefaults(kEqFamily, *this, parameterBase); }

void StripEffectEq::runGains(int frames) {
  outGain.run(gains.out, frames, fadeCoeff, kGainFlush);
  for (const Band band : {kHi, kHm, kLm, kLo})
    fade[band].run(gains.fade[band], frames, fadeCoeff, kFadeFlush);
  if (type != kTonbox) return;
  for (const Band band : {kHi, kHm, kLm, kLo})
    toneGain[band].run(gains.toneGain[band], frames, fadeCoeff, kGainFlush);
}

void StripEffectEq::processBlockMono(double** in, double** out, int frames) {
  if (passes()) return passThroughBlock(in, out, frames);
  const double* input = in[2 * inputPair];
  double y[kBlockFrames];
  runGains(frames);
  channels[0].run(type, input, y, frames, gains);
  followMono(input, y, frames);
  writeMono(y, out, frames);
}

void StripEffectEq::processBlock(double** in, double** out, int frames) {
  if (passes()) return passThroughBlock(in, out, frames);
  double y[2][kBlockFrames];
  const double* output[2] = {y[0], y[1]};
  double** input = in + 2 * inputPair;
  runGains(frames);
  for (int c = 0; c < 2; ++c) channels[c].run(type, input[c], y[c], frames, gains);
  followPair(input, output, frames);
  if ((outputPairs & 1) == 0) return;
  for (int c = 0; c < 2; ++c) std::copy_n(y[c], frames, out[c]);
}

}  // namespace corvane
