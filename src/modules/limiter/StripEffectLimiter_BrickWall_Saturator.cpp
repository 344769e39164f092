#include "modules/limiter/StripEffectLimiter_BrickWall_Saturator.h"

#include <algorithm>

#include "core/Rack.h"
#include "core/dsp/SectionSeries.h"
#include "modules/limiter/LimiterFamily.h"
#include "modules/limiter/LimiterTable.h"

namespace corvane {

namespace {

constexpr double kShelfQ = 0.5, kShelfDb = 20.0, kShelfStartHz = 10.0;
constexpr double kShelfDivisor = 2.6;         // the shelf acts well above its frequency
constexpr double kSaturatorMeterShare = 0.9;  // of the frame's coefficient: its gain moves with the waveform

GlideFilter makeShelf(double gainDb) {
  return {kLowestRateHz, SectionType::lowShelf, kShelfStartHz, kShelfQ, gainDb};
}

}  // namespace

StripEffectLimiter_BrickWall_Saturator::Channel StripEffectLimiter_BrickWall_Saturator::makeChannel() {
  return {makeShelf(-kShelfDb), makeShelf(-kShelfDb), makeShelf(kShelfDb), {}, {}};
}

template <typename Action>
void StripEffectLimiter_BrickWall_Saturator::eachShelf(Action action) {
  for (Channel& c : channel)
    for (GlideFilter* shelf : {&c.keyShelf, &c.signalShelf, &c.restoreShelf}) action(*shelf);
}

StripEffectLimiter_BrickWall_Saturator::StripEffectLimiter_BrickWall_Saturator(std::int32_t parameters,
                                                                               std::int32_t meters,
                                                                               std::int32_t tags)
    : StripEffectLimiter_OptoVCA(parameters, meters, tags),
      channel{makeChannel(), makeChannel()},
      saturatorCoefficients(limiter::initialSaturator(kLowestRateHz)) {
  StripEffectLimiter_BrickWall_Saturator::initFilters();
}

void StripEffectLimiter_BrickWall_Saturator::initFilters() {
  StripEffectLimiter_OptoVCA::initFilters();
  eachShelf([](GlideFilter& shelf) {
    shelf.active = true;
    shelf.setFrequency(kShelfStartHz);
    shelf.snapToTarget();
  });
}

void StripEffectLimiter_BrickWall_Saturator::seedDetectors(double level) {
  for (Channel& c : channel) {
    c.brick = {level, level, level, level};
    c.saturator = {level, level, level};
  }
}

void StripEffectLimiter_BrickWall_Saturator::reset() {
  StripEffectLimiter_OptoVCA::reset();
  seedDetectors(0.0);
  eachShelf(settle);
}

void StripEffectLimiter_BrickWall_Saturator::setSampleRate(double hz) {
  StripEffectLimiter_OptoVCA::setSampleRate(hz);
  eachShelf([this](GlideFilter& shelf) { changeRate(shelf, sampleRate); });
}

void StripEffectLimiter_BrickWall_Saturator::updateAttack() {
  StripEffectLimiter_OptoVCA::updateAttack();
  if (type == kSaturator) saturatorCoefficients = limiter::designSaturator(smoothNorm, sampleRate);
}

void StripEffectLimiter_BrickWall_Saturator::updateRelease() {
  StripEffectLimiter_OptoVCA::updateRelease();
  if (type != kBrickWall) return;
  releaseMs = std::clamp(physicalValue(kLimiterFamily, limiter::kRelease, releaseNorm), 10.0, 1000.0);
  brickCoefficients = limiter::designBrickWall(releaseMs, sampleRate);
}

void StripEffectLimiter_BrickWall_Saturator::setParameter(int id, double value) {
  StripEffectLimiter_OptoVCA::setParameter(id, value);
  switch (id - parameterBase) {
    case kTypeOffset: seedDetectors(kSeed); break;
    case limiter::kHpf:
      eachShelf([this](GlideFilter& shelf) { moveFilter(shelf, hpfHz / kShelfDivisor, type == kSaturator); });
      break;
    case limiter::kMode:
      brickMode = static_cast<std::int32_t>(physicalValue(kLimiterFamily, limiter::kMode, value));
      break;
    case limiter::kSmooth:
      smoothNorm = value;
      updateAttack();
      break;
    case limiter::kShape:
      shapeStep = static_cast<std::int32_t>(physicalValue(kLimiterFamily, limiter::kShape, value));
      break;
    default: break;
  }
}

void StripEffectLimiter_BrickWall_Saturator::processBrickWall(double** in, double** out, int frames,
                                                              int channels) {
  smoothGains();
  if (brickMode < 0 || brickMode >= limiter::kBrickModes) return passThroughBlock(in, out, frames);
  Lane lanes[2];
  readLanes(in, frames, channels, false, lanes);
  rectifyKeys(frames, channels, lanes);
  for (int c = 0; c < channels; ++c)
    limiter::brickWallGains(lanes[c].rectified, frames, ceilingInverseSmoothed, brickMode, softOn != 0,
                            brickCoefficients, channel[c].brick, lanes[c].gain);
  applyGains(frames, channels, lanes);
  finishBlock(out, frames, channels, lanes, reductionFollow);
}

void StripEffectLimiter_BrickWall_Saturator::processSaturator(double** in, double** out, int frames,
                                                              int channels) {
  smoothGains();
  if (shapeStep < 0 || shapeStep >= limiter::kShapes) return passThroughBlock(in, out, frames);
  Lane lanes[2];
  readLanes(in, frames, channels, true, lanes);
  for (int c = 0; c < channels; ++c) {
    std::copy_n(lanes[c].input, frames, lanes[c].output);
    processSideBySide(channel[c].keyShelf, lanes[c].keyBuffer, channel[c].signalShelf, lanes[c].output,
                      frames);
  }
  rectifyKeys(frames, channels, lanes);
  for (int c = 0; c < channels; ++c) {
    limiter::saturatorGains(lanes[c].rectified, frames, ceilingInverseSmoothed, shapeStep, softOn != 0,
                            saturatorCoefficients, channel[c].saturator, lanes[c].gain);
    for (int i = 0; i < frames; ++i) lanes[c].output[i] *= lanes[c].gain[i];
    channel[c].restoreShelf.processBuffer(lanes[c].output, frames);
  }
  finishBlock(out, frames, channels, lanes, kSaturatorMeterShare * reductionFollow);
}

}  // namespace corvane
