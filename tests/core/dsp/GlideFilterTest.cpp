#include "core/dsp/GlideFilter.h"

#include <gtest/gtest.h>

#include <limits>

#include "tests/rig/Signals.h"

namespace corvane {
namespace {

using namespace rig;
using Complex = std::complex<double>;

GlideFilter section(SectionType type, double hz, double q, double gainDb, double rateHz) {
  GlideFilter filter(rateHz, type, hz, q, gainDb);
  filter.active = true;
  filter.retarget();
  filter.snapToTarget();
  return filter;
}

double measuredDb(GlideFilter filter, double hz, double rateHz) {
  Samples h = impulse(1.0, 0.5, rateHz);
  filter.processBuffer(h.data(), static_cast<int>(h.size()));
  return db(std::abs(fourierSum(h, hz, rateHz)));
}

/// The analogue prototype, normalised to its corner, seen through the bilinear transform: a way to the
/// response that knows nothing of digital coefficients.
Complex prototype(SectionType type, double hz, double cornerHz, double q, double gainDb, double rateHz) {
  const double pi = std::numbers::pi;
  const double fc = std::min(cornerHz, 0.499 * rateHz);
  const Complex s(0.0, std::tan(pi * hz / rateHz) / std::tan(pi * fc / rateHz));
  const auto bent = [&](double share, double exponent) {
    return q * (1.0 - std::pow(fc / (share * rateHz), exponent));
  };
  const double A = std::pow(10.0, gainDb / 40.0);
  switch (type) {
    case SectionType::highPass: return s * s / (s * s + s / bent(0.5001, 6.0) + 1.0);
    case SectionType::lowPass: return 1.0 / (s * s + s / bent(0.50001, 8.0) + 1.0);
    case SectionType::bandPass: return s / bent(0.5001, 2.8) / (s * s + s / bent(0.5001, 2.8) + 1.0);
    case SectionType::notch: return (s * s + 1.0) / (s * s + s / bent(0.5001, 2.8) + 1.0);
    case SectionType::peaking: {
      const double Q = bent(0.5001, 2.8);
      return (s * s + s * A / Q + 1.0) / (s * s + s / (A * Q) + 1.0);
    }
    // the shelves' slope term is sqrt(A) / Q times sin w on both sides: twice the textbook one
    case SectionType::lowShelf: {
      const double Q = bent(0.5001, 3.5), k = std::sqrt(A) / Q;
      return A * (s * s + k * s + A) / (A * s * s + k * s + 1.0);
    }
    case SectionType::highShelf: {
      const double Q = bent(0.5001, 4.0), k = std::sqrt(A) / Q;
      return A * (A * s * s + k * s + 1.0) / (s * s + k * s + A);
    }
    case SectionType::onePoleLow: {
      const double u = 2.0 - std::cos(2.0 * pi * cornerHz / rateHz), a = u - std::sqrt(u * u - 1.0);
      return (1.0 - a) / (1.0 - a * std::polar(1.0, -2.0 * pi * hz / rateHz));
    }
    default: return 1.0;  // the all-pass, and the types without a response
  }
}

TEST(GlideFilter, HasTheResponseOfItsPrototypeAtEveryRate) {
  for (const double rateHz : {44100.0, 96000.0, 192000.0})
    for (int number = 0; number <= 11; ++number) {
      const auto type = static_cast<SectionType>(number);
      for (const double corner : {200.0, 3000.0, 15000.0})
        for (const double gainDb : {-12.0, 6.0}) {
          const GlideFilter filter = section(type, corner, 0.9, gainDb, rateHz);
          for (const double hz : {100.0, 1000.0, 9000.0, 18000.0}) {
            const double expected = db(std::abs(prototype(type, hz, corner, 0.9, gainDb, rateHz)));
            // 1e-6 dB: rounding of the sum where a stop band lies 100 dB down
            EXPECT_NEAR(measuredDb(filter, hz, rateHz), expected, 1e-6)
                << "type " << number << ", corner " << corner << ", " << gainDb << " dB, at " << hz << " of "
                << rateHz;
          }
        }
    }
}

TEST(GlideFilter, DesignsAtTheTopOfTheBandButKeepsWhatWasAsked) {
  GlideFilter filter = section(SectionType::lowPass, 1000.0, 0.7, 0.0, 44100.0);
  filter.setFrequency(30000.0);
  EXPECT_EQ(filter.frequency, 30000.0);
  const GlideFilter limit = section(SectionType::lowPass, 0.499 * 44100.0, 0.7, 0.0, 44100.0);
  EXPECT_EQ(filter.target.b0, limit.target.b0);
  filter.setFrequency(1e9), filter.setQ(1e9), filter.setGainDb(-1e9);
  EXPECT_EQ(filter.frequency, 44100.0);
  EXPECT_EQ(filter.q, 1000.0);
  EXPECT_EQ(filter.gainDb, -1000.0);
}

TEST(GlideFilter, IsTheIdentityUntilItIsActive) {
  GlideFilter filter(44100.0, SectionType::lowPass, 100.0, 0.7, 0.0);
  filter.retarget();
  const Samples x = noise(1.0, 0.01, 44100.0);
  Samples y = x;
  filter.processBuffer(y.data(), static_cast<int>(y.size()));
  EXPECT_EQ(y, x);
  EXPECT_EQ(filter.processSample(0.25), 0.25);
}

TEST(GlideFilter, LandsExactlyOnTheDesignAfter2646SamplesAtAnyRate) {
  GlideFilter filter = section(SectionType::peaking, 500.0, 1.0, 0.0, 44100.0);
  filter.sampleRate = 96000.0;
  filter.setGainDb(12.0);
  EXPECT_EQ(filter.glide.remaining, 2646);
  for (int n = 0; n < 2646; ++n) filter.processSample(0.0);
  EXPECT_EQ(filter.glide.remaining, 0);
  // 1e-12: 2646 steps of rounding lie between the last interpolated set and the design
  EXPECT_NEAR(filter.current.a2, filter.target.a2, 1e-12);
  filter.processSample(0.0);
  EXPECT_EQ(filter.current.a2, filter.target.a2);
  EXPECT_EQ(filter.current.b1, filter.target.b1);
}

TEST(GlideFilter, GlideOfOneSampleLandsOnTheNext) {
  GlideFilter filter = section(SectionType::lowPass, 500.0, 0.7, 0.0, 44100.0);
  filter.glide.length = 1;
  filter.setFrequency(5000.0);
  filter.processSample(0.0);
  EXPECT_NEAR(filter.current.a1, filter.target.a1, 1e-15);  // one rounding of a value near 1
}

/// Largest corner in a slow sine while a low-pass is thrown between two frequencies: a click is a corner.
double worstCorner(int glideLength) {
  constexpr double kRateHz = 44100.0;
  GlideFilter filter = section(SectionType::lowPass, 1000.0, 0.7, 0.0, kRateHz);
  filter.glide.length = glideLength;
  const Samples x = sine(150.0, 1.0, 2.0, kRateHz);
  Samples y(x.size());
  for (std::size_t n = 0; n < x.size(); ++n) {
    if (n % 5000 == 0) filter.setFrequency(filter.frequency < 2000.0 ? 4000.0 : 1000.0);
    y[n] = filter.processSample(x[n]);
  }
  double worst = 0.0;
  for (std::size_t n = 2; n < y.size(); ++n)
    worst = std::max(worst, std::abs(y[n] - 2.0 * y[n - 1] + y[n - 2]));
  return worst;
}

TEST(GlideFilter, SteppedSweepMakesNoClick) {
  // the sine itself bends by (2 pi 150 / 44100)^2 = 4.6e-4 a sample, and on the straight way of the poles the
  // level swells by up to three
  EXPECT_LT(worstCorner(2646), 3.2 * 4.6e-4);
  EXPECT_GT(worstCorner(1), 1e-2) << "without the glide the same sweep clicks, so the measure works";
}

TEST(GlideFilter, StaysStableBetweenRealAndComplexRoots) {
  for (const SectionType from : {SectionType::highPass, SectionType::onePoleLow, SectionType::highShelf})
    for (const SectionType to : {SectionType::peaking, SectionType::lowPass, SectionType::notch}) {
      GlideFilter filter = section(from, 800.0, 0.4, -18.0, 48000.0);
      filter.type = to;
      filter.setQ(8.0);
      Samples y = noise(1.0, 0.2, 48000.0);
      filter.processBuffer(y.data(), static_cast<int>(y.size()));
      EXPECT_LT(peak(y), 100.0) << "a path through a resonance rings, but never runs away";
    }
}

TEST(GlideFilter, BlockFormEqualsSampleFormBitForBit) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const double inf = std::numeric_limits<double>::infinity();
  for (const double poison : {0.0, nan, inf})
    for (const int block : {1, 7, 64, 100, 4000}) {
      GlideFilter a = section(SectionType::peaking, 900.0, 3.0, 9.0, 48000.0), b = a;
      a.setFrequency(4000.0), b.setFrequency(4000.0);
      Samples x = noise(1.0, 0.1, 48000.0);
      x[2700] = poison, x[4000] = poison;
      Samples plain = x;
      for (double& sample : plain) sample = a.processSample(sample);
      for (std::size_t at = 0; at < x.size(); at += static_cast<std::size_t>(block))
        b.processBuffer(x.data() + at, static_cast<int>(std::min<std::size_t>(static_cast<std::size_t>(block),
                                                                              x.size() - at)));
      EXPECT_EQ(plain, x) << "blocks of " << block << ", " << poison << " in between";
      EXPECT_TRUE(std::isfinite(x.back()) || poison == inf);
    }
}

TEST(GlideFilter, ClearStateForgetsEverythingButTheDesign) {
  GlideFilter filter = section(SectionType::highShelf, 2000.0, 0.7, 6.0, 48000.0);
  filter.processSample(1.0);
  filter.setGainDb(-6.0);
  filter.clearState();
  EXPECT_EQ(filter.glide.remaining, 0);
  EXPECT_EQ(filter.history.y1, 0.0);
  EXPECT_EQ(filter.current.b0, filter.target.b0);
}

}  // namespace
}  // namespace corvane
