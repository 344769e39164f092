#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <random>

#include "tests/control/HostDouble.h"

namespace corvane {
namespace {

using rig::Home;
using rig::HostDouble;
using Block = std::vector<std::uint8_t>;

std::uint32_t wordAt(const Block& block, std::size_t at) {
  std::uint32_t value = 0;
  for (std::size_t k = 0; k < 4; ++k) value |= static_cast<std::uint32_t>(block[at + k]) << 8 * k;
  return value;
}
void setWord(Block& block, std::size_t at, std::uint32_t value) {
  for (std::size_t k = 0; k < 4; ++k) block[at + k] = static_cast<std::uint8_t>(value >> 8 * k);
}
float valueAt(const Block& block, std::size_t at) { return std::bit_cast<float>(wordAt(block, at)); }
std::string textAt(const Block& block, std::size_t at) {
  return reinterpret_cast<const char*>(block.data() + at);
}

constexpr std::size_t kBank = 224, kRecords = 273, kPreset = 6312, kName = 168, kRecord = 32;

struct State : testing::Test {
  Home home;
  HostDouble host{home};
};

TEST_F(State, IsLaidOutFieldByField) {
  host.presets->selectPreset(3);
  host.edit(130, 0.625);
  host.edit(792, 0.0);
  host.setParameter(792, 1 / 3.0);
  host.presets->editorWord = 5;
  host.presets->editorZoom = 150;
  const Block block = host.state();
  ASSERT_EQ(block.size(), 19209u);
  EXPECT_EQ(wordAt(block, 0), 1u);
  EXPECT_EQ(wordAt(block, 4), 1200u);
  EXPECT_EQ(wordAt(block, 8), 0xFFFFFFFFu);
  for (std::size_t at = 12; at < 32; ++at) EXPECT_EQ(block[at], 0xFF);
  for (std::size_t at = 32; at < 96; at += 8) {
    EXPECT_EQ(wordAt(block, at), 0u);
    EXPECT_EQ(wordAt(block, at + 4), 0xBFF00000u);
  }
  for (std::size_t at = 96; at < kBank; ++at) EXPECT_EQ(block[at], 0);
  EXPECT_EQ(wordAt(block, kBank), 0x02000000u);
  EXPECT_EQ(std::string(block.begin() + 228, block.begin() + 236), "NMcQNMcQ");
  EXPECT_EQ(block[236], 0x38);
  const std::uint32_t header[] = {0x02000000, 360, 579, 0, 18936, 13, 5, 150, 0};
  for (std::size_t k = 0; k < 9; ++k) EXPECT_EQ(wordAt(block, 237 + 4 * k), header[k]) << k;

  const char* names[] = {"Smacka 808 BD", "Let's start from scratc", "Drums Init"};
  for (std::size_t n = 0; n < 3; ++n) {
    const std::size_t start = kRecords + n * kPreset;
    EXPECT_EQ(wordAt(block, start), 0u);
    EXPECT_EQ(wordAt(block, start + 4), 156u);
    EXPECT_EQ(wordAt(block, start + 8), n);
    EXPECT_EQ(textAt(block, start + 12), names[n]);
    std::size_t at = start + kName;
    for (int id = 0; id < kParameters; ++id) {
      if (!(parameterKind(id) & kKindStored)) continue;
      ASSERT_EQ(wordAt(block, at), 1u);
      ASSERT_EQ(wordAt(block, at + 4), 20u);
      ASSERT_EQ(wordAt(block, at + 8), n);
      ASSERT_EQ(wordAt(block, at + 12), static_cast<std::uint32_t>(id));
      if (n == 0) {
        ASSERT_EQ(valueAt(block, at + 24), static_cast<float>(host[id])) << id;
      }
      at += kRecord;
    }
    EXPECT_EQ(at, start + kPreset);
  }
}

TEST_F(State, BringsBackEveryValueAndBothMemories) {
  std::mt19937 engine(5);
  for (int round = 0; round < 20; ++round) {
    host.setParameter(860, 1.0);
    for (int id = 0; id < kParameters; ++id)
      if (parameterKind(id) & kKindStored)
        host.setParameter(id, static_cast<double>(static_cast<float>(engine()) / 4294967296.0f));
    host.setParameter(861, 1.0);
    host.deliver();
    const Block block = host.state();

    Home otherHome;
    HostDouble other(otherHome);
    other.presets->switchMemory(true);
    other.edit(32, 0.9);
    other.setState(block);
    for (int id = 0; id < kParameters; ++id)
      ASSERT_EQ(static_cast<float>(other[id]), static_cast<float>(host[id])) << "id " << id;
    EXPECT_FALSE(other.presets->memoryBIsCurrent());
    EXPECT_FALSE(other.presets->isModified());
    EXPECT_EQ(other.presets->selection().presetIndex, -1);
    other.presets->switchMemory(true);
    EXPECT_EQ(other.presets->currentRecord().values, host.presets->currentRecord().values);
    EXPECT_EQ(other.state(), block);
  }
}

TEST_F(State, TellsTheWindowItsWordZoomAndView) {
  Block block = host.state();
  setWord(block, 0, 2);
  setWord(block, 8, 672);
  setWord(block, 237 + 24, 9);
  setWord(block, 237 + 28, 30);
  host.commands.clear();
  host.setState(block);
  EXPECT_EQ(host.controller->viewSetting, 2);
  EXPECT_EQ(host.controller->miniSelection, 672);
  EXPECT_EQ(host.presets->editorWord, 9);
  EXPECT_EQ(host.presets->editorZoom, 30);
  const std::vector<std::pair<int, double>> told{{819, 9.0}, {849, 0.5}, {792, 2 * 0.33333}};
  EXPECT_EQ(host.commands, told);
  setWord(block, 0, static_cast<std::uint32_t>(-1));
  setWord(block, 237 + 28, 0);
  host.setState(block);
  EXPECT_EQ(host.controller->viewSetting, 2) << "a negative view keeps the one of the process";
  EXPECT_EQ(host.presets->editorZoom, 30);
}

TEST_F(State, AnythingUnreadableLeavesTheStripAlone) {
  host.presets->selectPreset(3);
  host.edit(130, 0.625);
  const Block good = host.state();
  host.presets->selectPreset(20);
  host.edit(131, 0.25);
  const auto before = host.values;
  const PresetSelection selection = host.presets->selection();
  const auto expectUntouched = [&](Block block, const std::string& what) {
    host.setState(std::move(block));
    EXPECT_EQ(host.values, before) << what;
    EXPECT_EQ(host.presets->selection(), selection) << what;
    EXPECT_TRUE(host.presets->isModified()) << what;
  };
  for (std::size_t size = 0; size < good.size(); ++size)
    expectUntouched(Block(good.begin(), good.begin() + static_cast<long>(size)),
                    "cut to " + std::to_string(size));
  for (const float value : {2.0f, -0.5f, std::nanf("")}) {
    Block broken = good;
    setWord(broken, broken.size() - 8, std::bit_cast<std::uint32_t>(value));
    expectUntouched(broken, "value " + std::to_string(value));
  }
  for (const std::uint32_t size : {18937u, 0xFFFFFFFFu}) {
    Block broken = good;
    setWord(broken, 237 + 16, size);
    expectUntouched(broken, "record size " + std::to_string(size));
  }
  for (const std::size_t size : {18985u, 621649u, 621873u}) {
    Block foreign = good;
    foreign.resize(size);
    expectUntouched(foreign, "foreign size " + std::to_string(size));
  }
  std::mt19937 engine(9);
  for (int round = 0; round < 20; ++round) {
    Block noise(engine() % 60000);
    for (auto& byte : noise) byte = static_cast<std::uint8_t>(engine());
    expectUntouched(noise, "noise " + std::to_string(round));
  }
  host.setState(good);
  EXPECT_EQ(host[130], 0.625) << "and a good one still loads";
}

// A bit may change what is no value (view, zoom, which preset is current); the values come from one preset,
// all of them, or stay as they were.
TEST_F(State, AnyBitOfTheHeaderFlippedAppliesAWholePresetOrNothing) {
  const auto storedValues = [&] {
    std::vector<float> values;
    for (int id = 0; id < kParameters; ++id)
      if (parameterKind(id) & kKindStored) values.push_back(static_cast<float>(host[id]));
    return values;
  };
  host.presets->selectPreset(3);
  host.deliver();
  const Block good = host.state();
  std::vector<std::vector<float>> whole(3);
  for (std::size_t n = 0; n < whole.size(); ++n)
    for (std::size_t at = kRecords + n * kPreset + kName; at < kRecords + (n + 1) * kPreset; at += kRecord)
      whole[n].push_back(valueAt(good, at + 24));
  for (int index = 3; index < kFactoryPlaces;
       ++index) {  // the bank behind them, from which a session may name one
    double values[kParameters];
    factoryPreset(index, values, nullptr, nullptr);
    auto& wanted = whole.emplace_back();
    for (int id = 0; id < kParameters; ++id)
      if (parameterKind(id) & kKindStored) wanted.push_back(static_cast<float>(values[id]));
  }
  host.presets->selectPreset(20);
  host.deliver();
  host.edit(130, 0.123);
  const Block before = host.state();
  const auto untouched = storedValues();
  int applied = 0;
  for (std::size_t bit = 0; bit < kRecords * 8; ++bit) {
    Block flipped = good;
    flipped[bit / 8] = static_cast<std::uint8_t>(flipped[bit / 8] ^ 1U << bit % 8);
    host.setState(std::move(flipped));
    const auto values = storedValues();
    if (values == untouched) continue;
    EXPECT_NE(std::ranges::find(whole, values), whole.end()) << "byte " << bit / 8 << ", bit " << bit % 8;
    ++applied;
    host.setState(before);
    ASSERT_EQ(storedValues(), untouched);
  }
  EXPECT_GT(applied, 1000) << "most of the header carries no value";
}

TEST_F(State, BlocksFromBeforeTheLimiterHadModesGetItsDefaults) {
  host.edit(217, 0.7);
  host.edit(210, 0.3);
  Block old = host.state();
  old.resize(1119153);
  host.setState(old);
  EXPECT_EQ(host[217], 0.0);
  EXPECT_EQ(host[220], 0.5);
  EXPECT_EQ(host[221], 0.2);
  EXPECT_EQ(host[210], 0.8) << "no limiter in use";
  host.edit(192, 0.0625);
  host.edit(210, 0.3);
  old = host.state();
  old.resize(1119153);
  host.setState(old);
  EXPECT_EQ(static_cast<float>(host[210]), 0.3f) << "a limiter keeps its ceiling";
}

TEST_F(State, LoadsNoDefaultsOverTheStoredValues) {
  host.edit(256, 113 / 255.0);
  host.edit(272, 0.123);
  host.edit(261, 1.0);
  const Block block = host.state();
  Home otherHome;
  HostDouble other(otherHome);
  other.setState(block);
  EXPECT_EQ(static_cast<float>(other[272]), 0.123f);
  EXPECT_EQ(other[261], 1.0) << "the monitor that was on";
}

}  // namespace
}  // namespace corvane
