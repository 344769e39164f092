#include <gtest/gtest.h>

#include <memory>
#include <random>
#include <vector>

#include "core/CorvaneMonoEffect.h"
#include "core/ParameterBank.h"
#include "tests/rig/Signals.h"

// Strips of one process share one thing: preamps are numbered as they are made, and the number is the unit of
// sixteen whose tolerances a preamp has.

namespace corvane {
namespace {

using namespace rig;

constexpr double kRateHz = 48000.0;
constexpr int kBlock = 100;
constexpr int kUnits = 16;

using Strip = std::unique_ptr<CorvaneMonoEffect>;

Strip makeStrip() {
  auto strip = std::make_unique<CorvaneMonoEffect>();
  strip->setSampleRate(kRateHz);
  return strip;
}

/// Every stored parameter at random, the preamp's hiss on, so that whatever could be shared is in use.
void sendSettings(CorvaneMonoEffect& strip, std::uint32_t seed) {
  std::mt19937 engine(seed);
  const auto draw = [&] { return static_cast<double>(engine()) / 4294967296.0; };
  for (int id = 1; id < kParameters; ++id) {
    if (!(parameterKind(id) & kKindStored)) continue;
    const int place = placeOfParameter(id);
    const int offset = place < 0 ? -1 : id - kRack[static_cast<std::size_t>(place)].parameterBase;
    const double drawn = draw();
    if (offset > kTypeOffset && offset < kHeadSize) continue;  // no mute, no monitor: everything is heard
    if (offset != kTypeOffset)
      strip.setParameter(id, drawn);
    else if (place < kFixedPlaces)
      strip.setParameter(id, (drawn < 0.5 ? 1 : 2) / 15.0);
    else
      strip.setParameter(id, (drawn < 0.5 ? 97 : 113) / 255.0);
  }
  strip.setParameter(kProcessId, 1.0);
  strip.setParameter(16, 4 / 15.0);
  strip.setParameter(41, 1.0);
}

void run(CorvaneMonoEffect& strip, const Samples& x, std::size_t at, Samples& out) {
  const double* inputs[4] = {&x[at], &x[at], &x[at], &x[at]};
  double left[kBlock], right[kBlock];
  double* outputs[2] = {left, right};
  strip.processDouble(inputs, outputs, kBlock);
  out.insert(out.end(), left, left + kBlock);
}

TEST(TwoStrips, OfTheSameUnitsSoundTheSameWhateverAnotherStripDoesBetween) {
  std::vector<Strip> strips;  // a round of units later the seventeenth has those of the first
  for (int n = 0; n <= kUnits; ++n) strips.push_back(makeStrip());
  CorvaneMonoEffect &first = *strips.front(), &other = *strips[1], &twin = *strips.back();
  const Samples x = noise(0.3, 0.25, kRateHz), loud = noise(0.9, 0.25, kRateHz, 7);
  sendSettings(first, 11);
  sendSettings(twin, 11);
  Samples between, alone, unheard;
  for (std::size_t at = 0; at + kBlock <= x.size(); at += kBlock) {
    sendSettings(other, static_cast<std::uint32_t>(at));
    run(first, x, at, between);
    run(other, loud, at, unheard);
  }
  for (std::size_t at = 0; at + kBlock <= x.size(); at += kBlock) run(twin, x, at, alone);
  EXPECT_EQ(between, alone);
  EXPECT_NE(between, x);
}

TEST(TwoStrips, MadeOneAfterTheOtherAreDifferentUnits) {
  const Strip first = makeStrip(), second = makeStrip();
  const Samples x = noise(0.3, 0.1, kRateHz);
  Samples a, b;
  sendSettings(*first, 11);
  sendSettings(*second, 11);
  for (std::size_t at = 0; at + kBlock <= x.size(); at += kBlock) {
    run(*first, x, at, a);
    run(*second, x, at, b);
  }
  EXPECT_NE(a, b);
}

}  // namespace
}  // namespace corvane
