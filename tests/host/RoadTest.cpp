#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <numeric>

#include "core/CorvaneMonoEffect.h"
#include "core/ParameterBank.h"
#include "host/Fields.h"
#include "platform/aaxhost/AaxHost.h"

// The built bundle in our own host: what every person and every test travels.

namespace corvane {
namespace {

using aaxhost::Block;
using aaxhost::Instance;
using aaxhost::Library;
using aaxhost::OfflineRunner;
using Floats = std::vector<float>;

constexpr double kRateHz = 48000.0;
constexpr int kPreType = 16, kThreshold = 130, kInsXType = 256;

Floats programme(std::size_t frames) {
  Floats x(frames);
  for (std::size_t n = 0; n < frames; ++n) x[n] = 0.4f * std::sin(0.05f * static_cast<float>(n % 997));
  return x;
}

class Road : public ::testing::Test {
 protected:
  std::shared_ptr<Library> library = Library::load(std::getenv("CORVANE_PLUGIN"));

  std::unique_ptr<Instance> instance() {
    auto made = std::make_unique<Instance>(library, kRateHz);
    made->automate(parameterIdentifier(kPreType),
                   1 / 15.0);  // the plain gain: colours differ from unit to unit
    return made;
  }
  static Floats render(Instance& instance, Floats in, std::size_t block = 512) {
    OfflineRunner runner(kRateHz);
    Floats out(in.size());
    for (std::size_t at = 0; at < in.size(); at += block)
      runner.run(instance, {.input = in.data() + at,
                            .output = out.data() + at,
                            .frames = static_cast<std::int32_t>(std::min(block, in.size() - at))});
    return out;
  }
  static double held(const Instance& instance, int id) {
    double value = -1.0;
    instance.value(parameterIdentifier(id), &value);
    return value;
  }
};

TEST_F(Road, TellsItselfThroughItsEntryPoints) {
  const auto& told = library->description();
  EXPECT_EQ(told.effectId, "example.quadrexa.aax.CorvaneMono");
  EXPECT_EQ(instance()->parameters().size(), 1u + 192u);
  EXPECT_EQ(instance()->bypassId(), "MasterBypassID");
}

TEST_F(Road, SoundsLikeTheProcessorAlone) {
  CorvaneMonoEffect alone;
  alone.setSampleRate(kRateHz);
  const auto strip = instance();
  for (int id = 0; id < kParameters; ++id)
    if (parameterKind(id) & kKindAnnounced)
      alone.setParameter(id, static_cast<double>(static_cast<float>(held(*strip, id))));
  const Floats x = programme(20000);
  Floats expected(x.size());
  const float* in[4] = {x.data(), nullptr, nullptr, nullptr};
  float* out[2] = {expected.data(), nullptr};
  alone.processFloat(in, out, static_cast<int>(x.size()));
  EXPECT_EQ(render(*strip, x), expected);
  EXPECT_EQ(render(*instance(), x, 37), expected) << "whatever the host's blocks";
}

TEST_F(Road, AnEditComesBackWithTheNextIdle) {
  const auto strip = instance();
  strip->edit(parameterIdentifier(kThreshold), 0.25);
  EXPECT_EQ(held(*strip, kThreshold), 0.5);
  strip->idle();
  EXPECT_EQ(held(*strip, kThreshold), 0.25);
  EXPECT_TRUE(strip->settle()) << "requests chase each other";
}

TEST_F(Road, RulesOfAnEditReachTheHost) {
  const auto strip = instance();
  const auto edit = [&](int id, double value) {
    strip->edit(parameterIdentifier(id), value);
    ASSERT_TRUE(strip->settle()) << "requests chase each other";
  };
  edit(117, 1.0);
  edit(149, 1.0);
  EXPECT_EQ(held(*strip, 117), 0.0) << "one monitor at a time";
  EXPECT_EQ(held(*strip, 149), 1.0);
  edit(81, 6 / 8.0);
  EXPECT_EQ(held(*strip, 113), 2 / 8.0) << "a moved place shifts the others";
  edit(kInsXType, 114 / 255.0);
  EXPECT_EQ(held(*strip, 275), 1.0) << "a new module brings its defaults";
}

/// Edits `strip` as a person would, saves it and restores `restored` from that.
void editAndRestore(Instance& strip, Instance& restored,
                    std::initializer_list<std::pair<int, double>> edits) {
  for (const auto& [id, value] : edits) {
    strip.edit(parameterIdentifier(id), value);
    strip.settle();
  }
  aaxhost::Chunk chunk;
  ASSERT_EQ(strip.getChunk(AAX_TypeID("All "), &chunk), AAX_SUCCESS);
  ASSERT_EQ(restored.setChunk(chunk), AAX_SUCCESS);
  restored.settle();
}

TEST_F(Road, ASessionSavedAndRestoredSoundsTheSame) {
  Instance strip(library, kRateHz), restored(library, kRateHz);
  editAndRestore(strip, restored,
                 {{kPreType, 1 / 15.0}, {kThreshold, 0.2}, {128, 0.3}, {161, 0.7}, {kInsXType, 92 / 255.0}});
  const Floats x = programme(20000);
  EXPECT_EQ(render(strip, x), render(restored, x));
}

TEST_F(Road, ARestoredStateIsNotAnsweredByRules) {
  constexpr int kPreMonitor = 21, kCompType = 112, kCompMonitor = 117, kEqType = 144;
  Instance strip(library, kRateHz), restored(library, kRateHz);
  editAndRestore(strip, restored, {{kCompType, 3 / 15.0}, {kEqType, 3 / 15.0}, {kCompMonitor, 1.0}});
  EXPECT_EQ(held(restored, kEqType), 3.0f / 15.0f);
  EXPECT_EQ(held(restored, kCompMonitor), 1.0) << "a new Type clears monitors in an edit alone";
  restored.edit(parameterIdentifier(kPreMonitor), 1.0);
  restored.settle();
  EXPECT_EQ(held(restored, kCompMonitor), 0.0) << "the next edit has its rules";
}

TEST_F(Road, SeveralInstancesRenderInOneCall) {
  const auto first = instance(), second = instance();
  second->automate(parameterIdentifier(kThreshold), 0.0);
  Floats x = programme(512), a(512), b(512);
  const Floats loneA = render(*instance(), x);
  const aaxhost::Seat seats[] = {{first.get(), {.input = x.data(), .output = a.data(), .frames = 512}},
                                 {second.get(), {.input = x.data(), .output = b.data(), .frames = 512}}};
  aaxhost::render(seats);
  EXPECT_EQ(a, loneA);
  EXPECT_NE(a, b);
}

TEST_F(Road, MetersAreReadAboveTheirOffset) {
  const auto strip = instance();
  render(*strip, Floats(4800, 0.5f));
  float value = -1.0f;
  ASSERT_EQ(strip->meter(AAX_TypeID("mtrI"), &value), AAX_SUCCESS);
  EXPECT_EQ(value, 0.5f);
  strip->meter(AAX_TypeID("mtrI"), &value);
  EXPECT_EQ(value, 0.0f) << "a peak starts again after it was read";
  strip->meter(AAX_TypeID("mtcA"), &value);
  EXPECT_NEAR(value, 0.6f, 1e-3f);
  EXPECT_EQ(strip->latencySamples(), 0);
}

TEST_F(Road, PeaksAreFoundWhereverTheyStand) {
  const auto strip = instance();
  for (std::size_t frames : {1, 7, 8, 9, 21})
    for (std::size_t at = 0; at < frames; ++at)
      for (const float peak : {0.75f, -0.75f}) {
        Floats x(frames, 0.25f);
        x[(at + 1) % frames] = NAN;
        x[at] = peak;
        render(*strip, x);
        float shown = -1.0f;
        strip->meter(AAX_TypeID("mtrI"), &shown);
        EXPECT_EQ(shown, 0.75f) << "frame " << at << " of " << frames;
      }
}

TEST_F(Road, NothingIsLeftWhenTheLastInstanceGoes) {
  {
    const auto strip = instance();
    render(*strip, programme(512));
    EXPECT_GT(library->livingObjects(), 0);
  }
  EXPECT_EQ(library->livingObjects(), 0);
}

}  // namespace
}  // namespace corvane
