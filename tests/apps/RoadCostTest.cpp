#include <time.h>

#include <algorithm>

#include "core/CorvaneMonoEffect.h"
#include "corvane/StripRunner.h"
#include "tests/apps/CommandRig.h"

// What the way through the plug-in and its host may cost. Processor time, since others work on this machine
// too.

namespace corvane::rig {
namespace {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool kTimesMeanSomething = false;
#else
constexpr bool kTimesMeanSomething = true;
#endif

double processorMs() {
  timespec now{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) * 1e3 + static_cast<double>(now.tv_nsec) * 1e-6;
}

struct RoadCost : CommandLineTest {
  void SetUp() override {
    if (!kTimesMeanSomething) GTEST_SKIP() << "a sanitizer's times are its own";
  }
};

// First here: in a process of its own it is the first strip, with all that is read and worked out once.
TEST_F(RoadCost, LibraryAndFirstStripStandWithinFiftyMilliseconds) {
  const double start = processorMs();
  const cli::StripRunner strip;
  EXPECT_LT(processorMs() - start, 50.0);
}

TEST_F(RoadCost, AMinuteTakesAtMostFivePerCentMore) {
  constexpr int kBlock = 512, kSecond = 94 * kBlock, kSeconds = 60;
  const Channel input = noise(kSecond, 1, 0.4F);
  Channel output(kSecond);
  cli::StripRunner strip;
  CorvaneMonoEffect effect;
  effect.setSampleRate(48000.0);
  std::vector<double> ratios;  // second by second, so that both meet the same disturbances
  for (int second = 0; second < kSeconds; ++second) {
    const double start = processorMs();
    for (int n = 0; n < kSecond; n += kBlock) {
      const float* const in[4] = {&input[static_cast<std::size_t>(n)], nullptr, nullptr, nullptr};
      float* const out[2] = {&output[static_cast<std::size_t>(n)], nullptr};
      effect.processFloat(in, out, kBlock);
    }
    const double middle = processorMs();
    for (int n = 0; n < kSecond; n += kBlock)
      strip.processBlock(&input[static_cast<std::size_t>(n)], nullptr, &output[static_cast<std::size_t>(n)],
                         kBlock, false);
    ratios.push_back((processorMs() - middle) / (middle - start));
  }
  std::ranges::nth_element(ratios, ratios.begin() + kSeconds / 2);
  RecordProperty("ratio", std::to_string(ratios[kSeconds / 2]));
  EXPECT_LT(ratios[kSeconds / 2], 1.05);
}

}  // namespace
}  // namespace corvane::rig
