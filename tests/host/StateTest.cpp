#include <gtest/gtest.h>

#include <random>

#include "control/EditorDesk.h"
#include "core/ParameterBank.h"
#include "platform/aaxhost/AaxHost.h"

// States through the built library: what a host's session brings back, and what it must not.

namespace corvane {
namespace {

using aaxhost::Chunk;
using aaxhost::Instance;

constexpr AAX_CTypeID kState = AAX_TypeID("All ");

class StateRoad : public testing::Test {
 protected:
  const std::shared_ptr<aaxhost::Library> library = aaxhost::Library::load(std::getenv("CORVANE_PLUGIN"));

  static Chunk stateOf(const Instance& strip) {
    Chunk state;
    EXPECT_EQ(strip.getChunk(kState, &state), AAX_SUCCESS);
    return state;
  }
  static std::vector<double> held(const Instance& strip) {
    std::vector<double> values;
    for (const auto& parameter : strip.parameters()) {
      values.emplace_back();
      strip.value(parameter.id, &values.back());
    }
    return values;
  }
};

TEST_F(StateRoad, ComesBackFromAHundredSettings) {
  Instance strip(library, 48000.0), restored(library, 48000.0);
  std::mt19937 random(23);
  EditorDesk* desk = nullptr;
  std::uint32_t written = 0;
  ASSERT_EQ(strip.effectParameters().GetCustomData(EditorDesk::kCustomDataId, sizeof desk, &desk, &written),
            AAX_SUCCESS);
  for (int round = 0; round < 100; ++round) {
    {
      const Instance::ControlScope turn(strip);
      desk->selectPreset({0, 0, static_cast<int>(random() % 235)});
    }
    strip.settle();
    for (int k = 0; k < 10; ++k) {
      const auto& id = strip.parameters()[1 + random() % (strip.parameters().size() - 1)].id;
      strip.edit(id, static_cast<double>(random() % 1000) / 999.0);
      ASSERT_TRUE(strip.settle());
    }
    const Chunk state = stateOf(strip);
    ASSERT_EQ(restored.setChunk(state), AAX_SUCCESS) << round;
    ASSERT_TRUE(restored.settle());
    ASSERT_EQ(stateOf(restored).data, state.data) << round;
    const std::vector<double> expected = held(strip), got = held(restored);
    for (std::size_t k = 0; k < expected.size(); ++k)
      ASSERT_EQ(static_cast<float>(got[k]), static_cast<float>(expected[k]))
          << round << ", " << strip.parameters()[k].id;
  }
}

// What is refused changes nothing; what is taken is whole: it gives its own state back.
TEST_F(StateRoad, BrokenOnesAreRefusedOrTakenWhole) {
  Instance strip(library, 48000.0);
  strip.edit(parameterIdentifier(130), 0.2);
  strip.settle();
  const Chunk good = stateOf(strip);
  strip.edit(parameterIdentifier(130), 0.7);
  strip.settle();
  const Chunk before = stateOf(strip);
  std::mt19937 random(29);
  int refused = 0, taken = 0;
  const auto give = [&](std::vector<char> data, const std::string& what) {
    Chunk broken = good;
    broken.data = std::move(data);
    const AAX_Result result = strip.setChunk(broken);
    ASSERT_TRUE(strip.settle()) << what;
    if (result != AAX_SUCCESS) {
      ++refused;
      ASSERT_EQ(stateOf(strip).data, before.data) << what;
      return;
    }
    ++taken;
    const Chunk now = stateOf(strip);
    ASSERT_EQ(strip.setChunk(now), AAX_SUCCESS) << what;
    ASSERT_EQ(stateOf(strip).data, now.data) << what;
    ASSERT_EQ(strip.setChunk(before), AAX_SUCCESS) << what;
    ASSERT_TRUE(strip.settle());
    ASSERT_EQ(stateOf(strip).data, before.data) << what;
  };
  for (std::size_t length = 0; length < good.data.size(); length += 1 + length / 100)
    give({good.data.begin(), good.data.begin() + static_cast<std::ptrdiff_t>(length)},
         "cut at " + std::to_string(length));
  for (std::size_t at = 0; at < good.data.size(); at += 1 + random() % 16) {
    std::vector<char> flipped = good.data;
    flipped[at] = static_cast<char>(flipped[at] ^ 1 << random() % 8);
    give(std::move(flipped), "a bit of byte " + std::to_string(at));
  }
  for (const std::size_t size : {std::size_t{12}, good.data.size(), std::size_t{1} << 20}) {
    std::vector<char> noise(size);
    for (char& byte : noise) byte = static_cast<char>(random());
    give(std::move(noise), "noise of " + std::to_string(size));
    give(std::vector<char>(size, char(0xFF)), "all ones, " + std::to_string(size));
  }
  EXPECT_GT(refused, 100);
  EXPECT_GT(taken, 100) << "most bytes of a name or of the head carry no value";
}

}  // namespace
}  // namespace corvane
