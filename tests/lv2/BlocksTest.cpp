#include <random>

#include "tests/lv2/Settings.h"

// Hosts cut time as they like: the same sound must come out.

namespace corvane::lv2 {
namespace {

class Lv2Blocks : public ::testing::Test {
 protected:
  template <typename NextLength>
  Floats heard(std::size_t round, const Floats& x, NextLength next) {
    RawStrip strip(binary);
    fillRackUncoloured(strip, round);
    rest(strip);
    return strip.renderInBlocksOf(next, x);
  }
  Binary binary;
};

TEST_F(Lv2Blocks, LengthsThatChangeWithEachCallSoundAsEvenOnes) {
  std::vector<std::size_t> lengths{0,  1,   2,   3,   7,   10,   16,   17,   31,   32,   33,  63,
                                   64, 127, 256, 512, 675, 1024, 1365, 1536, 2027, 2048, 4096};
  const Floats x = programme(24000);
  std::mt19937 dice(1);
  for (std::size_t round = 0; round < kRounds; ++round) {
    std::ranges::shuffle(lengths, dice);
    std::size_t k = 0;
    const auto changing = [&] { return k++ % 2 == 0 ? lengths[k / 2 % lengths.size()] : dice() % 100; };
    EXPECT_EQ(heard(round, x, changing), heard(round, x, [] { return std::size_t{512}; }))
        << "round " << round;
  }
}

TEST_F(Lv2Blocks, SingleSamplesAndWholeFilesSoundAlike) {
  const Floats x = programme(20000);
  for (const std::size_t round : {std::size_t{3}, std::size_t{8}}) {
    const Floats expected = heard(round, x, [] { return std::size_t{512}; });
    for (const std::size_t length : {std::size_t{1}, std::size_t{8192}, std::size_t{16384}, x.size()})
      EXPECT_EQ(heard(round, x, [&] { return length; }), expected) << length;
  }
}

TEST_F(Lv2Blocks, TenThousandEmptyBlocksChangeNothing) {
  const Floats x = programme(4800);
  RawStrip plain(binary), patient(binary);
  for (RawStrip* strip : {&plain, &patient}) {
    fillRackUncoloured(*strip, 4);
    rest(*strip);
    strip->render(x);
  }
  for (int call = 0; call < 10000; ++call) patient.run(0);
  EXPECT_EQ(patient.latency, 0.0f);
  EXPECT_EQ(patient.meters, plain.meters);
  EXPECT_EQ(patient.render(x), plain.render(x));
}

}  // namespace
}  // namespace corvane::lv2
