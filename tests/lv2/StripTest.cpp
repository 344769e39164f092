#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "core/CorvaneMonoEffect.h"
#include "core/ParameterBank.h"
#include "tests/lv2/RawHost.h"

// What comes out of the plug-in, through its entry points.

namespace corvane::lv2 {
namespace {

constexpr float kNan = std::numeric_limits<float>::quiet_NaN(),
                kInfinity = std::numeric_limits<float>::infinity();

class Lv2 : public ::testing::Test {
 protected:
  /// The colours of the preamps differ from unit to unit; the plain gain does not.
  static void uncoloured(RawStrip& strip) { strip.control("pre_type") = 1.0f; }
  /// A setting in which every place has work.
  static void busy(RawStrip& strip) {
    uncoloured(strip);
    for (const auto& [symbol, value] : {std::pair{"gate_type", 1.0f},
                                        {"gate_threshold", -33.3f},
                                        {"comp_threshold", -27.1f},
                                        {"comp_attack", 1.7f},
                                        {"eq_hm_gain", 4.3f},
                                        {"eq_hm_freq", 3100.0f},
                                        {"lim_type", 7.0f},
                                        {"lim_ceiling", -6.5f},
                                        {"mstr_type", 1.0f},
                                        {"mstr_gain", 2.5f},
                                        {"insx_type", 113.0f},
                                        {"insx_prm03", 0.7f},
                                        {"comp_position", 6.0f}})
      strip.control(symbol) = value;
  }
  Binary binary;
};

TEST_F(Lv2, TellsTwoPluginsAndNoMore) {
  EXPECT_STREQ(binary.descriptor(0)->URI, kPluginUri);
  EXPECT_STREQ(binary.descriptor(1)->URI, kSideChainPluginUri);
  EXPECT_EQ(binary.descriptor(2), nullptr);
  EXPECT_EQ(binary.descriptor(0)->extension_data("urn:other"), nullptr);
}

TEST_F(Lv2, SoundsAsTheStripAloneWithTheSameValues) {
  for (const bool keyed : {false, true}) {
    RawStrip strip(binary, 96000.0, true);
    busy(strip);
    strip.control("comp_side_chain") = 1.0f;
    CorvaneMonoEffect alone;
    alone.setSampleRate(96000.0);
    for (std::size_t k = 0; k < strip.controls.size(); ++k)
      if (const ControlPort& port = strip.all.controls[k]; port.id != kEnabledId)
        alone.setParameter(port.id,
                           static_cast<double>(static_cast<float>(port.scale.normalised(strip.controls[k]))));
    // "comp_position" 6 shifts the places between, as a person's drag would
    for (const auto& [place, position] : {std::pair{3, 5}, {4, 3}, {5, 4}})
      alone.setParameter(kRack[static_cast<std::size_t>(place)].parameterBase + kPositionOffset,
                         position / 8.0);
    for (int offset = 16; offset < 48; ++offset)  // a module in an insert takes the values that stand there
      alone.setParameter(256 + offset,
                         static_cast<double>(strip.control("insx_prm" + std::string(offset < 25 ? "0" : "") +
                                                           std::to_string(offset - 15))));
    const Floats x = programme(30000);
    Floats key(x.rbegin(), x.rend()), expected(x.size());
    const float* in[4] = {x.data(), nullptr, keyed ? key.data() : nullptr, nullptr};
    float* out[2] = {expected.data(), nullptr};
    alone.processFloat(in, out, static_cast<int>(x.size()));
    EXPECT_EQ(strip.render(x, 512, keyed ? key.data() : nullptr), expected);
  }
}

}  // namespace
}  // namespace corvane::lv2
