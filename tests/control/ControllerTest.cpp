#include "control/CorvaneMonoController.h"

#include <gtest/gtest.h>

#include <random>

#include "tests/control/HostDouble.h"

namespace corvane {
namespace {

using rig::Home;
using rig::HostDouble;

constexpr double kFetClamper = 50 / 255.0, kVcaClamper = 51 / 255.0, kBellform = 65 / 255.0;
constexpr double kDeesser = 113 / 255.0, kDehummer = 114 / 255.0;

std::vector<int> positionsIn(const HostDouble& host) {
  std::vector<int> positions;
  for (const Place& place : kRack)
    positions.push_back(decodePosition(host[place.parameterBase + kPositionOffset]));
  return positions;
}

std::vector<int> monitorsOn(const HostDouble& host) {
  std::vector<int> on;
  for (const Place& place : kRack)
    if (decodeSwitch(host[place.parameterBase + kMonitorOffset]))
      on.push_back(place.parameterBase + kMonitorOffset);
  return on;
}

struct Session : testing::Test {
  Home home;
  HostDouble host{home};
};

using ControllerRules = Session;

TEST_F(ControllerRules, AnEmptiedPlaceLosesItsSolo) {
  host.edit(115, 1.0);
  host.edit(112, 0.0);
  EXPECT_EQ(host[115], 0.0);
  host.edit(256, kDeesser);
  host.edit(259, 1.0);
  host.edit(256, 0.0);
  EXPECT_EQ(host[259], 0.0);
  host.edit(147, 1.0);
  host.edit(144, 2 / 15.0);
  EXPECT_EQ(host[147], 1.0) << "another variant keeps it";
}

TEST_F(ControllerRules, AtMostOneMonitorIsOnAndTypeMuteAndSoloEndIt) {
  host.edit(85, 1.0);
  host.edit(53, 1.0);
  EXPECT_EQ(monitorsOn(host), std::vector{53});
  for (const auto& [id, value] : std::vector<std::pair<int, double>>{
           {195, 1.0}, {195, 0.0}, {114, 1.0}, {144, 0.125}, {306, 1.0}, {256, kDeesser}}) {
    host.edit(149, 1.0);
    ASSERT_EQ(monitorsOn(host), std::vector{149});
    host.edit(id, value);
    EXPECT_TRUE(monitorsOn(host).empty()) << id;
  }
  host.edit(149, 1.0);
  host.edit(148, 1.0);
  host.edit(161, 0.7);
  EXPECT_EQ(monitorsOn(host), std::vector{149}) << "a side chain or a knob does not";
  host.edit(149, 0.0);
  EXPECT_TRUE(monitorsOn(host).empty());
}

TEST_F(ControllerRules, ANewModuleInAnInsertGetsItsDefaults) {
  host.edit(272, 0.9);
  host.edit(256, kFetClamper);
  for (int offset = 16; offset < 24; ++offset)
    EXPECT_EQ(host[256 + offset], parameterDefault(112 + offset)) << offset;
  EXPECT_EQ(host[303], 0.0) << "what the module does not use";
  host.edit(272, 0.9);
  host.edit(256, kVcaClamper);
  EXPECT_EQ(host[272], 0.9) << "another variant of the same family keeps the knobs";
  host.edit(256, kBellform);
  EXPECT_EQ(host[272], parameterDefault(160));
  host.edit(256, kDeesser);
  host.edit(272, 0.9);
  host.edit(256, kDehummer);
  EXPECT_NE(host[272], 0.9) << "the special modules are all different";
  host.edit(320, 0.3);
  host.edit(304, 231 / 255.0);
  EXPECT_EQ(host[320], 0.3) << "an index without a module leaves the values alone";
}

TEST_F(ControllerRules, ABatchBringsItsOwnValues) {
  host.edit(256, kFetClamper);
  host.edit(115, 1.0);
  host.setParameter(860, 1.0);
  host.setParameter(21, 1.0);
  host.setParameter(53, 1.0);
  host.setParameter(112, 0.0);
  host.setParameter(272, 0.9);
  host.setParameter(256, kBellform);
  host.setParameter(861, 1.0);
  EXPECT_EQ(host[272], 0.9);
  EXPECT_EQ(host[115], 1.0);
  EXPECT_EQ(monitorsOn(host), (std::vector{21, 53}));
  host.edit(256, kBellform);
  EXPECT_EQ(host[272], 0.9) << "the table followed: the same module again is no change";
}

TEST_F(ControllerRules, AMoveClosesTheGapBehindIt) {
  host.edit(81, 6 / 8.0);  // the gate, third, to the seventh place
  EXPECT_EQ(positionsIn(host), (std::vector{0, 1, 6, 2, 3, 4, 5, 7, 8}));
  host.edit(305, 0.0);  // the last one to the front
  EXPECT_EQ(positionsIn(host), (std::vector{1, 2, 7, 3, 4, 5, 6, 8, 0}));
  EXPECT_EQ(host.controller->getRackOrder(),
            (std::array<std::int32_t, 9>{304, 16, 48, 112, 144, 192, 224, 80, 256}));
  const auto before = host.values;
  host.edit(305, 0.0);
  EXPECT_EQ(host.values, before);
}

TEST_F(ControllerRules, TheWindowSwapsNeighboursItself) {
  host.controller->swapInProgress = true;
  host.edit(17, 1 / 8.0);
  host.edit(49, 0.0);
  host.controller->swapInProgress = false;
  EXPECT_EQ(positionsIn(host), (std::vector{1, 0, 2, 3, 4, 5, 6, 7, 8}));
  host.edit(17, 2 / 8.0);
  EXPECT_EQ(positionsIn(host), (std::vector{2, 0, 1, 3, 4, 5, 6, 7, 8}));
}

TEST_F(ControllerRules, AFirstMoveMendsPositionsThatAPresetHadTwice) {
  host.setParameter(860, 1.0);
  host.setParameter(49, 0.0);  // filters where the preamp is
  host.setParameter(861, 1.0);
  host.edit(145, 1.0);
  auto positions = positionsIn(host);
  EXPECT_EQ(positions[4], 8);
  std::ranges::sort(positions);
  EXPECT_EQ(positions, (std::vector{0, 1, 2, 3, 4, 5, 6, 7, 8}));
}

TEST_F(ControllerRules, NoValueUpsetsThem) {
  for (double value : {-1.0, 1e9, std::nan(""), std::numeric_limits<double>::infinity()})
    for (int id = -2; id < 880; ++id) host.controller->parameterChanged(id, value);
  for (int position : positionsIn(host)) EXPECT_TRUE(position >= 0 && position <= 8);
}

TEST_F(ControllerRules, AutomationChangesTheSoundAndNotTheStore) {
  host.automate(130, 0.9);
  EXPECT_EQ(host[130], 0.5);
  EXPECT_FALSE(host.presets->canUndo());
}

TEST(ViewSetting, IsSharedByAllInstancesAndOutlivesThem) {
  Home home;
  {
    HostDouble first(home);
    EXPECT_EQ(first.controller->viewSetting, 0);
    first.setParameter(792, 2 / 3.0);
    HostDouble second(home);
    EXPECT_EQ(second.controller->viewSetting, 2);
  }
  HostDouble later(home);
  EXPECT_EQ(later.controller->viewSetting, 2);
}

/// What the strip makes of a noise, from rest, once its parameters stand.
std::vector<float> soundOf(CorvaneMonoEffect& processor) {
  processor.reset();
  std::mt19937 engine(3);
  std::uniform_real_distribution<float> draw(-0.5f, 0.5f);
  std::vector<float> in(512), left(512), right(512);
  for (float& sample : in) sample = draw(engine);
  const float* inputs[4] = {in.data(), nullptr, nullptr, nullptr};
  float* outputs[2] = {left.data(), right.data()};
  processor.processFloat(inputs, outputs, 512);
  return left;
}

/// The rules, undo, presets and memories in any order: the store, the controller, the memory and the host
/// never drift apart, and a strip that followed all the changes sounds like one that was only told the
/// result.
TEST(AnySession, KeepsStoreControllerMemoryAndSoundTogether) {
  for (std::uint32_t seed = 1; seed <= 6; ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    Home home;
    HostDouble host(home);
    CorvaneMonoEffect followed;
    std::mt19937 engine(seed);
    const auto roll = [&engine](int n) { return static_cast<int>(engine() % static_cast<unsigned>(n)); };
    for (int step = 0; step < 150; ++step) {
      const Place& place = kRack[static_cast<std::size_t>(roll(kPlaces))];
      switch (roll(10)) {
        case 0: host.presets->selectPreset(roll(235)); break;
        case 1: host.presets->undo(); break;
        case 2: host.presets->redo(); break;
        case 3: host.presets->switchMemory(roll(2) == 1); break;
        case 4: host.presets->copyMemory(); break;
        case 5: host.edit(place.parameterBase + kMuteOffset + roll(4), roll(2)); break;
        case 6: host.edit(roll(2) ? 256 : 304, roll(120) / 255.0); break;
        case 7: host.edit(place.parameterBase, roll(4) / 15.0); break;
        default: host.edit(place.parameterBase + kPositionOffset, roll(9) / 8.0, 20); break;
      }
      host.feed(followed);
      std::array<bool, kPlaces> taken{};
      for (int k = 0; k < kPlaces; ++k) {
        const int base = kRack[static_cast<std::size_t>(k)].parameterBase;
        const auto position = static_cast<std::size_t>(decodePosition(host[base + kPositionOffset]));
        EXPECT_FALSE(taken[position]) << "step " << step;
        taken[position] = true;
        ASSERT_EQ(host.controller->getRackOrder()[position], base) << "step " << step;
      }
      for (int id = 0; id < kParameters; ++id) {
        ASSERT_EQ(static_cast<float>(host[id]), host.inMemory(id)) << "step " << step << ", id " << id;
        ASSERT_EQ(host[id], host.hostValues[static_cast<std::size_t>(id)])
            << "step " << step << ", id " << id;
      }
    }
    // The preamp's colours differ from unit to unit, so the sound is compared without them.
    host.edit(16, 0.0);
    for (int type : {256, 304})
      if (kindOfInsertIndex(decodeInsertIndex(host[type])) == static_cast<int>(ModuleKind::preamp))
        host.edit(type, 0.0);
    host.feed(followed);
    CorvaneMonoEffect told;
    host.feed(told);
    soundOf(followed), soundOf(told);  // the first block builds the chain and may fade
    EXPECT_EQ(soundOf(followed), soundOf(told));
  }
}

}  // namespace
}  // namespace corvane
