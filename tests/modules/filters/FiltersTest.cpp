#include <gtest/gtest.h>

#include "modules/filters/FiltersFamily.h"
#include "modules/filters/FiltersTable.h"
#include "tests/rig/ModuleRig.h"

namespace corvane {
namespace {

using namespace rig;

constexpr int kBasic = 1, kPro = 2, kKey = 3;
constexpr double kRates[] = {44100.0, 96000.0, 192000.0};

/// All filters out.
struct FiltersRig : ModuleRig {
  explicit FiltersRig(int type, double rateHz = 48000.0) : ModuleRig(kFiltersFamily, type, rateHz) {
    for (int in : {filters::kLpfIn, filters::kParametricIn, filters::kHpfIn}) set(in, 0.0);
  }
  Samples impulseResponse(double seconds) {
    reset();
    return runMono(impulse(1.0, seconds, rate));
  }
};

double gainDb(const Samples& response, double hz, double rateHz) {
  return db(std::abs(fourierSum(response, hz, rateHz)));
}

// What the analogue circuits do, at the frequencies that the bilinear transform puts in place of the real
// ones.

struct Analogue {
  double rateHz;
  using Response = std::complex<double>;

  double warped(double hz) const { return std::tan(std::numbers::pi * hz / rateHz); }
  Response s(double hz, double cornerHz) const {
    return {0.0, warped(hz) / warped(std::min(cornerHz, 0.499 * rateHz))};
  }
  /// Q as it is narrowed towards the top of the band.
  double bent(double q, double cornerHz, double power, double top = 0.5001) const {
    return q * (1.0 - std::pow(std::min(cornerHz, 0.499 * rateHz) / (top * rateHz), power));
  }
  double highPass(double hz, double cornerHz, double q) const {
    const Response v = s(hz, cornerHz);
    return std::abs(v * v / (v * v + v / bent(q, cornerHz, 6.0) + 1.0));
  }
  double lowPass(double hz, double cornerHz, double q) const {
    const Response v = s(hz, cornerHz);
    return std::abs(1.0 / (v * v + v / bent(q, cornerHz, 8.0, 0.50001) + 1.0));
  }
  /// Not a bilinear one: samples of an RC circuit's step response.
  double onePoleLow(double hz, double cornerHz) const {
    const double rest = std::exp(-6.283 * cornerHz / rateHz);
    return (1.0 - rest) / std::abs(1.0 - rest * std::polar(1.0, -2.0 * std::numbers::pi * hz / rateHz));
  }
  double onePoleHigh(double hz, double cornerHz) const {
    const double rest = std::exp(-6.283 * cornerHz / rateHz);
    const Response z1 = std::polar(1.0, -2.0 * std::numbers::pi * hz / rateHz);
    return rest * std::abs((1.0 - z1) / (1.0 - rest * z1));
  }
};

// 1e-4 dB at levels down to -100 dB: the responses end at 1e-9 or lower.
TEST(Filters, HighPassIsItsCircuitAtEverySlope) {
  for (double rateHz : kRates)
    for (double dialHz : {20.0, 200.0, 2000.0})
      for (int slope : {0, 1, 2}) {
        FiltersRig rig(kBasic, rateHz);
        rig.set(filters::kHpfIn, 1.0);
        rig.setPhysical(filters::kHpfFreq, dialHz);
        rig.set(filters::kHpfSlope, slope * 0.5);
        const Samples response = rig.impulseResponse(dialHz > 20.0 ? 0.1 : 0.7);
        const Analogue circuit{rateHz};
        for (double part : {0.25, 0.7, 1.0, 4.0}) {
          const double hz = part * dialHz;
          double expected = circuit.highPass(hz, 0.7 * dialHz, 0.091 * std::log10(dialHz) + 0.4);
          if (slope == 1) expected *= circuit.onePoleHigh(hz, 0.4 * dialHz);
          if (slope == 2) expected *= circuit.highPass(hz, 0.5 * dialHz, 0.5);
          EXPECT_NEAR(gainDb(response, hz, rateHz), db(expected), 1e-4)
              << dialHz << " Hz, slope " << slope << ", rate " << rateHz << ", at " << hz;
        }
        if (dialHz ==
            2000.0) {  // 0.1 dB: at 1/20 and 1/40 of the lowest corner the slope is nearly the limit's
          const double octave = gainDb(response, 40.0, rateHz) - gainDb(response, 20.0, rateHz);
          EXPECT_NEAR(octave, 6.0206 * (2 + slope), 0.1) << "rate " << rateHz;
        }
      }
}

TEST(Filters, LowPassIsItsCircuitAtEverySlope) {
  for (double rateHz : kRates)
    for (double dialHz : {300.0, 3000.0, 30000.0})
      for (int slope : {0, 1, 2}) {
        FiltersRig rig(kBasic, rateHz);
        rig.set(filters::kLpfIn, 1.0);
        rig.setPhysical(filters::kLpfFreq, dialHz);
        rig.set(filters::kLpfSlope, slope * 0.5);
        const Samples response = rig.impulseResponse(0.1);
        const Analogue circuit{rateHz};
        const double pair = 1.2 * dialHz, pole = 1.2 * std::min(pair, 0.499 * rateHz);
        for (double hz : {100.0, 400.0, 2000.0, 15000.0}) {
          double expected = 1.0;
          if (slope != 1) expected *= circuit.onePoleLow(hz, pole);
          if (slope != 0) expected *= circuit.lowPass(hz, pair, 0.091 * std::log10(600000.0 / dialHz) + 0.4);
          EXPECT_NEAR(gainDb(response, hz, rateHz), db(expected), 1e-4)
              << dialHz << " Hz, slope " << slope << ", rate " << rateHz << ", at " << hz;
        }
        if (dialHz != 300.0 || rateHz != 192000.0) continue;
        EXPECT_NEAR(gainDb(response, 4000.0, rateHz) - gainDb(response, 8000.0, rateHz), 6.0206 * (1 + slope),
                    0.2);
      }
}

TEST(Filters, BandIsItsCircuitInAllFiveTypes) {
  for (double rateHz : kRates)
    for (int step = 0; step < 5; ++step)
      for (double bandHz : {300.0, 12000.0})
        for (double gain : {-12.0, 9.0}) {
          FiltersRig rig(kPro, rateHz);
          rig.set(filters::kParametricIn, 1.0);
          rig.set(filters::kParametricType, step / 4.0);
          rig.setPhysical(filters::kParametricFreq, bandHz);
          rig.setPhysical(filters::kParametricQ, 1.4);
          rig.setPhysical(filters::kParametricGain, gain);
          const Samples response = rig.impulseResponse(0.1);
          constexpr double kBend[] = {3.5, 2.8, 2.8, 2.8, 4.0};
          const double q = Analogue{rateHz}.bent(1.4, bandHz, kBend[step]), a = std::pow(10.0, gain / 40.0),
                       b = std::sqrt(a);
          for (double hz : {80.0, 290.0, 3000.0, 13000.0}) {
            const auto s = Analogue{rateHz}.s(hz, bandHz), s2 = s * s;
            const std::complex<double> expected[] = {
                a * (s2 + b / q * s + a) / (a * s2 + b / q * s + 1.0), s / q / (s2 + s / q + 1.0),
                (s2 + a / q * s + 1.0) / (s2 + s / (a * q) + 1.0), (s2 + 1.0) / (s2 + s / q + 1.0),
                a * (a * s2 + b / q * s + 1.0) / (s2 + b / q * s + a)};
            EXPECT_NEAR(gainDb(response, hz, rateHz), db(std::abs(expected[step])), 1e-4)
                << "type " << step << ", " << bandHz << " Hz, " << gain << " dB, rate " << rateHz << ", at "
                << hz;
          }
        }
}

TEST(Filters, BasicLeavesTheBandOut) {
  FiltersRig basic(kBasic), pro(kPro);
  for (FiltersRig* rig : {&basic, &pro}) {
    rig->set(filters::kParametricIn, 1.0);
    rig->set(filters::kParametricGain, 1.0);
    rig->reset();
  }
  const Samples x = noise(0.5, 0.05, 48000.0);
  EXPECT_EQ(basic.runMono(x), x);
  EXPECT_NE(pro.runMono(x), x);
}

TEST(Filters, SwitchingAFilterOutAndInForgetsWhatItHeld) {
  for (int in : {filters::kLpfIn, filters::kHpfIn, filters::kParametricIn}) {
    FiltersRig rig(kPro);
    rig.set(filters::kHpfFreq, 1.0);
    rig.set(filters::kLpfFreq, 0.0);
    rig.set(filters::kParametricType, 0.25);
    rig.set(in, 1.0);
    rig.runMono(noise(0.5, 0.05, 48000.0));
    EXPECT_GT(peak(rig.runMono(Samples(64, 0.0))), 1e-9) << "it rings";
    rig.set(in, 0.0);
    rig.set(in, 1.0);
    EXPECT_EQ(peak(rig.runMono(Samples(64, 0.0))), 0.0) << in;
  }
}

TEST(Filters, ChangesGlideForTheirTimeAndLandOnTheDesign) {
  FiltersRig glided(kPro), snapped(kPro);
  for (FiltersRig* rig : {&glided, &snapped}) {
    for (int in : {filters::kLpfIn, filters::kHpfIn, filters::kParametricIn}) rig->set(in, 1.0);
    rig->set(filters::kLpfSlope, 1.0), rig->set(filters::kHpfSlope, 0.5);
    rig->reset();
    rig->set(filters::kLpfFreq, 0.4), rig->set(filters::kHpfFreq, 0.4);
    rig->set(filters::kParametricFreq, 0.6), rig->set(filters::kParametricGain, 0.9);
  }
  snapped.reset();
  const Samples x = noise(0.5, 0.02, 48000.0);
  glided.runMono(Samples(2645, 0.0));
  const double last = glided.runMono({0.0}).front();
  EXPECT_EQ(last, 0.0);
  EXPECT_EQ(glided.runMono(x), snapped.runMono(x));
}

TEST(Filters, ALimitedLowPassStandsUntilItsFrequencyIsSentAgain) {
  FiltersRig rig(kBasic, 44100.0);
  rig.set(filters::kLpfIn, 1.0);
  rig.set(filters::kLpfSlope, 0.0);
  rig.set(filters::kLpfFreq, 1.0);
  rig.module->setSampleRate(96000.0);
  rig.reset();
  const Samples x = impulse(1.0, 0.001, 96000.0);
  EXPECT_NEAR(rig.runMono(x).front(), 1.0 - std::exp(-6.283 * 1.2 * 0.499 * 44100.0 / 96000.0), 1e-12);
  rig.set(filters::kLpfFreq, 1.0);
  rig.reset();
  EXPECT_NEAR(rig.runMono(x).front(), 1.0 - std::exp(-6.283 * 1.2 * 36000.0 / 96000.0), 1e-12);
}

TEST(Filters, RunAt192kHzAtMost) {
  ModuleRig fastest(kFiltersFamily, kPro, 384000.0), fast(kFiltersFamily, kPro, 192000.0);
  const Samples x = noise(0.5, 0.02, 192000.0);
  EXPECT_EQ(fastest.runMono(x), fast.runMono(x));
}

TEST(FiltersKey, FiltersThePairBehindItAndLeavesTheSignalAlone) {
  ModuleRig keyed(kFiltersFamily, kKey), pro(kFiltersFamily, kPro);
  for (ModuleRig* rig : {&keyed, &pro}) {
    rig->setPhysical(filters::kHpfFreq, 800.0);
    rig->set(filters::kParametricGain, 1.0);
    rig->reset();
  }
  const Samples signal = noise(0.5, 0.2, 48000.0, 1), key = noise(0.25, 0.2, 48000.0, 2);
  const Samples filtered = pro.runMono(key);
  EXPECT_EQ(keyed.runMono(signal, &key), signal);
  EXPECT_EQ(keyed.keyOut, filtered);
  // 1e-12: a meter of two channels goes sample by sample, one of a single channel in runs
  EXPECT_NEAR(keyed.meter(0), pro.meter(0), 1e-12) << "the meters follow the key";
  EXPECT_NEAR(keyed.meter(1), pro.meter(1), 1e-12);

  keyed.set(kMonitorOffset, 1.0);
  keyed.reset(), pro.reset();
  EXPECT_EQ(keyed.runMono(signal, &key), pro.runMono(key)) << "the key is heard";
  const Samples none(4800, 0.0);
  keyed.set(kMonitorOffset, 0.0);
  keyed.reset();
  EXPECT_EQ(keyed.runMono(Samples(signal.begin(), signal.begin() + 4800), &none).back(), signal[4799]);
  EXPECT_EQ(keyed.meter(0), 0.0);

  keyed.module->disable();
  keyed.runMono(signal, &key);
  EXPECT_EQ(keyed.keyOut, key) << "out of the chain, the key is as it came";
}

TEST(FiltersKey, BothChannelsOfTheKeyHaveFiltersOfTheirOwn) {
  ModuleRig keyed(kFiltersFamily, kKey), pro(kFiltersFamily, kPro);
  keyed.set(kMonitorOffset, 1.0);
  const Samples left = noise(0.5, 0.1, 48000.0, 1), right = noise(0.5, 0.1, 48000.0, 2);
  EXPECT_EQ(keyed.runPair(left, right), pro.runPair(left, right));
}

}  // namespace
}  // namespace corvane
