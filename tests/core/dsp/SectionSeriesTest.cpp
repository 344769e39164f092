#include "core/dsp/SectionSeries.h"

#include <gtest/gtest.h>

#include <cstring>
#include <limits>

#include "tests/rig/Signals.h"

namespace corvane {
namespace {

using namespace rig;

std::vector<GlideFilter> chain(int sections) {
  std::vector<GlideFilter> chain;
  for (int k = 0; k < sections; ++k) {
    GlideFilter& section =
        chain.emplace_back(48000.0, SectionType::peaking, 50.0 * (k + 1), 2.0 + k, 3.0 * (k % 5) - 7.0);
    section.active = true;
    section.retarget(), section.snapToTarget();
  }
  return chain;
}

bool sameBits(const Samples& a, const Samples& b) {
  return a.size() == b.size() &&
         (a.empty() || std::memcmp(a.data(), b.data(), a.size() * sizeof(double)) == 0);
}

// The pipeline against section after section, block by block: at every length, through glides, with
// not-a-number and infinity on the way, and whatever the number of sections.
TEST(SectionSeries, IsBitForBitSectionAfterSection) {
  for (const int sections : {1, 2, 3, 4, 5, 6, 7, 12, 18}) {
    auto piped = chain(sections), plain = chain(sections);
    const Samples source = noise(0.5, 0.5, 48000.0);
    std::size_t at = 0;
    for (int block = 0; block < 200; ++block) {
      const int length = block % 65;
      Samples a(source.begin() + static_cast<long>(at), source.begin() + static_cast<long>(at) + length);
      if (block == 90 && length > 20) a[20] = std::numeric_limits<double>::quiet_NaN();
      if (block == 110 && length > 7) a[7] = std::numeric_limits<double>::infinity();
      if (block == 120)
        for (auto* some : {&piped, &plain}) some->back().setGainDb(9.0);
      Samples b = a;
      processSeries(piped, a.data(), length);
      for (GlideFilter& section : plain) section.processBuffer(b.data(), length);
      ASSERT_TRUE(sameBits(a, b)) << sections << " sections, block " << block << " of " << length;
      at += static_cast<std::size_t>(length);
    }
    for (int k = 0; k < sections; ++k) {
      const auto& a = piped[static_cast<std::size_t>(k)].history;
      const auto& b = plain[static_cast<std::size_t>(k)].history;
      EXPECT_EQ(std::memcmp(&a, &b, sizeof a), 0) << k;
    }
  }
}

// From where the flush changes nothing to where it is all that is left, block by block against single
// samples.
TEST(SectionSeries, DiesAwayBitForBitAsSampleBySample) {
  for (const int sections : {1, 2, 4, 6}) {
    auto fast = chain(sections), plain = chain(sections);
    Samples x = joined(noise(1e-11, 0.05, 48000.0), silence(1.0, 48000.0));
    x.resize(x.size() / kBlockFrames * kBlockFrames);
    Samples y = x;
    for (std::size_t at = 0; at < x.size(); at += kBlockFrames) processSeries(fast, &x[at], kBlockFrames);
    for (double& v : y)
      for (GlideFilter& section : plain) v = section.processSample(v);
    EXPECT_TRUE(sameBits(x, y)) << sections << " sections";
    EXPECT_LT(std::abs(y.back()), 1e-25) << sections << " sections";
  }
}

TEST(SideBySide, IsBitForBitOneSectionAfterTheOther) {
  auto paired = chain(2), plain = chain(2);
  const Samples first = noise(0.5, 0.5, 48000.0, 2), second = noise(0.5, 0.5, 48000.0, 3);
  std::size_t at = 0;
  for (int block = 0; block < 200; ++block) {
    const int length = block % 65;
    const auto cut = [&](const Samples& x) {
      const auto from = x.begin() + static_cast<long>(at);
      return Samples(from, from + length);
    };
    Samples a = cut(first), b = cut(second);
    if (block == 90 && length > 20) b[20] = std::numeric_limits<double>::quiet_NaN();
    if (block == 120)  // one glides, the other stands
      for (auto* some : {&paired, &plain}) some->back().setGainDb(9.0);
    Samples c = a, d = b;
    processSideBySide(paired[0], a.data(), paired[1], b.data(), length);
    plain[0].processBuffer(c.data(), length), plain[1].processBuffer(d.data(), length);
    ASSERT_TRUE(sameBits(a, c) && sameBits(b, d)) << "block " << block << " of " << length;
    at += static_cast<std::size_t>(length);
  }
  for (std::size_t k = 0; k < 2; ++k)
    EXPECT_EQ(std::memcmp(&paired[k].history, &plain[k].history, sizeof paired[k].history), 0) << k;
}

}  // namespace
}  // namespace corvane
