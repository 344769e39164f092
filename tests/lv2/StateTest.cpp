#include <lv2/atom/atom.h>

#include <algorithm>
#include <random>

#include "tests/lv2/RawHost.h"

// What a host keeps besides the ports.

namespace corvane::lv2 {
namespace {

class Lv2State : public ::testing::Test {
 protected:
  static void turnKnobs(RawStrip& strip, unsigned seed) {
    std::mt19937 dice(seed);
    for (std::size_t k = 0; k < strip.controls.size(); ++k) {
      const ControlPort& port = strip.all.controls[k];
      if (port.id == kEnabledId || port.symbol == "process") continue;
      const Scale& scale = port.scale;
      std::uniform_real_distribution<float> within(scale.lowest, scale.highest);
      strip.controls[k] = within(dice);
    }
    strip.control("pre_type") = 1.0f;  // the colours differ from unit to unit
    for (const char* insert : {"insx_type", "insy_type"})
      if (strip.control(insert) < 17.0f) strip.control(insert) = 0.0f;
  }
  LV2_URID effectKey(RawStrip& strip) { return strip.uris.id(std::string(kPluginUri) + "#effect"); }
  LV2_URID rackKey(RawStrip& strip) { return strip.uris.id(std::string(kPluginUri) + "#rack"); }

  Binary binary;
  const Floats x = programme(4800);
};

TEST_F(Lv2State, ASessionSoundsTheSameWhenItIsOpenedAgain) {
  for (unsigned seed = 1; seed <= 25; ++seed) {
    RawStrip strip(binary), reopened(binary);
    turnKnobs(strip, seed);
    strip.run(0);
    for (const char* late :
         {"comp_position", "eq_position", "insx_position"}) {  // written one after the other
      strip.control(late) = static_cast<float>(1 + seed % 9);
      strip.run(0);
    }
    const Saved saved = strip.save();
    ASSERT_EQ(reopened.restore(saved), LV2_STATE_SUCCESS);
    reopened.controls = strip.controls;
    strip.activate();
    reopened.activate();
    // what glides or was heard before does not count: both come to rest first
    strip.render(Floats(48000, 0.0f)), reopened.render(Floats(48000, 0.0f));
    strip.activate(), reopened.activate();
    EXPECT_EQ(reopened.render(x), strip.render(x)) << "seed " << seed;
    EXPECT_EQ(reopened.save().properties.at(rackKey(reopened)).bytes,
              saved.properties.at(rackKey(strip)).bytes);
  }
}

TEST_F(Lv2State, WherePortAndStateDifferThePortWins) {
  RawStrip plain(binary), other(binary), restored(binary);
  for (RawStrip* strip : {&plain, &other, &restored}) strip->control("pre_type") = 1.0f;
  other.control("comp_threshold") = -40.0f;
  other.control("comp_position") = 9.0f;
  other.run(0);
  ASSERT_EQ(restored.restore(other.save()), LV2_STATE_SUCCESS);
  const Floats expected = plain.render(x);
  EXPECT_EQ(restored.render(x), expected);
  restored.restore(other.save());
  plain.activate(), restored.activate();
  EXPECT_EQ(restored.render(x), plain.render(x)) << "also when it comes later";
}

TEST_F(Lv2State, HoldsWhatThePortsSay) {
  RawStrip strip(binary), second(binary);
  strip.control("comp_threshold") = -40.0f;
  strip.run(0);
  second.control("comp_threshold") = -40.0f;
  second.run(0);
  EXPECT_EQ(strip.save().properties.at(effectKey(strip)).bytes,
            second.save().properties.at(effectKey(second)).bytes);
  second.control("comp_threshold") = -39.0f;
  second.run(0);
  EXPECT_NE(strip.save().properties.at(effectKey(strip)).bytes,
            second.save().properties.at(effectKey(second)).bytes);
}

TEST_F(Lv2State, IsWholeWhenItIsSavedAgainBeforeAnythingRuns) {
  RawStrip strip(binary), reopened(binary);
  turnKnobs(strip, 8);
  strip.run(0);
  strip.control("eq_position") = strip.control("comp_position");
  strip.run(0);
  const Saved saved = strip.save();
  ASSERT_EQ(reopened.restore(saved), LV2_STATE_SUCCESS);
  const Saved again = reopened.save();
  EXPECT_TRUE(again.properties.at(effectKey(reopened)).bytes == saved.properties.at(effectKey(strip)).bytes);
  EXPECT_TRUE(again.properties.at(rackKey(reopened)).bytes == saved.properties.at(rackKey(strip)).bytes);
}

TEST_F(Lv2State, ABrokenStateIsRefusedAndChangesNothing) {
  RawStrip strip(binary), other(binary);
  other.control("comp_position") = 1.0f;
  other.run(0);
  strip.run(0);
  const Saved good = other.save(), before = strip.save();
  const auto refused = [&](const Saved& broken, const char* what) {
    EXPECT_NE(strip.restore(broken), LV2_STATE_SUCCESS) << what;
    strip.run(0);
    EXPECT_TRUE(strip.save().properties.at(effectKey(strip)).bytes ==
                before.properties.at(effectKey(strip)).bytes)
        << what;
  };
  std::mt19937 dice(3);
  const auto broken = [&](LV2_URID key, auto change) {
    Saved state = good;
    change(state.properties.at(key));
    return state;
  };
  const LV2_URID effect = effectKey(other), rack = rackKey(other);
  for (const LV2_URID key : {effect, rack}) {
    const std::size_t size = good.properties.at(key).bytes.size();
    for (std::size_t length = 0; length<size; length += size> 100 ? 97 : 1)
      refused(broken(key, [&](auto& p) { p.bytes.resize(length); }), "cut short");
    refused(broken(key, [](auto& p) { p.bytes.push_back(0); }), "a byte too many");
    refused(broken(key, [](auto& p) { std::ranges::fill(p.bytes, '\xff'); }), "all ones");
    refused(broken(key, [&](auto& p) { p.bytes.assign(1 << 20, static_cast<char>(dice())); }), "a megabyte");
    refused(broken(key, [&](auto& p) { p.type = 77; }), "another type");
  }
  for (int round = 0; round < 2000; ++round)  // a flipped bit may still be a state; it must not harm
    strip.restore(broken(
        effect, [&](auto& p) { p.bytes[dice() % p.bytes.size()] ^= static_cast<char>(1 << dice() % 8); }));
  for (const float y : strip.render(x)) ASSERT_TRUE(std::isfinite(y));
  EXPECT_EQ(strip.restore(good), LV2_STATE_SUCCESS);
  EXPECT_EQ(strip.restore(Saved{}), LV2_STATE_SUCCESS) << "a host's preset has no state";
}

TEST_F(Lv2State, WithoutUridsThereIsNone) {
  RawStrip strip(binary, 48000.0, false, false);
  Saved saved;
  EXPECT_EQ(strip.state().save(strip.handle, Saved::store, &saved, 0, nullptr), LV2_STATE_ERR_NO_FEATURE);
  EXPECT_TRUE(saved.properties.empty());
}

}  // namespace
}  // namespace corvane::lv2
