#include "modules/filters/FilterSection.h"

#include <gtest/gtest.h>

#include <limits>

#include "tests/rig/Signals.h"

namespace corvane {
namespace {

using namespace rig;

constexpr double kRateHz = 44100.0;
constexpr int kGlideSamples = 2646;

FilterSection onePole(double hz) {
  FilterSection section{kRateHz, SectionType::onePoleLow, hz, 0.5, 0.0};
  section.setActive(true);
  return section;
}

double onePoleGain(double hz) { return 1.0 - std::exp(hz * -6.283 / kRateHz); }

// An impulse after silence comes out times the coefficient of its sample, which has moved once by then.
TEST(FilterSection, OnePoleGlidesByAThousandthOfTheWayAndThenLands) {
  const double from = onePoleGain(500.0), to = onePoleGain(8000.0);
  for (int silent : {0, 999, kGlideSamples - 1, kGlideSamples}) {
    FilterSection section = onePole(500.0);
    section.setFrequency(8000.0);
    for (int n = 0; n < silent; ++n) section.processSample(0.0);
    const double gain = section.processSample(1.0);
    if (silent < kGlideSamples)
      EXPECT_NEAR(gain, to + (from - to) * std::pow(0.999, silent + 1), 1e-13) << silent;
    else
      EXPECT_EQ(gain, to);
  }
}

TEST(FilterSection, SwitchedOnItStartsCleanAtItsTarget) {
  for (SectionType type : {SectionType::lowPass, SectionType::onePoleLow, SectionType::onePoleHigh}) {
    FilterSection used{kRateHz, type, 200.0, 0.7, 0.0}, fresh{kRateHz, type, 3000.0, 0.7, 0.0};
    used.setActive(true);
    for (double x : noise(1.0, 0.1, kRateHz)) used.processSample(x);
    used.setActive(false);
    used.setFrequency(3000.0);
    used.setActive(true);
    fresh.setActive(true);
    for (double x : noise(1.0, 0.01, kRateHz)) EXPECT_EQ(used.processSample(x), fresh.processSample(x));
    // switching to what it is already must not clear
    Samples tail = {1.0, 0.0};
    const double before = used.processSample(tail[0]);
    used.setActive(true);
    EXPECT_NE(used.processSample(tail[1]), 0.0) << before;
  }
}

TEST(FilterSection, SeriesOfAnyMakeUpEqualsItsSectionsSampleBySample) {
  constexpr SectionType kTypes[] = {SectionType::highPass, SectionType::highPass,   SectionType::onePoleHigh,
                                    SectionType::peaking,  SectionType::onePoleLow, SectionType::lowPass};
  for (unsigned switched = 0; switched < 64; ++switched) {
    std::vector<FilterSection> fast, plain;
    for (auto* sections : {&fast, &plain})
      for (std::size_t k = 0; k < 6; ++k) {
        sections->push_back({kRateHz, kTypes[k], 150.0 + 900.0 * static_cast<double>(k), 0.8, 6.0});
        sections->back().setActive(switched >> k & 1);
      }
    std::vector<FilterSection*> series;
    for (FilterSection& section : fast) series.push_back(&section);
    Samples x = noise(0.5, 0.2, kRateHz, switched + 1);
    x[5000] = std::numeric_limits<double>::quiet_NaN();
    x[5001] = 1e300, x[5002] = -1e308, x[5003] = 1e308;
    x[6000] = std::numeric_limits<double>::infinity();
    int block = 1;
    for (std::size_t at = 0; at + 64 < x.size(); block = block % 64 + 1) {
      if (at / 1000 !=
          (at + static_cast<std::size_t>(block)) / 1000)  // glides of one section after the other
        for (auto* sections : {&fast, &plain}) {
          FilterSection& moved = (*sections)[at / 1000 % 6];
          moved.setFrequency(100.0 + static_cast<double>(at));
        }
      Samples y(x.begin() + static_cast<long>(at), x.begin() + static_cast<long>(at) + block);
      FilterSection::processSeries(series, y.data(), block);
      for (int n = 0; n < block; ++n) {
        double sample = x[at + static_cast<std::size_t>(n)];
        for (FilterSection& section : plain)
          if (section.isActive()) sample = section.processSample(sample);
        const double fromSeries = y[static_cast<std::size_t>(n)];
        ASSERT_TRUE(fromSeries == sample || (std::isnan(fromSeries) && std::isnan(sample)))
            << switched << " at " << at << ", block " << block;
      }
      at += static_cast<std::size_t>(block);
    }
  }
}

// A glide that ends with a block must leave its target behind: the next glide starts there.
TEST(FilterSection, ANewGlideStartsWhereTheLastOneLanded) {
  for (SectionType type : {SectionType::onePoleLow, SectionType::lowPass}) {
    FilterSection fast{kRateHz, type, 300.0, 0.7, 0.0}, plain{kRateHz, type, 300.0, 0.7, 0.0};
    fast.setActive(true), plain.setActive(true);
    FilterSection* const series[] = {&fast};
    Samples x = noise(0.5, 0.2, kRateHz);
    constexpr std::size_t kBlock = 63;  // 42 of them to a glide
    for (std::size_t at = 0; at + kBlock <= x.size(); at += kBlock) {
      if (at % (kBlock * 43) == 0)
        for (FilterSection* section : {&fast, &plain}) section->setFrequency(400.0 + static_cast<double>(at));
      const Samples before(x.begin() + static_cast<long>(at), x.begin() + static_cast<long>(at + kBlock));
      FilterSection::processSeries(series, x.data() + at, kBlock);
      for (std::size_t n = 0; n < kBlock; ++n) ASSERT_EQ(x[at + n], plain.processSample(before[n])) << at + n;
    }
  }
}

}  // namespace
}  // namespace corvane
