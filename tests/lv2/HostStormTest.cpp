#include <atomic>
#include <chrono>
#include <cstdlib>
#include <random>
#include <thread>

#include "tests/lv2/Settings.h"

// The harm: instances that disturb each other, or a host's threads that do. Run these under the thread
// sanitizer as well; CORVANE_STORM_SECONDS makes the storm longer.

namespace corvane::lv2 {
namespace {

using namespace std::chrono_literals;

TEST(Lv2HostStorm, ManyInstancesOnEightThreadsSoundAsOneAlone) {
  constexpr std::size_t kInstances = 64, kThreads = 8;
  const Binary binary;
  const Floats x = programme(4096);
  const auto sound = [&x](RawStrip& strip) {
    fillRackUncoloured(strip, 4);
    Floats out = strip.render(x, 100);
    strip.control("comp_position") = 1.0f;
    const Floats more = strip.render(x, 333);
    out.insert(out.end(), more.begin(), more.end());
    return out;
  };
  RawStrip alone(binary);
  const Floats expected = sound(alone);
  std::vector<std::unique_ptr<RawStrip>> strips(kInstances);
  std::atomic<int> others = 0;
  std::vector<std::thread> threads;
  for (std::size_t t = 0; t < kThreads; ++t)
    threads.emplace_back([&, t] {
      for (std::size_t k = t; k < kInstances; k += kThreads) {  // made here as well: hosts load in parallel
        strips[k] = std::make_unique<RawStrip>(binary);
        if (sound(*strips[k]) != expected) ++others;
      }
    });
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(others, 0);
}

TEST(Lv2HostStorm, WritersAndSavesLeaveTheSoundAlone) {
  const Binary binary;
  RawStrip strip(binary, 48000.0, true);
  // a host's queue: what others write reaches the ports between two runs
  std::vector<std::atomic<float>> asked(strip.controls.size());
  for (std::size_t k = 0; k < asked.size(); ++k) asked[k] = strip.controls[k];
  const char* given = std::getenv("CORVANE_STORM_SECONDS");
  const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(given ? std::atoi(given) : 2);
  std::atomic<bool> going = true;
  std::vector<std::thread> others;
  for (unsigned seed = 1; seed <= 4; ++seed)
    others.emplace_back([&, seed] {
      std::mt19937 dice(seed);
      while (going) {
        const std::size_t k = dice() % asked.size();
        const Scale& scale = strip.all.controls[k].scale;
        const float at = static_cast<float>(dice() % 1001) / 1000.0f;
        asked[k].store(scale.lowest + at * (scale.highest - scale.lowest), std::memory_order_relaxed);
        if (dice() % 64 == 0) std::this_thread::sleep_for(100us);
      }
    });
  others.emplace_back([&] {
    while (going) {
      EXPECT_EQ(strip.restore(strip.save()), LV2_STATE_SUCCESS);
      std::this_thread::sleep_for(1ms);
    }
  });
  std::mt19937 dice(5);
  const Floats x = programme(512);
  Floats y(512);
  strip.connect(x.data(), y.data(), x.data());
  long blocks = 0, broken = 0;
  for (; std::chrono::steady_clock::now() < end; ++blocks) {
    for (std::size_t k = 0; k < asked.size(); ++k)
      strip.controls[k] = asked[k].load(std::memory_order_relaxed);
    strip.run(static_cast<std::uint32_t>(dice() % 513));
    for (const float sample : y) broken += !std::isfinite(sample);
  }
  going = false;
  for (std::thread& thread : others) thread.join();
  EXPECT_EQ(broken, 0);
  EXPECT_GT(blocks, 50);
}

}  // namespace
}  // namespace corvane::lv2
