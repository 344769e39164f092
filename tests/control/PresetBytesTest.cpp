#include "control/PresetBytes.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <limits>
#include <random>

#include "core/ParameterBank.h"

namespace corvane {
namespace {

/// Bytes put together here, by a hand of their own.
struct Block {
  Bytes bytes;
  bool bigEndian = false;

  Block& text(const std::string& s, std::size_t field = 0) {
    bytes.insert(bytes.end(), s.begin(), s.end());
    bytes.resize(bytes.size() + (field > s.size() ? field - s.size() : 0));
    return *this;
  }
  Block& byte(int value) {
    bytes.push_back(static_cast<std::uint8_t>(value));
    return *this;
  }
  Block& word(std::uint32_t value) {
    for (int k = 0; k < 4; ++k) byte(static_cast<int>(value >> 8 * (bigEndian ? 3 - k : k) & 0xFF));
    return *this;
  }
  Block& words(std::initializer_list<std::uint32_t> values) {
    for (const std::uint32_t value : values) word(value);
    return *this;
  }
  Block& header(const std::string& magic, std::uint32_t records, std::uint32_t size) {
    return text(magic).byte(0x22).words({0x02000000, 360, records, 0, size, 13, 7, 125, 0});
  }
  Block& name(const std::string& name) { return words({0, 156, 0}).text(name, 24).words({0}).text("", 128); }
  Block& value(int id, float v) {
    return words({1, 20, 0, static_cast<std::uint32_t>(id), 0, 0, std::bit_cast<std::uint32_t>(v), 0});
  }
};

float valueOf(int id) { return static_cast<float>(id) / 360.0f; }

std::vector<int> storedIds() {
  std::vector<int> ids;
  for (int id = 0; id < kParameters; ++id)
    if (parameterKind(id) & kKindStored) ids.push_back(id);
  return ids;
}

Block wholePreset(const std::string& magic = "NMcQ", std::vector<int> ids = storedIds()) {
  Block block;
  block.bigEndian = magic[0] == 'Q';
  block.header(magic, static_cast<std::uint32_t>(ids.size() + 1),
               static_cast<std::uint32_t>(168 + 32 * ids.size()));
  block.name("Wide Room");
  for (const int id : ids) block.value(id, valueOf(id));
  return block;
}

PresetRecord wholeRecord() {
  PresetRecord record;
  record.setName("Wide Room");
  for (const int id : storedIds()) record.values[static_cast<std::size_t>(id)] = valueOf(id);
  return record;
}

bool same(const PresetRecord& a, const PresetRecord& b) {
  return std::string(a.name) == b.name && a.values == b.values;
}

TEST(PresetBytes, AWrittenPresetIsLaidOutByteForByte) {
  EXPECT_EQ(storedIds().size(), 192u);
  const Bytes written = presetBlock(wholeRecord(), 7, 125);
  EXPECT_EQ(written.size(), 6353u);
  EXPECT_EQ(written, wholePreset().bytes);
}

TEST(PresetBytes, EveryMagicAndByteOrderReadsTheSame) {
  for (const char* magic : {"NMcQ", "QcMN", "TScQ", "QcST"}) {
    PresetRecord record;
    EXPECT_TRUE(readPresetBlock(wholePreset(magic).bytes, record)) << magic;
    EXPECT_TRUE(same(record, wholeRecord())) << magic;
  }
}

TEST(PresetBytes, EveryValueComesBackAsTheSameFloat) {
  std::mt19937 engine(11);
  std::uniform_real_distribution<float> draw(0.0f, 1.0f);
  PresetRecord record;
  for (const int id : storedIds()) record.values[static_cast<std::size_t>(id)] = draw(engine);
  record.values[16] = std::numeric_limits<float>::denorm_min();
  record.values[17] = std::nextafter(1.0f, 0.0f);
  PresetRecord back;
  EXPECT_TRUE(readPresetBlock(presetBlock(record, 0, 100), back));
  EXPECT_EQ(back.values, record.values);
}

TEST(PresetBytes, ARefusedBlockLeavesTheRecordAsItWas) {
  const PresetRecord before = [] {
    PresetRecord r;
    r.setName("Mine");
    r.values.fill(0.25f);
    return r;
  }();
  const auto refusal = [&](const Bytes& bytes) {
    PresetRecord record = before;
    const PresetResult result = readPresetBlock(bytes, record);
    EXPECT_TRUE(same(record, before));
    EXPECT_EQ(describe(result).empty(), static_cast<bool>(result));
    return result.error;
  };
  const Bytes whole = wholePreset().bytes;
  for (std::size_t length = 0; length < whole.size(); ++length) {
    // from the vector's end, so that a read past the data is seen
    const Bytes cut(whole.begin(), whole.begin() + static_cast<long>(length));
    EXPECT_NE(refusal(cut), PresetError::none) << length;
  }
  Bytes broken = whole;
  broken[0] = 'M';
  EXPECT_EQ(refusal(broken), PresetError::notAPreset);
  broken = whole;
  broken[4] = 0x38;
  EXPECT_EQ(refusal(broken), PresetError::notSingle);
  for (const std::uint32_t size : {6313u, 0x7FFFFFFFu, 0xFFFFFFFFu}) {
    Block huge = wholePreset();
    const Bytes word = Block{}.word(size).bytes;
    std::ranges::copy(word, huge.bytes.begin() + 21);
    EXPECT_EQ(refusal(huge.bytes), PresetError::cut) << size;
  }
  for (const float value : {1.5f, -0.001f, std::nextafter(1.0f, 2.0f), std::nanf("")}) {
    std::vector<int> allButLast = storedIds();
    allButLast.pop_back();
    Block block = wholePreset("NMcQ", allButLast);
    block.value(351, value);
    const Bytes size = Block{}.word(6312).bytes;
    std::ranges::copy(size, block.bytes.begin() + 21);
    EXPECT_EQ(refusal(block.bytes), PresetError::valueOutOfRange) << value;
  }
  for (const std::uint32_t bodySize : {6100u, 0xFFFFFFF4u, 0xFFFFFFFFu}) {  // the last two wrap a 32-bit sum
    Bytes wrong = whole;
    std::ranges::copy(Block{}.word(bodySize).bytes, wrong.begin() + 41 + 168 + 4 + 32 * 3);
    EXPECT_NE(refusal(wrong), PresetError::none) << bodySize;
  }
  EXPECT_EQ(refusal(Block{}.header("NMcQ", 1, 28).words({1, 16 - 1, 0}).text("", 16).bytes),
            PresetError::brokenRecord);
}

TEST(PresetBytes, WhatAFileDoesNotNameStays) {
  std::vector<int> half;
  for (const int id : storedIds())
    if (id % 2 == 0) half.push_back(id);
  std::ranges::reverse(half);
  PresetRecord record;
  record.values.fill(0.75f);
  EXPECT_TRUE(readPresetBlock(wholePreset("QcMN", half).bytes, record));
  for (const int id : storedIds())
    EXPECT_EQ(record.values[static_cast<std::size_t>(id)], id % 2 == 0 ? valueOf(id) : 0.75f) << id;
}

TEST(PresetBytes, StrangersAreSteppedOverAndLongNamesCut) {
  Block block;
  block.header("NMcQ", 5, 20 + 32 + 168 + 32 + 12);
  block.words({9, 8, 0}).text("whatever");               // a kind of record from another time
  block.value(360, 7.0f);                                // an id beyond the bank, whatever its value
  block.words({0, 156, 0}).text(std::string(156, 'x'));  // a name without an end
  block.value(32, 0.5f);
  block.words({0xFFFFFFFF, 0, 0});
  PresetRecord record;
  EXPECT_TRUE(readPresetBlock(block.bytes, record));
  EXPECT_EQ(std::string(record.name), std::string(23, 'x'));
  EXPECT_EQ(record.values[32], 0.5f);
}

TEST(PresetBytes, EveryFailureHasItsOwnText) {
  std::vector<std::string> texts;
  for (int error = 1; error <= static_cast<int>(PresetError::noMemory); ++error) {
    PresetResult result;
    result.error = static_cast<PresetError>(error);
    result.id = 131;
    result.value = 1.25f;
    texts.push_back(describe(result));
    EXPECT_FALSE(texts.back().empty()) << error;
    EXPECT_EQ(std::ranges::count(texts, texts.back()), 1) << texts.back();
  }
  EXPECT_EQ(texts[static_cast<std::size_t>(PresetError::valueOutOfRange) - 1],
            "value of Comp:Ratio is 1.25, must be 0 to 1; nothing was changed");
}

}  // namespace
}  // namespace corvane
