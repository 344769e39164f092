#include <gtest/gtest.h>

#include <cmath>

#include "modules/eq/EqFamily.h"
#include "modules/eq/EqTable.h"
#include "tests/rig/ModuleRig.h"

namespace corvane::eq {
namespace {

constexpr double kRate = 48000.0;

/// An equaliser with its Analog stage off.
rig::ModuleRig cleanEq(int type) {
  rig::ModuleRig eq(kEqFamily, type, kRate);
  eq.set(kAnalog, 0.0);
  eq.reset();
  return eq;
}

/// Share of a switched band after n samples: all but 0.1091012 in 3.125 ms.
double fadeAfter(std::size_t n) {
  return 1.0 - std::pow(0.1091012, static_cast<double>(n) / (0.003125 * kRate));
}

double farthest(const rig::Samples& a, const rig::Samples& b) {
  double distance = 0.0;
  for (std::size_t n = 0; n < a.size(); ++n) distance = std::max(distance, std::abs(a[n] - b[n]));
  return distance;
}

TEST(Tonbox, PassesEveryBitAtZeroDecibels) {
  auto eq = cleanEq(kTonbox);
  const auto x = rig::noise(1.0, 0.02, kRate);
  for (const Band band : {kHi, kHm, kLm, kLo})
    for (const double p : {0.0, 0.5, 1.0}) {
      eq.set(offsetOf(band, kShape), p);
      eq.set(offsetOf(band, kFreq), p);
      eq.set(offsetOf(band, kIn), p);
      EXPECT_EQ(eq.runMono(x), x);
    }
}

TEST(Bellform, IsFlatAtZeroDecibelsAlsoWhileABandIsSwitched) {
  auto eq = cleanEq(kBellform);
  const auto x = rig::noise(1.0, 0.02, kRate);
  for (const double in : {1.0, 0.0, 1.0})
    for (const Band band : {kHi, kHm, kLm, kLo}) {
      eq.set(offsetOf(band, kIn), in);
      eq.set(offsetOf(band, kShape), in);  // a glide from shelf to bell, zeros on the poles all the way
      EXPECT_LT(farthest(eq.runMono(x), x), 1e-10);  // rounding, magnified by (rate / 2 pi f)^2 at 100 Hz
    }
}

TEST(EqBands, FadeInFromDryAfterAReset) {
  const auto x = rig::noise(0.5, 0.01, kRate);
  auto eq = cleanEq(kBellform);
  eq.set(offsetOf(kHm, kGain), 1.0);
  eq.reset();
  const auto fading = eq.runMono(x);
  eq.reset();
  eq.runMono(rig::silence(0.1, kRate));
  const auto wet = eq.runMono(x);
  for (std::size_t n = 0; n < x.size(); ++n)
    EXPECT_NEAR(fading[n] - x[n], (wet[n] - x[n]) * fadeAfter(n + 1), 1e-11)
        << n;  // rounding of the flat bands
}

TEST(EqBands, SwitchOutInThreeMillisecondsAndComeBackWarm) {
  auto eq = cleanEq(kBellform);
  eq.set(offsetOf(kLo, kGain), 0.0);
  eq.reset();
  const double wet = rig::fromDb(-18.0);  // of a constant, through the low shelf
  const auto x = rig::constant(1.0, 0.5, kRate);
  EXPECT_NEAR(eq.runMono(x).back(), wet, 1e-9);
  eq.set(offsetOf(kLo, kIn), 0.0);
  const auto leaving = eq.runMono(x);
  eq.set(offsetOf(kLo, kIn), 1.0);
  const auto coming = eq.runMono(x);
  for (const std::size_t n : {1u, 10u, 150u, 1000u}) {  // 1e-9: settling of the shelf
    EXPECT_NEAR(leaving[n - 1], 1.0 + (wet - 1.0) * (1.0 - fadeAfter(n)), 1e-9) << n;
    EXPECT_NEAR(coming[n - 1], 1.0 + (wet - 1.0) * fadeAfter(n), 1e-9) << n;
  }
}

TEST(Lumenband, ChangesItsCharacterAtZeroThroughTheGlide) {
  // The slope of a tone may not break: a jump of coefficients would show in the second difference.
  const auto tone = rig::sine(500.0, 0.5, 0.1, kRate);
  const auto bend = [](const rig::Samples& y, std::size_t from) {
    double most = 0.0;
    for (std::size_t n = from + 2; n < y.size(); ++n)
      most = std::max(most, std::abs(y[n] - 2.0 * y[n - 1] + y[n - 2]));
    return most;
  };
  auto eq = cleanEq(kLumenband);
  eq.setPhysical(offsetOf(kHi, kGain), 3.0);
  eq.setPhysical(offsetOf(kLo, kGain), 3.0);
  eq.reset();
  auto y = eq.runMono(rig::joined(tone, tone));
  const double steady = bend(y, tone.size());
  eq.setPhysical(offsetOf(kHi, kGain), -3.0);
  eq.setPhysical(offsetOf(kLo, kGain), -3.0);
  const auto moved = eq.runMono(tone);
  y.insert(y.end(), moved.begin(), moved.end());
  EXPECT_LT(bend(y, tone.size()), 1.05 * steady);
  EXPECT_LT(rig::peak(moved, moved.size() - 480), 0.95 * rig::peak(y, tone.size()));  // and it did arrive
}

TEST(EqOut, MovesInWholeDecibels) {
  auto eq = cleanEq(kTonbox);
  const auto x = rig::noise(0.5, 0.001, kRate);
  for (const auto& [knobDb, gainDb] :
       {std::pair{3.4, 3.0}, {3.5, 4.0}, {-0.6, -1.0}, {-0.4, 0.0}, {-18.0, -18.0}}) {
    eq.set(kOut, (knobDb + 18.0) / 36.0);
    eq.reset();
    const auto y = eq.runMono(x);
    for (std::size_t n = 0; n < x.size(); ++n)
      ASSERT_EQ(y[n], x[n] * std::pow(10.0, gainDb / 20.0)) << knobDb;
  }
}

TEST(EqType, SwitchesToAnEqualiserThatIsDesignedAndKeepsTheOthers) {
  const auto x = rig::noise(0.5, 0.05, kRate), pause = rig::silence(0.1, kRate);
  const auto prepared = [](int type) {
    rig::ModuleRig eq(kEqFamily, type, kRate);
    for (const Band band : {kHi, kHm, kLm, kLo}) eq.set(offsetOf(band, kGain), 0.8);
    eq.reset();
    return eq;
  };
  const auto setType = [](rig::ModuleRig& eq, int type) { eq.set(kTypeOffset, type / 15.0); };
  for (const int type : {kBellform, kLumenband, kTonbox}) {
    auto straight = prepared(type), switched = prepared(type % 3 + 1);
    // Tonbox's gains glide only while it plays, so let it play out
    if (type == kTonbox) setType(switched, type), switched.runMono(pause), setType(switched, kBellform);
    straight.runMono(pause);
    if (type == kTonbox) straight.runMono(pause);
    switched.runMono(pause);
    setType(switched, type);
    EXPECT_EQ(switched.runMono(x), straight.runMono(x)) << "type " << type;
  }
  auto straight = cleanEq(kBellform), detour = cleanEq(kBellform);
  for (auto* eq : {&straight, &detour})
    eq->set(offsetOf(kLo, kGain), 1.0), eq->reset(), eq->runMono(pause), eq->runMono(x);
  setType(detour, kLumenband);
  detour.runMono(x);
  setType(detour, kBellform);
  EXPECT_EQ(detour.runMono(x), straight.runMono(x)) << "the first equaliser goes on from its own history";
}

TEST(EqRate, ChangesGlideAndDoNotClearAnything) {
  auto eq = cleanEq(kBellform);
  eq.set(offsetOf(kLo, kGain), 1.0);
  eq.reset();
  const auto x = rig::constant(0.1, 0.3, kRate);
  const double before = eq.runMono(x).back();
  eq.module->setSampleRate(96000.0);
  const auto after = eq.runMono(x);
  // A constant sees the same shelf at every rate; a snap to the new poles with the old history would ring.
  EXPECT_NEAR(after.front(), before, 1e-4 * before);
  EXPECT_NEAR(after.back(), before, 1e-9);
}

}  // namespace
}  // namespace corvane::eq
