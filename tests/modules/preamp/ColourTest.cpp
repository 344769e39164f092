#include <gtest/gtest.h>

#include "modules/preamp/ColourStage.h"
#include "modules/preamp/PreampFamily.h"
#include "modules/preamp/PreampTable.h"
#include "tests/rig/ModuleRig.h"

namespace corvane {
namespace {

using namespace preamp;
using namespace rig;

constexpr int kSaturation = 4;
constexpr double kHissOff = 0.0, kHissAuto = 0.5, kHissOn = 1.0;
constexpr Colour kConsoleColours[] = {Colour::console60s, Colour::console70s, Colour::console80s};

double driveGain(double knobDb) { return 40.0 * fromDb(knobDb); }

std::unique_ptr<ColourStage> stage(Colour colour, int unit = 1, double rateHz = 48000.0,
                                   double drive = 40.0) {
  auto made = std::make_unique<ColourStage>(unit);
  made->setSampleRate(rateHz);
  made->setColour(colour);
  made->setDrive(drive);
  made->reset();
  return made;
}

/// First channel of the stage with the same samples on both.
Samples run(ColourStage& colour, Samples x) {
  Samples second = x;
  for (std::size_t at = 0; at < x.size(); at += kBlockFrames)
    colour.process(&x[at], &second[at], static_cast<int>(std::min<std::size_t>(kBlockFrames, x.size() - at)));
  return x;
}

std::complex<double> response(const BiquadCoefficients& c, double hz, double rateHz) {
  const auto z = std::polar(1.0, -2.0 * std::numbers::pi * hz / rateHz);
  return (c.b0 + z * (c.b1 + z * c.b2)) / (1.0 + z * (c.a1 + z * c.a2));
}

/// What a console does to a signal too small to bend any of its curves.
double linearGainDb(Colour colour, double drive, double hz, double rateHz) {
  const ConsoleRow& row = consoleOf(colour);
  double gain = std::pow(drive, 1.0 - 0.9576);
  if (colour == Colour::console80s) {
    gain *= 0.794328234724282 * 0.5;
  } else {
    const double e = (2.8 - 1.5 * row.k) * 0.2 * row.k;  // e / r = 2 / atan 2
    gain *= (2.0 * e * e + 30.0) / (9.6 * e * e + 30.0) * 2.0 / std::atan(2.0) * row.inputScale *
            row.inverseInputScale * 0.25 * 1.07;
  }
  gain *= row.inTrim * row.outTrim;
  if (colour == Colour::console60s)
    gain *= 0.7071 * 0.125 * 20.166514627199998 * 1.062030662245685;
  else
    gain *=
        0.7071 * 0.7071 * 0.25 * 8.0 * 1.4142 * 1.4142 * (colour == Colour::console80s ? fromDb(2.0) : 1.0);
  const auto section = [&](SectionType type, double f, double q, double db) {
    return response(designSection(type, f, q, db, rateHz), hz, rateHz);
  };
  auto shape =
      1.0 - row.crosstalkGain * section(SectionType::bandPass, row.crosstalk.hz, row.crosstalk.q, 0.0);
  shape *= section(SectionType::peaking, row.lowTone.hz, row.lowTone.q, row.lowTone.gainDb);
  if (colour != Colour::console60s) {  // 2 Hz, 12 dB per octave, Q 0.5: two equal poles
    const std::complex<double> s(0.0, hz / 2.0);
    shape *= s * s / ((1.0 + s) * (1.0 + s));
  }
  return db(gain * std::abs(shape));
}

TEST(Colour, SmallSignalsPassAsTheLinearPartsSay) {
  for (const Colour colour : kConsoleColours)
    for (const auto& [rateHz, driveDb] :
         {std::pair{44100.0, -30.0}, {44100.0, 20.0}, {96000.0, 0.0}, {384000.0, 0.0}})
      for (const double hz : {30.0, 1000.0, 7500.0}) {
        const double drive = driveGain(driveDb);
        const auto colouring = stage(colour, 1, rateHz, drive);
        const double amplitude = 2e-4 / drive;
        const Samples y = run(*colouring, sine(hz, amplitude, 0.7, rateHz));
        const double gainDb = db(partial(y, hz, rateHz, count(0.6, rateHz)) / amplitude);
        // 0.01 dB: the offset of the 70s tilts their curve by up to 0.1 %
        EXPECT_NEAR(gainDb, linearGainDb(colour, drive, hz, rateHz), 0.01)
            << "type " << static_cast<int>(colour) << ", drive " << drive << ", " << hz << " Hz at "
            << rateHz;
      }
}

TEST(Colour, DistortsAsASecondModelOfTheSameEquationsDoes) {
  // Unit 1, 500 Hz at -20 dBFS, drive -20, 0 and +20 dB: gain of the fundamental, second and third harmonic
  // below it, in dB. The figures come from a model written apart, in another language.
  struct Figure {
    Colour colour;
    double driveDb, gainDb, secondDb, thirdDb;
  };
  const Figure figures[] = {
      {Colour::console60s, -20.0, -0.327, -85.837, -147.780},
      {Colour::console60s, 0.0, 0.521, -65.833, -107.772},
      {Colour::console60s, 20.0, 1.345, -45.449, -60.905},
      {Colour::console70s, -20.0, -0.039, -74.255, -90.151},
      {Colour::console70s, 0.0, 0.777, -65.544, -61.130},
      {Colour::console70s, 20.0, 1.268, -50.920, -40.969},
      {Colour::console80s, -20.0, 0.510, -130.0, -82.707},
      {Colour::console80s, 0.0, 1.329, -130.0, -62.710},
      {Colour::console80s, 20.0, 1.887, -130.0, -42.643},
      {Colour::converter90s, -20.0, 0.595, -57.334, -52.543},
      {Colour::converter90s, 0.0, 1.352, -71.135, -70.468},
      {Colour::converter90s, 20.0, 2.197, -84.174, -76.654},
  };
  for (const Figure& f : figures) {
    const auto colouring = stage(f.colour, 1, 48000.0, driveGain(f.driveDb));
    const Samples y = run(*colouring, sine(500.0, 0.1, 0.5, 48000.0));
    const std::size_t from = count(0.4, 48000.0);
    const double first = partial(y, 500.0, 48000.0, from);
    const auto harmonicDb = [&](double hz) {
      return std::max(-130.0, db(partial(y, hz, 48000.0, from) / first));
    };
    const std::string where =
        "type " + std::to_string(static_cast<int>(f.colour)) + ", drive " + std::to_string(f.driveDb);
    // 0.002 dB: three printed digits, and drives whose constants differ by 2e-8
    EXPECT_NEAR(db(first / 0.1), f.gainDb, 0.002) << where;
    // 0.01 dB from -130 dB up: harmonics further down drown in rounding
    EXPECT_NEAR(harmonicDb(1000.0), std::max(-130.0, f.secondDb), 0.01) << where;
    EXPECT_NEAR(harmonicDb(1500.0), std::max(-130.0, f.thirdDb), 0.01) << where;
  }
}

TEST(Colour, ThirdHarmonicOfTheEightiesIsTheOneOfItsParabola) {
  // Well below 3 kHz and for small v = V sin: w = v - 3/8 v |v|, whose third harmonic is V / (5 pi).
  const double drive = driveGain(0.0), reach = 0.02;  // V
  const ConsoleRow& row = consoleOf(Colour::console80s);
  const double amplitude = reach / (drive * 0.794328234724282 * 0.5 * row.inTrim * 0.7071 * 0.7071 * 0.25);
  const auto colouring = stage(Colour::console80s, 1, 48000.0, drive);
  const Samples y = run(*colouring, sine(100.0, amplitude, 0.5, 48000.0));
  const std::size_t from = count(0.4, 48000.0);
  const double third = partial(y, 300.0, 48000.0, from) / partial(y, 100.0, 48000.0, from);
  // 3 %: higher orders of V, and the bell at 28 Hz, 0.2 % stronger at 100 Hz than at 300
  EXPECT_NEAR(third / (reach / (5.0 * std::numbers::pi)), 1.0, 0.03);
}

TEST(Converter, HasAGainOfOneAndClipsAt160) {
  Converter90s converter;
  NoiseGenerator clock{1, 2, 3};
  SaturationMeter meter;
  const auto settled = [&](double level) {
    Pair x[kBlockFrames];
    for (int block = 0; block < 2; ++block) {  // the interpolation swings over at the step itself
      std::fill(std::begin(x), std::end(x), both(level));
      meter.level = 0.0;
      converter.run(x, kBlockFrames, clock, meter, 0.05);
    }
    return x[kBlockFrames - 1][0];
  };
  for (const double level : {-150.0, -20.0, -0.7, 0.7, 20.0, 150.0})
    // one part in 500 is the floating step, 8 codes of 1/204.8 the uneven ladder
    EXPECT_NEAR(settled(level), level, std::abs(level) / 500.0 + 8.0 / 204.8) << level;

  settled(0.62);  // 127 codes
  EXPECT_EQ(meter.level, 0.0);
  settled(0.63);  // 129
  EXPECT_GT(meter.level, 0.2);
  settled(159.0);
  EXPECT_LE(meter.level, 0.3);
  settled(160.0);
  EXPECT_EQ(meter.level, 1.0);
  EXPECT_EQ(settled(500.0), settled(160.0));
  settled(-160.1);
  EXPECT_EQ(meter.level, 1.0);
}

TEST(Converter, ReadsBetweenOneAndAHalfAndOnePointSixSamplesLate) {
  Converter90s converter;
  NoiseGenerator clock{123456, 7891011, 121314};
  SaturationMeter meter;
  Pair x[kBlockFrames];
  for (int i = 0; i < kBlockFrames; ++i) x[i] = both(1.5 * i);  // a ramp: interpolation is exact on it
  converter.run(x, kBlockFrames, clock, meter, 0.05);
  double least = 10.0, most = 0.0;
  for (int i = 8; i < kBlockFrames; ++i) {
    const double late = i - x[i][0] / 1.5;
    least = std::min(least, late), most = std::max(most, late);
  }
  // 0.03: the code at hand, up to 8/204.8 of a step of 1.5
  EXPECT_NEAR(least, 1.5, 0.04);
  EXPECT_NEAR(most, 1.6, 0.04);
}

TEST(Preamp, IsColouredByAnalogOnAndATypeOfItsOwnAlone) {
  const Samples x = noise(0.5, 0.1, 48000.0);
  for (int type = 1; type <= 5; ++type) {
    ModuleRig rig(kPreampFamily, type);
    rig.set(kNoiseIn, kHissOn), rig.set(kNoiseLevel, 1.0), rig.set(kDrive, 1.0);
    rig.reset();
    if (type > 1) {
      EXPECT_NE(rig.runMono(x), x) << type;
      EXPECT_GT(rig.meter(kSaturation), 0.0) << type;
      rig.set(kAnalog, 0.0);
    }
    EXPECT_EQ(rig.runMono(x), x) << type;
    EXPECT_EQ(rig.runMono(silence(0.1, 48000.0)), silence(0.1, 48000.0)) << type;
    EXPECT_EQ(rig.meter(kSaturation), 0.0) << type;
  }
  // types without a name of their own run as the converter
  ModuleRig rig(kPreampFamily, 15);
  const Samples y = rig.runMono(constant(0.3, 0.05, 48000.0));
  EXPECT_NE(y.back(), 0.3);
  EXPECT_NEAR(y.back(), 0.3 * std::pow(40.0, 1.0 - 0.9576), 0.01);
}

TEST(Preamp, EveryOneOfSixteenUnitsDiffersAndTheSeventeenthIsTheFirst) {
  std::vector<Samples> hisses;
  for (int unit = 0; unit < 17; ++unit) {
    ModuleRig rig(kPreampFamily, 3);
    rig.set(kNoiseIn, kHissOn);
    hisses.push_back(rig.runMono(sine(200.0, 0.3, 0.01, 48000.0)));
  }
  EXPECT_EQ(hisses[16], hisses[0]);
  for (std::size_t a = 0; a < 16; ++a)
    for (std::size_t b = a + 1; b < 16; ++b) EXPECT_NE(hisses[a], hisses[b]) << a << " and " << b;
}

TEST(Preamp, HissNeverRepeatsItself) {
  for (const int type : {2, 5}) {
    ModuleRig rig(kPreampFamily, type);
    rig.set(kNoiseIn, kHissOn), rig.set(kNoiseLevel, 1.0), rig.set(kDrive, 1.0);
    const Samples none = silence(0.05, 48000.0);
    rig.reset();
    const Samples first = rig.runMono(none);
    rig.reset();
    const Samples second = rig.runMono(none);
    rig.module->setSampleRate(48000.0);
    const Samples third = rig.runMono(none);
    EXPECT_NE(first, second);
    EXPECT_NE(second, third);
    EXPECT_NE(first, third);
  }
}

TEST(NoiseGenerator, IsEvenAndWhite) {
  NoiseGenerator generator{16 * 1137, 8 * 1101, 2 * 29637};
  constexpr int kDraws = 200000;
  std::array<int, 16> bins{};
  double before = 0.0, products = 0.0;
  for (int n = 0; n < kDraws; ++n) {
    const double u = generator.next();
    ASSERT_TRUE(u >= 0.0 && u <= 1.0);
    ++bins[static_cast<std::size_t>(u * 15.999999)];
    products += (u - 0.5) * (before - 0.5);
    before = u;
  }
  // Five standard deviations: of a count of 12500, 108; of the mean product, 1/12 / sqrt(200000).
  for (const int bin : bins) EXPECT_NEAR(bin, kDraws / 16, 5 * 108);
  EXPECT_LT(std::abs(products / kDraws), 5.0 / 12.0 / std::sqrt(kDraws));
}

TEST(Hiss, HasTheLevelAndTheSpectrumOfItsFilters) {
  for (const Colour colour : kConsoleColours)
    for (const double rateHz : {48000.0, 96000.0}) {
      constexpr int kUnit = 5;
      constexpr double kSeconds = 5.0;
      const ConsoleRow& row = consoleOf(colour);
      HissSource hiss(kUnit);
      hiss.configure(row, rateHz);
      Samples y;
      for (std::size_t at = 0; at < count(kSeconds, rateHz); at += kBlockFrames) {
        Pair block[kBlockFrames];
        hiss.drawShaped(block, kBlockFrames, 1.0);
        for (const Pair& v : block) y.push_back(v[0]);
      }
      const ChannelTolerance t = unitTolerances(kUnit)[0];
      const double share = 1.0 - std::exp(-2.0 * std::numbers::pi * row.hissCornerHz / rateHz);
      // Density of white noise in -1 .. 1 is 2/3 per rate; the first channel's peaks with their own spread.
      const auto density = [&](double hz) {
        const auto s = [&](int k) { return t.hissPeak[static_cast<std::size_t>((row.firstSpread + k) % 3)]; };
        const auto section = [&](SectionType type, double f, double q, double gainDb) {
          return std::norm(response(designSection(type, f, q, gainDb, rateHz), hz, rateHz));
        };
        const SectionRow &a = row.hissPeak1, &b = row.hissPeak2, &c = row.hissPeak3;
        const auto z = std::polar(1.0, -2.0 * std::numbers::pi * hz / rateHz);
        return 2.0 / 3.0 / rateHz * t.hissGain * t.hissGain * std::norm(share / (1.0 - (1.0 - share) * z)) *
               section(SectionType::highShelf, row.hissShelf.hz, row.hissShelf.q,
                       row.hissShelf.gainDb * std::sqrt(t.hissShelf)) *
               section(SectionType::peaking, a.hz * s(1), a.q * s(2), a.gainDb * s(0)) *
               section(SectionType::peaking, b.hz, b.q * s(0), b.gainDb * s(1)) *
               section(SectionType::peaking, c.hz * s(0), c.q * s(1), c.gainDb * s(2));
      };
      double power = 0.0;
      for (double hz = 0.5; hz < rateHz / 2.0; hz += 1.0) power += density(hz);
      // 0.4 dB: 5 s of noise, a good part of its power in the 30 Hz around the hum peaks
      EXPECT_NEAR(db(rms(y)), db(std::sqrt(power)), 0.4) << "type " << static_cast<int>(colour);
      // In bands: third octaves measured by two sections in series at the centre and weighed the same way.
      for (const double centre : {60.0, 100.0, 1000.0, 6000.0}) {
        const BiquadCoefficients band = designSection(SectionType::bandPass, centre, 4.0, 0.0, rateHz);
        BiquadHistory first, second;
        double measured = 0.0, expected = 0.0;
        for (const double v : y) {
          const double f = filterSample(filterSample(v, band, first), band, second);
          measured += f * f / static_cast<double>(y.size());
        }
        for (double hz = centre / 40.0; hz < std::min(8.0 * centre, rateHz / 2.0); hz += centre / 100.0)
          expected += centre / 100.0 * density(hz) * std::pow(std::norm(response(band, hz, rateHz)), 2.0);
        // three standard deviations: power of 5 s of a band a sixth of an octave wide
        const double spread = 3.0 / std::sqrt(kSeconds * centre / 6.0);
        EXPECT_NEAR(measured / expected, 1.0, spread) << centre << " Hz, type " << static_cast<int>(colour);
      }
    }
}

TEST(Hiss, FollowsItsKnobAndKeepsItsDensityAtEveryRate) {
  ModuleRig rig(kPreampFamily, 4);
  rig.set(kNoiseIn, kHissOn);
  const auto hissDb = [&rig](double knob, double rateHz) {
    rig.set(kNoiseLevel, knob);
    rig.module->setSampleRate(rateHz);
    Samples y = rig.runMono(silence(2.0, rateHz));
    const BiquadCoefficients band = designSection(SectionType::bandPass, 2000.0, 1.0, 0.0, rateHz);
    BiquadHistory history;
    for (double& v : y) v = filterSample(v, band, history);
    return db(rms(y));
  };
  const double at48 = hissDb(0.5, 48000.0);
  // 0.3 dB: three standard deviations of 2 s of noise, 2 kHz wide, twice
  EXPECT_NEAR(hissDb(1.0, 48000.0) - at48, 30.0, 0.3);
  for (const double rateHz : {44100.0, 96000.0, 384000.0})
    EXPECT_NEAR(hissDb(0.5, rateHz), at48, 0.3) << rateHz;
}

TEST(AutoMute, OpensWithTheSignalAndShutsInSilence) {
  NoiseGenerator dice{1137, 1101, 29637};
  for (const double rateHz : {44100.0, 384000.0}) {
    const auto memory = std::make_unique<AutoMute>();
    AutoMute& mute = *memory;
    mute.setSampleRate(rateHz);
    mute.reset();
    const auto settled = [&](double level, double seconds) {
      Pair x[kBlockFrames];
      double gains[kBlockFrames];
      std::fill(std::begin(x), std::end(x), Pair{level, -level / 2.0});
      for (double t = 0.0; t < seconds; t += kBlockFrames / rateHz) mute.run(x, gains, kBlockFrames, dice);
      return gains[kBlockFrames - 1];
    };
    EXPECT_LT(settled(0.0, 0.5), 2e-7);
    EXPECT_NEAR(settled(5e-4, 1.0), 0.49995, 1e-4);  // -66 dB: half open
    EXPECT_NEAR(settled(1e-3, 1.0), 0.9999, 1e-4);
    EXPECT_NEAR(settled(1.0, 0.1), 0.9999, 1e-4);  // held at -60 dB: no more than full
    // the memory lasts 150 ms, then each of four followers falls to 1/e in 24 ms
    EXPECT_GT(settled(0.0, 0.1), 0.99);
    // once in a while it looks up what it is about to overwrite, 65536 samples old: 1.49 s at 44.1 kHz
    EXPECT_LT(settled(0.0, 2.5), 1e-6);
  }
}

TEST(AutoMute, LongSilenceLeavesNoDenormal) {
  NoiseGenerator dice{1137, 1101, 29637};
  const auto mute = std::make_unique<AutoMute>();
  mute->setSampleRate(44100.0);
  mute->reset();
  const Pair rest[kBlockFrames] = {};
  double gains[kBlockFrames];
  // e-fold in 24 ms: the gain of 1e-7 would pass through the denormal numbers between 16 and 18 s
  for (double t = 0.0; t < 20.0; t += kBlockFrames / 44100.0) {
    mute->run(rest, gains, kBlockFrames, dice);
    for (const double gain : gains) ASSERT_NE(std::fpclassify(gain), FP_SUBNORMAL) << t;
  }
  EXPECT_EQ(gains[0], 0.0);
}

TEST(Preamp, AutoMuteSilencesTheHissWithTheSignal) {
  for (const int type : {2, 3, 4, 5}) {
    ModuleRig rig(kPreampFamily, type);
    rig.set(kDrive, 1.0), rig.set(kNoiseLevel, 1.0);
    rig.reset();
    rig.set(kNoiseIn, kHissOn);
    const double open = rms(rig.runMono(silence(0.3, 48000.0)), 4800);
    rig.set(kNoiseIn, kHissAuto);
    Samples y = rig.runMono(joined(noise(0.01, 0.3, 48000.0), silence(2.0, 48000.0)));
    y.erase(y.begin(), y.end() - 4800);
    EXPECT_GT(open, 1e-5) << type;
    // The converter rests on its lowest code; nothing moves.
    EXPECT_LT(rms(y) - std::abs(y.back()), open * 1e-4) << type;
    rig.set(kNoiseIn, kHissOff);
  }
}

}  // namespace
}  // namespace corvane
