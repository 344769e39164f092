#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <random>

#include "core/ParameterBank.h"
#include "platform/aaxhost/AaxHost.h"

// Hosts do things in any order. The built library, in our own host.

namespace corvane {
namespace {

using aaxhost::Instance;
using aaxhost::Library;
using aaxhost::Mode;
using Floats = std::vector<float>;

constexpr double kRateHz = 48000.0;
constexpr int kPreType = 16, kThreshold = 130;
constexpr AAX_CTypeID kState = AAX_TypeID("All ");

class Lifecycle : public testing::TestWithParam<Mode> {
 protected:
  std::shared_ptr<Library> library = Library::load(std::getenv("CORVANE_PLUGIN"));

  std::unique_ptr<Instance> made() const { return std::make_unique<Instance>(library, kRateHz, GetParam()); }
  /// A tenth of a second behind whatever came before.
  static Floats sound(Instance& strip) {
    std::mt19937 random(3);
    std::uniform_real_distribution<float> level(-0.5f, 0.5f);
    Floats x(4800);
    for (float& sample : x) sample = level(random);
    for (std::size_t at = 0; at < x.size(); at += 480) {
      strip.idle();
      strip.timer();
      strip.render({.input = &x[at], .output = &x[at], .frames = 480});
    }
    return x;
  }
  /// A state whose sound is the same for every unit, and far from the default.
  aaxhost::Chunk stored() const {
    const auto strip = made();
    for (const auto& [id, value] : {std::pair{kPreType, 1 / 15.0}, {kThreshold, 0.2}, {256, 113 / 255.0}}) {
      strip->edit(parameterIdentifier(id), value);
      strip->settle();
    }
    aaxhost::Chunk state;
    EXPECT_EQ(strip->getChunk(kState, &state), AAX_SUCCESS);
    return state;
  }
};

INSTANTIATE_TEST_SUITE_P(Modes, Lifecycle, testing::Values(Mode::Offline, Mode::Live),
                         [](const auto& each) { return each.param == Mode::Live ? "Live" : "Offline"; });

// Nothing that comes before the first block is heard: the first three things that a host does, in every
// order.
TEST_P(Lifecycle, WhateverAHostDoesBeforeTheFirstBlockTheSoundIsTheSame) {
  const aaxhost::Chunk state = stored();
  const std::function<void(Instance&)> first[] = {
      [&](Instance& strip) { strip.setChunk(state); },
      [](Instance& strip) { strip.timer(); },
      [](Instance& strip) { strip.idle(); },
      [](Instance& strip) { strip.setSampleRate(kRateHz); },
      [](Instance& strip) {
        aaxhost::Chunk own;
        strip.getChunk(kState, &own);
      },
      [](Instance& strip) {
        float reading = 0.0f;
        for (const auto& meter : strip.library().description().meters) strip.meter(meter.id, &reading);
      }};
  const auto plain = made();
  plain->setChunk(state);
  const Floats expected = sound(*plain);
  constexpr std::size_t kCount = std::size(first);
  for (std::size_t order = 0; order < kCount * kCount * kCount; ++order) {
    const auto strip = made();
    for (const std::size_t which : {order % kCount, order / kCount % kCount, order / kCount / kCount})
      first[which](*strip);
    strip->setChunk(state);
    ASSERT_EQ(sound(*strip), expected) << order;
  }
}

// 1e-6: -120 dB, what filters keep of an earlier sound.
TEST_P(Lifecycle, AStateIsTheSameBeforeBetweenAndBehindBlocks) {
  const aaxhost::Chunk state = stored();
  const auto rested = [](Instance& strip) {
    Floats silence(4800);
    for (int k = 0; k < 50; ++k) {
      strip.idle();
      strip.timer();
      strip.render({.input = silence.data(), .output = silence.data(), .frames = 4800});
      std::ranges::fill(silence, 0.0f);
    }
    return sound(strip);
  };
  const auto before = made(), between = made(), behind = made();
  before->setChunk(state);
  sound(*before);
  between->render({nullptr, nullptr, 0});
  between->setChunk(state);
  sound(*between);
  sound(*behind);
  behind->setChunk(state);
  const Floats expected = rested(*before);
  for (Instance* strip : {between.get(), behind.get()}) {
    const Floats heard = rested(*strip);
    for (std::size_t n = 0; n < heard.size(); ++n)
      ASSERT_NEAR(heard[n], expected[n], 1e-6f) << (strip == behind.get() ? "behind, " : "between, ") << n;
  }
}

TEST_P(Lifecycle, StripsGoInAnyOrderAndTheLibraryCanComeBack) {
  const aaxhost::Chunk state = stored();
  Floats expected;
  for (unsigned seed = 1; seed <= 3; ++seed) {
    std::vector<std::unique_ptr<Instance>> strips;
    for (int k = 0; k < 6; ++k) strips.push_back(made());
    std::ranges::shuffle(strips, std::mt19937(seed));
    while (strips.size() > 1) {
      strips.pop_back();
      if (strips.size() % 2) strips.front()->render({nullptr, nullptr, 0});
    }
    strips.push_back(made());
    strips.back()->setChunk(state);
    const Floats heard = sound(*strips.back());
    if (expected.empty()) expected = heard;
    EXPECT_EQ(heard, expected);
    EXPECT_GT(library->livingObjects(), 0);
    strips.clear();
    EXPECT_EQ(library->livingObjects(), 0);
    library.reset();
    library = Library::load(std::getenv("CORVANE_PLUGIN"));
  }
}

}  // namespace
}  // namespace corvane
