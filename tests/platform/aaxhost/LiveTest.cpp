#include <gtest/gtest.h>

#include <chrono>
#include <random>
#include <thread>

#include "tests/platform/aaxhost/FakeLibrary.h"
#include "tests/rig/RenderGuard.h"
#include "tests/rig/Repeating.h"

// The harm: a value lost or torn between two threads, or sound that waits for a window. Run these under the
// thread sanitizer as well.

namespace corvane::aaxhost {
namespace {

using namespace std::chrono_literals;

TEST(Live, WritersTimersAndRenderDoNotDisturbEachOther) {
  FakeLibrary fake;
  fake.probe.logging = false;
  fake.probe.torn = fake.probe.splitPairs = fake.probe.commands = 0;
  std::vector<std::unique_ptr<Instance>> all;
  for (int k = 0; k < 2; ++k) all.push_back(std::make_unique<Instance>(fake.library, 96000.0, Mode::Live));
  std::atomic<long> violations = 0, blocks = 0, sent = 0;
  {
    const rig::Repeating audio([&, out = std::vector<float>(128)]() mutable {
      const std::vector<float>& in = out;
      const Seat seats[] = {{all[0].get(), {in.data(), out.data(), 64}},
                            {all[1].get(), {in.data(), out.data() + 64, 64}}};
      int counted = 0;
      {
        const rig::RenderGuard guard;
        render(seats);
        counted = guard.violations();
      }
      violations += counted;
      if (++blocks % 64 == 0) std::this_thread::sleep_for(100us);  // the others live on two cores as well
    });
    const TimerThread timers({all[0].get(), all[1].get()}, 0.001);
    const auto writer = [&](unsigned seed) {
      return [&, random = std::mt19937(seed)]() mutable {
        Instance& instance = *all[random() % 2];
        const double value = static_cast<double>(random() % 1024) / 1024;
        Chunk chunk;
        float reading = 0.0f;
        switch (random() % 6) {
          case 0: {
            const Instance::ControlScope both(instance);  // the two belong together
            instance.automate("gain", value);
            instance.automate("twin", value);
            break;
          }
          case 1: instance.edit("ask", value); break;
          case 2: instance.getChunk(AAX_TypeID("elck"), &chunk); break;
          case 3: instance.setSampleRate(44100.0 + value); break;
          case 4:
            instance.meter(AAX_TypeID("mtrI"), &reading);
            instance.setBypass(value > 0.5);
            break;
          default:
            if (long none = 0; fake.probe.commandToSend.compare_exchange_strong(none, 3)) sent += 3;
        }
      };
    };
    const rig::Repeating first(writer(1)), second(writer(2));
    std::this_thread::sleep_for(2s);
  }
  const auto quiet = [&] {
    for (const auto& instance : all) {
      instance->settle();
      instance->timer();
      instance->render({nullptr, nullptr, 0});
      instance->render({nullptr, nullptr, 0});
    }
  };
  quiet();
  quiet();
  EXPECT_GT(blocks, 1000);
  EXPECT_GT(sent, 30) << "commands go one by one, each after the last was seen taken";
  EXPECT_EQ(violations, 0);
  EXPECT_EQ(fake.probe.torn, 0);
  EXPECT_EQ(fake.probe.splitPairs, 0);
  // every command arrived, none of them twice
  EXPECT_EQ(fake.probe.commands, sent - fake.probe.commandToSend);
}

TEST(Live, TheLastValueAlwaysArrives) {
  FakeLibrary fake;
  fake.probe.logging = false;
  Instance instance(fake.library, 48000.0, Mode::Live);
  std::atomic<float> heard = -1.0f;
  const AudioThread audio(48000.0, 16, [&] {
    float in = 1.0f, out = 0.0f;
    instance.render({&in, &out, 1});
    heard = out;
  });
  const TimerThread timers({&instance}, 0.001);
  std::mt19937 random(3);
  for (int round = 0; round < 20; ++round) {
    float last = 0.0f;
    for (int k = 0; k < 200; ++k) {
      last = static_cast<float>(random() % 4096) / 4096;
      instance.automate("gain", static_cast<double>(last));
    }
    const auto deadline = std::chrono::steady_clock::now() + 5s;
    while (heard != last && std::chrono::steady_clock::now() < deadline) std::this_thread::sleep_for(200us);
    ASSERT_EQ(heard, last) << round;
  }
  EXPECT_GT(audio.blocks(), 0);
}

TEST(Live, ManyInstancesOnSeveralThreadsSoundAsOneAlone) {
  FakeLibrary fake;
  fake.probe.logging = false;
  constexpr int kInstances = 16, kThreads = 4, kBlocks = 200;
  const auto sound = [](Instance& instance) {
    std::mt19937 random(5);
    std::vector<float> all;
    for (int k = 0; k < kBlocks; ++k) {
      instance.automate("gain", static_cast<double>(random() % 256) / 256);
      float block[8];
      std::fill_n(block, 8, 1.0f);
      instance.render({block, block, static_cast<std::int32_t>(k % 9)});
      all.insert(all.end(), block, block + 8);
    }
    return all;
  };
  Instance alone(fake.library, 48000.0);
  const std::vector<float> expected = sound(alone);
  std::vector<std::unique_ptr<Instance>> all;
  for (int k = 0; k < kInstances; ++k)
    all.push_back(std::make_unique<Instance>(fake.library, 48000.0, Mode::Live));
  std::vector<std::vector<float>> sounds(kInstances);
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t)
    threads.emplace_back([&, t] {
      for (std::size_t k = static_cast<std::size_t>(t); k < kInstances; k += kThreads)
        sounds[k] = sound(*all[k]);
    });
  for (std::thread& thread : threads) thread.join();
  for (const auto& each : sounds) EXPECT_EQ(each, expected);
}

}  // namespace
}  // namespace corvane::aaxhost
