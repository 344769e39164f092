#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <cstdlib>
#include <random>

#include "core/ParameterBank.h"
#include "tests/rig/Repeating.h"
#include "tests/soak/Controls.h"

// The built library between threads. Run these under the thread sanitizer as well; CORVANE_THREADS_SECONDS
// says for how long the writers write.

namespace corvane {
namespace {

using aaxhost::Instance;
using aaxhost::Library;
using aaxhost::Mode;
using Floats = std::vector<float>;

constexpr double kRateHz = 48000.0;
constexpr int kPreType = 16;

Floats noise(std::size_t samples) {
  std::mt19937 random(11);
  std::uniform_real_distribution<float> level(-0.5f, 0.5f);
  Floats x(samples);
  for (float& sample : x) sample = level(random);
  return x;
}

double secondsToWrite() {
  const char* const asked = std::getenv("CORVANE_THREADS_SECONDS");
  return asked ? std::atof(asked) : 2.0;
}

TEST(Threads, FourWritersATimerAndSoundDoNotDisturbEachOther) {
  const auto library = Library::load(std::getenv("CORVANE_PLUGIN"));
  Instance first(library, kRateHz, Mode::Live), second(library, kRateHz, Mode::Live);
  const std::vector<Instance*> both{&first, &second};
  const Floats x = noise(256);
  std::atomic<long> blocks = 0, notFinite = 0;
  {
    const rig::Repeating audio([&, y = Floats(512)]() mutable {
      const aaxhost::Seat seats[] = {{&first, {.input = x.data(), .output = y.data(), .frames = 256}},
                                     {&second, {.input = x.data(), .output = &y[256], .frames = 256}}};
      aaxhost::render(seats);
      for (const float sample : y)
        if (!std::isfinite(sample)) ++notFinite;
      if (++blocks % 16 == 0) std::this_thread::sleep_for(std::chrono::milliseconds(1));  // others live too
    });
    const aaxhost::TimerThread timer(both, 0.005);
    std::vector<std::unique_ptr<soak::ControlThread>> writers;
    for (std::uint64_t seed = 1; seed <= 4; ++seed)
      writers.push_back(std::make_unique<soak::ControlThread>(both, seed));
    std::this_thread::sleep_for(std::chrono::duration<double>(secondsToWrite()));
    for (const auto& writer : writers) {
      EXPECT_EQ(writer->finish(), "");
      EXPECT_GT(writer->operations(), 20);
    }
  }
  EXPECT_GT(blocks, 50);
  EXPECT_EQ(notFinite, 0);
}

TEST(Threads, SixtyFourStripsOnEightSoundAsOneAlone) {
  const auto library = Library::load(std::getenv("CORVANE_PLUGIN"));
  constexpr std::size_t kStrips = 64, kThreads = 8, kBlocks = 12, kFrames = 128;
  const Floats x = noise(kBlocks * kFrames);
  const auto sound = [&x](Instance& strip) {
    // the plain gain: colours differ from unit to unit
    strip.automate(parameterIdentifier(kPreType), 1 / 15.0);
    std::mt19937 random(7);
    Floats y(x.size());
    for (std::size_t at = 0; at < x.size(); at += kFrames) {
      const auto& moved = strip.parameters()[1 + random() % (strip.parameters().size() - 1)].id;
      const double value = static_cast<double>(random() % 1001) / 1000.0;
      if (moved != parameterIdentifier(kPreType)) strip.automate(moved, value);
      strip.render({.input = &x[at], .output = &y[at], .frames = kFrames});
      strip.idle();
      strip.timer();
    }
    return y;
  };
  Instance alone(library, kRateHz, Mode::Live);
  const Floats expected = sound(alone);
  std::vector<std::unique_ptr<Instance>> strips;
  for (std::size_t k = 0; k < kStrips; ++k)
    strips.push_back(std::make_unique<Instance>(library, kRateHz, Mode::Live));
  std::vector<Floats> sounds(kStrips);
  std::vector<std::thread> threads;
  for (std::size_t t = 0; t < kThreads; ++t)
    threads.emplace_back([&, t] {
      for (std::size_t k = t; k < kStrips; k += kThreads) sounds[k] = sound(*strips[k]);
    });
  for (std::thread& thread : threads) thread.join();
  for (std::size_t k = 0; k < kStrips; ++k) EXPECT_EQ(sounds[k], expected) << k;
}

TEST(Threads, StripsAreMadeAndGoBesideOneThatSounds) {
  const auto library = Library::load(std::getenv("CORVANE_PLUGIN"));
  Instance stays(library, kRateHz, Mode::Live);
  const Floats x = noise(128);
  {
    const rig::Repeating audio([&, y = Floats(128)]() mutable {
      stays.render({.input = x.data(), .output = y.data(), .frames = 128});
    });
    const auto visit = [&](unsigned seed) {
      return [&, random = std::mt19937(seed)]() mutable {
        Instance guest(library, kRateHz, Mode::Live);
        aaxhost::Chunk state;
        if (random() % 2) stays.getChunk(AAX_TypeID("All "), &state);
        if (!state.data.empty()) guest.setChunk(state);
        Floats y(128);
        if (random() % 2) guest.render({.input = x.data(), .output = y.data(), .frames = 128});
      };
    };
    const rig::Repeating one(visit(1)), other(visit(2));
    std::this_thread::sleep_for(std::chrono::duration<double>(std::min(2.0, secondsToWrite())));
  }
  EXPECT_GT(library->livingObjects(), 0);
}

}  // namespace
}  // namespace corvane
