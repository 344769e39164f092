#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "control/FactoryBank.h"
#include "core/ParameterBank.h"
#include "core/Rack.h"
#include "lv2/Ports.h"

namespace corvane::lv2 {
namespace {

constexpr float kNan = std::numeric_limits<float>::quiet_NaN(),
                kInfinity = std::numeric_limits<float>::infinity();

const Scale& scaleOf(const std::string& symbol) {
  for (const ControlPort& port : ports().controls)
    if (port.symbol == symbol) return port.scale;
  throw std::out_of_range("no port " + symbol);
}

TEST(Scale, AValueComesBackFromItsPhysicalUnit) {
  for (const ControlPort& port : ports().controls) {
    if (port.scale.form == Scale::Form::toggle) {
      for (const double p : {0.0, 1.0})
        EXPECT_EQ(port.scale.normalised(port.scale.physical(p)), p) << port.name;
      continue;
    }
    if (port.scale.form == Scale::Form::choice) {
      for (const Choice& choice : port.scale.choices)
        EXPECT_EQ(port.scale.normalised(port.scale.physical(choice.p)), choice.p) << port.name;
      continue;
    }
    double worst = 0.0;
    for (int k = 0; k <= 50000; ++k) {  // an odd step, so that decimals and what lies between are met
      const double p = std::min(1.0, k * 2.00071e-5);
      worst = std::max(worst, std::abs(port.scale.normalised(port.scale.physical(p)) - p));
    }
    EXPECT_LE(worst, 1e-7) << port.name << ": one part in ten million";
  }
}

TEST(Scale, RisesAndStaysInside) {
  for (const ControlPort& port : ports().controls) {
    const Scale& scale = port.scale;
    EXPECT_LT(scale.lowest, scale.highest) << port.name;
    EXPECT_GE(scale.standard, scale.lowest) << port.name;
    EXPECT_LE(scale.standard, scale.highest) << port.name;
    double last = -1.0;
    for (int k = 0; k <= 4000; ++k) {
      const double p =
          scale.normalised(scale.lowest + (scale.highest - scale.lowest) * static_cast<float>(k) / 4000.0f);
      ASSERT_GE(p, last) << port.name;
      last = p;
    }
  }
}

TEST(Scale, WhateverStandsAtAPortIsClamped) {
  for (const ControlPort& port : ports().controls) {
    const Scale& scale = port.scale;
    const double first = scale.form == Scale::Form::choice ? scale.choices.front().p : 0.0;
    const double last = scale.form == Scale::Form::choice ? scale.choices.back().p : 1.0;
    EXPECT_EQ(scale.normalised(kNan), scale.normalised(scale.standard)) << port.name;
    for (const float low : {-kInfinity, -1e30f, scale.lowest, std::nextafter(scale.lowest, -kInfinity)})
      EXPECT_EQ(scale.normalised(low), first) << port.name << " at " << low;
    for (const float high : {kInfinity, 1e30f, scale.highest, std::nextafter(scale.highest, kInfinity)})
      EXPECT_EQ(scale.normalised(high), last) << port.name << " at " << high;
  }
}

TEST(Scale, AFractionOfAChoiceIsTheNearestThatExists) {
  EXPECT_EQ(decodeVariant(scaleOf("lim_type").normalised(4.0f)), 2) << "no variants 3 to 6";
  EXPECT_EQ(decodeVariant(scaleOf("lim_type").normalised(5.0f)), 7);
  EXPECT_EQ(decodeInsertIndex(scaleOf("insx_type").normalised(113.4f)), 113);
  EXPECT_EQ(decodeInsertIndex(scaleOf("insx_type").normalised(105.4f)), 113) << "nothing between 97 and 113";
  for (const float above : {1e-40f, 0.3f, 0.7f}) EXPECT_EQ(scaleOf("pre_mute").normalised(above), 1.0);
}

TEST(Scale, ReadsAsAPersonReadsIt) {
  struct Known {
    const char* symbol;
    double p;
    float value;
  };
  for (const Known& known : {Known{"comp_threshold", 0.5, -15.0f},
                             {"pre_drive", 0.5, 0.0f},
                             {"pre_noiselevel", 0.25, -105.0f},
                             {"gate_hold", 0.5, 100.0f},
                             {"mstr_gain", 0.0, -100.0f},
                             {"gate_range", 0.5, -12.041200f},
                             {"gate_range", 0.0, -80.0f},
                             {"comp_ratio", 1.0, 100.0f},
                             {"comp_position", 0.375, 4.0f},
                             {"flt_hpf_freq", 1.0, 2000.0f},
                             {"lim_smooth", 0.5, 50.0f}})
    EXPECT_NEAR(scaleOf(known.symbol).physical(known.p), known.value, 1e-5f) << known.symbol;
}

}  // namespace
}  // namespace corvane::lv2
