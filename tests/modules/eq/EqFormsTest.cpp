#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "core/dsp/Staggered.h"
#include "modules/eq/EqChannel.h"
#include "tests/rig/Signals.h"

namespace corvane::eq {
namespace {

constexpr double kRate = 48000.0;

EqChannel channelAtWork(bool analog) {
  EqChannel channel;
  channel.setSampleRate(kRate);
  channel.design(kHi, {1, 8000.0, 9.0, 1});
  channel.design(kHm, {1, 2500.0, -7.0, 2});
  channel.design(kLm, {1, 400.0, 5.0, 0});
  channel.design(kLo, {1, 90.0, -11.0, 1});
  channel.setAnalog(analog);
  channel.reset();
  return channel;
}

/// Gains at rest, no two alike, and `fade` for the first band.
BlockGains restingGains(int type, double fade) {
  BlockGains gains{};
  for (const Band band : {kHi, kHm, kLm, kLo}) {
    gains.fade[band].values[0] = band == kHi ? fade : 1.0 - 0.1 * static_cast<int>(band);
    gains.toneGain[band].values[0] = 1.5 - 0.3 * static_cast<int>(band);
    gains.fade[band].still = gains.toneGain[band].still = true;
  }
  gains.out.values[0] = 1.25;
  gains.out.still = true;
  gains.analogCoeff = analogCoefficient(type, kRate);
  return gains;
}

/// The signal with which the forms are compared: noise to overload, silence, single clicks.
rig::Samples programme() {
  auto x = rig::joined(rig::noise(1.0, 0.05, kRate), rig::silence(0.05, kRate));
  x = rig::joined(x, rig::noise(60.0, 0.02, kRate, 2));
  return rig::joined(x, rig::impulse(1e-20, 0.02, kRate));
}

class EqForms : public ::testing::TestWithParam<std::tuple<int, bool>> {};
INSTANTIATE_TEST_SUITE_P(All, EqForms, ::testing::Combine(::testing::Values(1, 2, 3), ::testing::Bool()));

TEST_P(EqForms, SettledIsThePlainOneBitForBitAtEveryLength) {
  const auto [type, analog] = GetParam();
  EqChannel fast = channelAtWork(analog), plain = channelAtWork(analog);
  const auto x = programme();
  int length = 1;
  for (std::size_t at = 0; at + kBlockFrames <= x.size(); at += static_cast<std::size_t>(length)) {
    length = length * 13 % kBlockFrames + 1;
    const BlockGains gains = restingGains(type, at % 3 == 0 ? 0.0 : 1.0 - 4e-15);
    double expected[kBlockFrames], got[kBlockFrames];
    plain.runPlain(type, &x[at], expected, length, gains);
    fast.run(type, &x[at], got, length, gains);
    for (int i = 0; i < length; ++i)
      ASSERT_EQ(got[i], expected[i]) << "frame " << i << " of " << length << " at " << at;
  }
}

TEST_P(EqForms, AgreeOnNotANumberAndOverflow) {
  const auto [type, analog] = GetParam();
  for (const double bad : {std::nan(""), HUGE_VAL, -HUGE_VAL, 1.7e308, -1.7e308})
    for (const std::size_t place : {0u, 5u, 63u, 64u, 130u}) {
      EqChannel fast = channelAtWork(analog), plain = channelAtWork(analog);
      const BlockGains gains = restingGains(type, 0.7);
      auto x = rig::noise(0.5, 0.01, kRate);
      x[place] = bad;
      for (std::size_t at = 0; at + kBlockFrames <= x.size(); at += kBlockFrames) {
        double expected[kBlockFrames], got[kBlockFrames];
        plain.runPlain(type, &x[at], expected, kBlockFrames, gains);
        fast.run(type, &x[at], got, kBlockFrames, gains);
        for (int i = 0; i < kBlockFrames; ++i)
          ASSERT_EQ(got[i], expected[i])
              << bad << " at " << place << ", " << at + static_cast<std::size_t>(i);
      }
    }
}

TEST_P(EqForms, GoFromOneToTheOtherWhileABandMoves) {
  // The same knob turned on both; the one that may choose its form settles in between and moves again.
  const auto [type, analog] = GetParam();
  EqChannel fast = channelAtWork(analog), plain = channelAtWork(analog);
  const auto x = rig::noise(1.0, 0.3, kRate);
  const BlockGains gains = restingGains(type, 1.0);
  for (std::size_t block = 0; (block + 1) * kBlockFrames <= x.size(); ++block) {
    if (block % 70 == 10)
      for (EqChannel* channel : {&fast, &plain})
        channel->design(kHm, {1, 1000.0 + 9.0 * static_cast<double>(block), 6.0, 1});
    double expected[kBlockFrames], got[kBlockFrames];
    plain.runPlain(type, &x[block * kBlockFrames], expected, kBlockFrames, gains);
    fast.run(type, &x[block * kBlockFrames], got, kBlockFrames, gains);
    for (int i = 0; i < kBlockFrames; ++i) ASSERT_EQ(got[i], expected[i]) << "block " << block;
  }
}

TEST(Staggered, RunsEveryStageOnceForEveryFrameInOrder) {
  for (int count = 0; count < 8; ++count) {
    std::vector<int> first, second, third;
    staggered(
        count, [&](int i) { first.push_back(i); },
        [&](int i) {
          EXPECT_GT(static_cast<int>(first.size()), i);
          second.push_back(i);
        },
        [&](int i) {
          EXPECT_GT(static_cast<int>(second.size()), i);
          third.push_back(i);
        });
    std::vector<int> all(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i) all[static_cast<std::size_t>(i)] = i;
    EXPECT_EQ(first, all);
    EXPECT_EQ(second, all);
    EXPECT_EQ(third, all);
  }
}

TEST(Staggered, TellsTheInnerFramesFromTheOthers) {
  for (int count = 0; count < 12; ++count)
    for (const auto& [from, to] : {std::pair{3, 7}, {4, 4}, {0, 9}, {6, 2}}) {
      std::vector<int> first, second;
      const auto record = [&](std::vector<int>& seen) {
        return [&](int i, auto inside) {
          if (inside) {
            EXPECT_TRUE(i >= from && i < to) << i;
          }
          seen.push_back(i);
        };
      };
      staggered(count, from, std::min(to, count), record(first), record(second));
      std::vector<int> all(static_cast<std::size_t>(count));
      for (int i = 0; i < count; ++i) all[static_cast<std::size_t>(i)] = i;
      EXPECT_EQ(first, all);
      EXPECT_EQ(second, all);
    }
}

}  // namespace
}  // namespace corvane::eq
