#include "core/dsp/GlideFilter.h"

#include <algorithm>

namespace corvane {

namespace {
constexpr double kGlideMs = 60.0;  // at the rate of construction
}

GlideFilter::GlideFilter(double sampleRateHz, SectionType sectionType, double frequencyHz, double sectionQ,
                         double sectionGainDb)
    : type(sectionType),
      frequency(frequencyHz),
      q(sectionQ),
      gainDb(sectionGainDb),
      sampleRate(sampleRateHz),
      glide(static_cast<std::int32_t>(sampleRateHz * kGlideMs / 1000.0)) {}

void GlideFilter::clearState() {
  glide.rest();
  current = target;
  history = {};
}

void GlideFilter::snapToTarget() {
  glide.snap();
  current = target;
}

void GlideFilter::setFrequency(double hz) {
  frequency = std::clamp(hz, 0.001, sampleRate);
  retarget();
}

void GlideFilter::setQ(double newQ) {
  q = std::clamp(newQ, 0.0001, 1000.0);
  retarget();
}

void GlideFilter::setGainDb(double db) {
  gainDb = std::clamp(db, -1000.0, 1000.0);
  retarget();
}

void GlideFilter::retarget() {
  target = active ? designSection(type, frequency, q, gainDb, sampleRate) : BiquadCoefficients{};
  glide.aim(target);
}

void GlideFilter::processBuffer(double* samples, int count) {
  if (type == SectionType::none) return;
  if (!active) {
    if (count > 0) history = {};
    return;
  }
  const int gliding = std::min(count, glide.remaining);
  if (gliding > 0) {
    // locals: fields would be written back and read again with every sample
    RootGlide moving = glide;
    BiquadCoefficients c = current;
    BiquadHistory h = history;
    for (int i = 0; i < gliding; ++i) {
      moving.advance(c);
      samples[i] = filterSample(samples[i], c, h);
    }
    glide = moving, current = c, history = h;
  }
  if (gliding == count) return;
  current = target;
  filterBlock(samples + gliding, count - gliding, current, history);
}

}  // namespace corvane
