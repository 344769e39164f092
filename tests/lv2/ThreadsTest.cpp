#include <gtest/gtest.h>

#include <atomic>
#include <cmath>
#include <thread>

#include "tests/lv2/RawHost.h"

// What may happen at the same time: one thread runs an instance, another saves and restores it, others make
// and end instances of their own.

namespace corvane::lv2 {
namespace {

TEST(Lv2Threads, AHostSavesAndRestoresWhileSoundRuns) {
  const Binary binary;
  const Floats x = programme(4800);
  RawStrip strip(binary);
  std::atomic<bool> going = true;
  std::thread control([&] {
    while (going) EXPECT_EQ(strip.restore(strip.save()), LV2_STATE_SUCCESS);
  });
  Floats y(256);
  strip.connect(x.data(), y.data());
  for (int block = 0; block < 2000; ++block) {
    strip.control("comp_position") = static_cast<float>(block % 9 + 1);
    strip.control("insx_type") = block / 100 % 2 == 0 ? 113.0f : 92.0f;
    strip.control("eq_hi_gain") = static_cast<float>(block % 36 - 18);
    strip.run(256);
    ASSERT_TRUE(std::isfinite(y[static_cast<std::size_t>(block % 256)]));
  }
  going = false;
  control.join();
}

TEST(Lv2Threads, InstancesComeAndGoBesideOneThatRuns) {
  const Binary binary;
  const Floats x = programme(4800);
  RawStrip strip(binary);
  strip.control("pre_type") = 1.0f;  // the colours differ from unit to unit
  const Floats expected = strip.render(x);
  std::atomic<bool> going = true;
  const auto comeAndGo = [&] {
    while (going) {
      RawStrip other(binary);
      ASSERT_TRUE(other.handle);
      other.render(x, 480);
    }
  };
  std::thread first(comeAndGo), second(comeAndGo);
  for (int round = 0; round < 20; ++round) {
    RawStrip alike(binary);
    alike.control("pre_type") = 1.0f;
    EXPECT_EQ(alike.render(x), expected);
  }
  going = false;
  first.join();
  second.join();
}

}  // namespace
}  // namespace corvane::lv2
