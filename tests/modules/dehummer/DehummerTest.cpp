#include <gtest/gtest.h>

#include <string>

#include "modules/dehummer/DehummerFamily.h"
#include "modules/dehummer/DehummerTable.h"
#include "tests/rig/FamilyText.h"
#include "tests/rig/ModuleRig.h"
#include "tests/rig/Voice.h"

namespace corvane {
namespace {

using namespace rig;
using namespace dehummer;

constexpr double kRate = 48000.0;
constexpr int kReduction = 2;

// The curve of the harmonics as it was agreed, against the fundamental.
constexpr double kCurve[] = {1.0,   0.095, 0.085, 0.073, 0.062, 0.051, 0.04,  0.03,  0.023,
                             0.019, 0.016, 0.014, 0.012, 0.01,  0.009, 0.007, 0.005, 0.003};

struct Setting {
  double evenOdd, brightness, attenuationDb, mains, offsetHz;
};

ModuleRig standing(const Setting& s) {
  ModuleRig rig(kDehummerFamily, 1);
  rig.set(kEvenOdd, s.evenOdd), rig.set(kBrightness, s.brightness),
      rig.setPhysical(kAttenuation, s.attenuationDb);
  rig.set(kMains, s.mains), rig.setPhysical(kOffset, s.offsetHz);
  rig.reset();
  return rig;
}

double fundamental(const Setting& s) { return (s.mains < 0.5 ? 50.0 : 60.0) + s.offsetHz; }

double parity(const Setting& s, int h) {
  return h % 2 == 1 ? std::min(1.0, 2.0 * (1.0 - s.evenOdd)) : std::min(1.0, 2.0 * s.evenOdd);
}

double weight(const Setting& s, int h) {
  const double lift = std::pow(10.0, 1.0 - (1.0 - s.brightness) * (1.0 - s.brightness));
  return h == 1 ? 1.0 : lift * kCurve[h - 1];
}

/// What the whole comb does at `hz`: the product of its notches.
double combAt(const Setting& s, double hz) {
  double product = 1.0;
  for (int h = 1; h <= 18; ++h) {
    const double gainDb = s.attenuationDb * parity(s, h) * weight(s, h);
    product *= magnitude(
        designSection(SectionType::peaking, h * fundamental(s), 30.0 * std::pow(h, 0.4), gainDb, kRate), hz,
        kRate);
  }
  return product;
}

TEST(Dehummer, CutsEveryHarmonicToItsDepth) {
  for (const Setting& s : {Setting{0.5, 0.5, -48.0, 0.0, 0.0}, Setting{0.2, 1.0, -24.0, 1.0, -3.25},
                           Setting{0.9, 0.0, -36.0, 0.0, 10.0}}) {
    ModuleRig rig = standing(s);
    const Samples h = rig.runMono(impulse(1.0, 6.0, kRate));
    for (int k = 1; k <= 18; ++k) {
      const double hz = k * fundamental(s);
      const double measuredDb = db(std::abs(fourierSum(h, hz, kRate)));
      // 1e-6 dB: after 6 s the slowest notch (q 30 at 40 Hz) still rings at e^-25; sums round far below that
      EXPECT_NEAR(measuredDb, db(combAt(s, hz)), 1e-6) << hz << " Hz";
      // its own depth, within what the flanks of the neighbours add: 0.6 dB where all 18 are deep
      EXPECT_NEAR(measuredDb, s.attenuationDb * parity(s, k) * weight(s, k), 0.6) << hz << " Hz";
    }
  }
}

TEST(Dehummer, LeavesOneParityAloneAtEachStop) {
  const auto depthDb = [](double evenOdd, int harmonic) {
    ModuleRig rig = standing({evenOdd, 1.0, -48.0, 0.0, 0.0});
    const Samples h = rig.runMono(impulse(1.0, 4.0, kRate));
    return db(std::abs(fourierSum(h, harmonic * 50.0, kRate)));
  };
  EXPECT_LT(depthDb(0.0, 1), -47.0);
  EXPECT_NEAR(depthDb(0.0, 2), 0.0, 1.0);  // the flanks of its two neighbours at -48 dB reach this far
  EXPECT_NEAR(depthDb(1.0, 1), 0.0, 0.5);
  EXPECT_LT(depthDb(1.0, 2), -45.0);
}

TEST(Dehummer, NoAttenuationPassesTheSignal) {
  ModuleRig rig = standing({0.5, 0.5, 0.0, 1.0, 0.0});
  const Samples x = noise(0.5, 0.5, kRate), y = rig.runMono(x);
  // 1e-9: poles and zeros coincide, so only rounding remains, which 18 sections of high Q gather
  for (std::size_t n = 0; n < x.size(); ++n) ASSERT_NEAR(y[n], x[n], 1e-9);
  EXPECT_LT(rig.meter(kReduction), 1e-3);
}

TEST(Dehummer, TakesTheHumAndKeepsTheVoice) {
  const Samples voice = recordedVoice();
  ASSERT_FALSE(voice.empty()) << "the package alsa-utils brings the recording";
  // Rectified mains at -26 dBFS, 50.03 Hz as a grid may have, two seconds before the voice comes in.
  const double mainsHz = 50.03;
  const std::size_t before = count(2.0, kRate);
  Samples hum(before + voice.size());
  for (std::size_t n = 0; n < hum.size(); ++n)
    for (int h = 1; h <= 12; ++h)
      hum[n] += 0.05 * kCurve[h - 1] *
                std::sin(2.0 * std::numbers::pi * h * mainsHz * static_cast<double>(n) / kRate + h);
  Samples x = hum;
  for (std::size_t n = 0; n < voice.size(); ++n) x[before + n] += voice[n];
  const Setting setting{0.5, 0.5, -48.0, 0.0, 0.03};
  ModuleRig onBoth = standing(setting), onHum = standing(setting), onVoice = standing(setting);
  const Samples y = onBoth.runMono(x), humLeft = onHum.runMono(hum);
  const Samples voiceLeft = onVoice.runMono(joined(silence(2.0, kRate), voice));
  // the hum goes from the second second on, when the sharpest notches have settled: 30 dB, and what each
  // harmonic leaves is what its notches let through
  const auto settled = static_cast<std::size_t>(kRate);
  double whole = 0.0, left = 0.0;
  for (int h = 1; h <= 12; ++h) {
    whole += std::pow(kCurve[h - 1], 2.0);
    left += std::pow(kCurve[h - 1] * combAt(setting, h * mainsHz), 2.0);
  }
  EXPECT_LT(db(rms(humLeft, settled) / rms(hum, settled)), -30.0);
  EXPECT_NEAR(db(rms(humLeft, settled) / rms(hum, settled)), db(std::sqrt(left / whole)), 0.1);
  EXPECT_GT(onHum.meter(kReduction), 0.9);
  // of the voice, a deep one with its pitch among the harmonics, the comb takes less than 2 dB in level
  EXPECT_LT(std::abs(db(rms(voiceLeft, before) / rms(voice))), 2.0);
  // and both go through side by side
  for (std::size_t n = before; n < y.size(); ++n) ASSERT_NEAR(y[n], humLeft[n] + voiceLeft[n], 1e-9);
}

TEST(Dehummer, MonitorPlaysTheHumAlone) {
  const Setting s{0.25, 0.75, -48.0, 1.0, 0.5};
  ModuleRig rig = standing(s);
  rig.set(kMonitorOffset, 1.0);
  rig.reset();
  const Samples h = rig.runMono(impulse(1.0, 6.0, kRate));
  for (const double hz : {60.5, 121.0, 181.5, 400.0, 7 * 60.5, 9 * 60.5, 18 * 60.5, 1500.0}) {
    std::complex<double> expected = 0.0;
    const auto z1 = std::polar(1.0, -2.0 * std::numbers::pi * hz / kRate);
    for (const int k : {1, 2, 3, 4, 5, 6, 9, 10, 13, 14, 17, 18}) {
      const auto c = designSection(SectionType::bandPass, k * 60.5, 40.0 * std::pow(k, 0.35), 0.0, kRate);
      expected += (c.b0 + c.b1 * z1 + c.b2 * z1 * z1) / (1.0 + c.a1 * z1 + c.a2 * z1 * z1) * parity(s, k) *
                  weight(s, k);
    }
    // 1e-7: what still rings after 6 s in the sharpest band-pass
    EXPECT_NEAR(std::abs(fourierSum(h, hz, kRate)), 2.0 * std::abs(expected), 1e-7) << hz;
  }
}

TEST(Dehummer, MonitorGoesOnFollowingTheReduction) {
  ModuleRig heard = standing({0.5, 0.5, -48.0, 0.0, 0.0}), cut = standing({0.5, 0.5, -48.0, 0.0, 0.0});
  heard.set(kMonitorOffset, 1.0), heard.reset();
  const Samples x = sine(50.0, 0.1, 1.0, kRate);
  heard.runMono(x), cut.runMono(x);
  EXPECT_EQ(heard.meter(kReduction), cut.meter(kReduction));
  heard.module->setDefaults();
  EXPECT_EQ(findRow(kDehummerFamily, kMonitorOffset)->defaultValue, 0.0);
  heard.setPhysical(kAttenuation, 0.0), heard.reset();
  const Samples y = heard.runMono(x);
  for (std::size_t n = 0; n < x.size(); ++n) ASSERT_NEAR(y[n], x[n], 1e-9) << "defaults end monitoring";
}

TEST(Dehummer, ReductionMeterIsTheShareOfTheEnvelopes) {
  ModuleRig rig = standing({0.5, 0.5, -6.0, 0.0, 0.0});
  EXPECT_EQ(rig.meter(kReduction), 0.0);
  rig.runMono(sine(50.0, 0.5, 4.0, kRate));
  // 0.02: the envelopes ripple with the tone, and its flanks pass the neighbours
  EXPECT_NEAR(rig.meter(kReduction), 1.0 - fromDb(-6.0), 0.02);
  const double held = rig.meter(kReduction);
  rig.module->disable();
  rig.runMono(silence(0.1, kRate));
  EXPECT_EQ(rig.meter(kReduction), held) << "passing leaves it";
  rig.module->resetMeters();
  EXPECT_EQ(rig.meter(kReduction), 0.0);
  ModuleRig quiet = standing({0.5, 0.5, -48.0, 0.0, 0.0});
  quiet.runMono(sine(50.0, 9e-7, 4.0, kRate));  // below -120 dBFS nothing is shown
  EXPECT_EQ(quiet.meter(kReduction), 0.0);
}

TEST(Dehummer, ReductionMeterFallsAsTheLevelMetersDo) {
  // Half of the level is hum, then none: the share falls to a sixteenth in 631 ms.
  ModuleRig rig = standing({0.5, 0.5, -6.0, 0.0, 0.0});
  rig.runMono(sine(50.0, 0.5, 4.0, kRate));
  const double start = rig.meter(kReduction);
  rig.runMono(sine(1975.0, 0.5, 0.631, kRate));
  EXPECT_NEAR(rig.meter(kReduction), start / 16.0, 0.01);  // the ripple of the tone before
}

TEST(Dehummer, MovesOfTheKnobsDoNotClick) {
  // A tone between the harmonics, while everything jumps: no step beyond those of the tone itself.
  ModuleRig rig = standing({0.5, 0.5, -48.0, 0.0, 0.0});
  rig.runMono(sine(1975.0, 0.5, 0.5, kRate));
  rig.set(kMains, 1.0), rig.setPhysical(kOffset, -7.0), rig.set(kBrightness, 1.0), rig.set(kEvenOdd, 0.1);
  const Samples y = rig.runMono(sine(1975.0, 0.5, 0.5, kRate));  // whole periods: goes on in phase
  double steepest = 0.0;
  for (std::size_t n = 1; n < y.size(); ++n) steepest = std::max(steepest, std::abs(y[n] - y[n - 1]));
  EXPECT_LT(steepest, 0.5 * 2.0 * std::sin(std::numbers::pi * 1975.0 / kRate) * 1.1);
}

std::string shown(int offset, double p) { return rig::shownBy(kDehummerFamily, offset, p); }

TEST(Dehummer, ShowsItsValues) {
  for (const auto& [offset, p, text] : {std::tuple{kEvenOdd, 0.0, "100/0"},
                                        {kEvenOdd, 0.5, "100/100"},
                                        {kEvenOdd, 1.0, "0/100"},
                                        {kEvenOdd, 0.25, "100/50"},
                                        {kEvenOdd, 0.9, "20/100"},
                                        {kBrightness, 0.5, "50%"},
                                        {kBrightness, 1.0, "100%"},
                                        {kAttenuation, 0.0, "-48.0"},
                                        {kAttenuation, 0.5, "-12.0"},
                                        {kAttenuation, 1.0, "0.0"},
                                        {kMains, 1.0, "60Hz"},
                                        {kMains, 0.49, "50Hz"},
                                        {kOffset, 0.5, "0"},
                                        {kOffset, 0.5005, "+0.01"},
                                        {kOffset, 0.0, "-10.00"},
                                        {kOffset, 1.0, "+10.00"},
                                        {kOffset, 0.4875, "-0.25"},
                                        {kMonitorOffset, 0.0, "Off"},
                                        {kTypeOffset, 0.0, "Empty"}})
    EXPECT_EQ(shown(offset, p), text) << offset << " " << p;
}

TEST(Dehummer, TakesTypedValues) {
  const auto typedP = [](int offset, const char* text) {
    double p = -1.0;
    return valueFromText(kDehummerFamily, offset, text, &p) ? p : -1.0;
  };
  for (const auto& [offset, text, p] : {std::tuple{kEvenOdd, "100/50", 0.25},
                                        {kEvenOdd, "100\\0", 0.0},
                                        {kEvenOdd, "0/100", 1.0},
                                        {kEvenOdd, "20/100", 0.9},
                                        {kEvenOdd, "100/100", 0.5},
                                        {kEvenOdd, "-50", 0.25},
                                        {kEvenOdd, "0", 0.5},
                                        {kEvenOdd, "0.", 0.5},
                                        {kEvenOdd, "101/50", -1.0},
                                        {kEvenOdd, "100/101", -1.0},
                                        {kEvenOdd, "100/", -1.0},
                                        {kEvenOdd, "/100", -1.0},
                                        {kEvenOdd, "-5/100", -1.0},
                                        {kEvenOdd, "101", -1.0},
                                        {kEvenOdd, "even", -1.0},
                                        {kBrightness, "25", 0.25},
                                        {kBrightness, "100.1", -1.0},
                                        {kBrightness, "bright", -1.0},
                                        {kAttenuation, "-48", 0.0},
                                        {kAttenuation, "0", 1.0},
                                        {kAttenuation, "0.1", -1.0},
                                        {kAttenuation, "-48.1", -1.0},
                                        {kOffset, "-10", 0.0},
                                        {kOffset, "0.25", 0.5125},
                                        {kOffset, "10.01", -1.0}})
    EXPECT_DOUBLE_EQ(typedP(offset, text), p) << offset << " " << text;
  // a typed value reads back as it was typed
  EXPECT_EQ(shown(kAttenuation, typedP(kAttenuation, "-25.6")), "-25.6");
  EXPECT_EQ(shown(kOffset, typedP(kOffset, "-3.17")), "-3.17");
}

TEST(Dehummer, PresetsCutInFullAtTheirMains) {
  ASSERT_EQ(kDehummerFamily.presets.size(), 10u);
  for (const auto& [index, name, mains] : {std::tuple{1, "USA basic", 1.0},
                                           {4, "Japan 1", 0.0},
                                           {5, "Japan 2", 1.0},
                                           {8, "Venezuela", 1.0},
                                           {9, "Nepal", 0.0}}) {
    double values[21];
    char shownName[kTextBytes];
    modulePreset(kDehummerFamily, index, values, shownName);
    EXPECT_STREQ(shownName, name);
    EXPECT_EQ(values[kMains], mains) << name;
    EXPECT_EQ(values[kAttenuation], 0.0) << name;
    EXPECT_EQ(values[kBrightness], 0.5) << name;
  }
}

}  // namespace
}  // namespace corvane
