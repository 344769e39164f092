#include <gtest/gtest.h>

#include <unistd.h>

#include <cfenv>
#include <clocale>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <limits>
#include <memory>
#include <random>

#include "core/CorvaneMonoEffect.h"
#include "core/ParameterBank.h"
#include "tests/lv2/RawHost.h"

// What comes out of the plug-in, through its entry points.

namespace corvane::lv2 {
namespace {

constexpr float kNan = std::numeric_limits<float>::quiet_NaN(),
                kInfinity = std::numeric_limits<float>::infinity();

/// 100 Hz at 48 kHz.
Floats tone(float amplitude, std::size_t frames) {
  Floats x(frames);
  for (std::size_t n = 0; n < frames; ++n)
    x[n] = amplitude * std::sin(0.0130899694f * static_cast<float>(n % 480));
  return x;
}
float largest(const Floats& x, std::size_t from) {
  float top = 0.0f;
  for (std::size_t n = from; n < x.size(); ++n) top = std::max(top, std::abs(x[n]));
  return top;
}

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

TEST(Lv2Library, GoesWhenTheHostLetsItGo) {
  const auto isLoaded = [](const char* file) {
    void* handle = dlopen(file, RTLD_NOW | RTLD_NOLOAD);
    if (handle) dlclose(handle);
    return handle != nullptr;
  };
  {
    const Binary binary;
    RawStrip(binary).run(64);
    EXPECT_TRUE(isLoaded(LV2_BUNDLE "/corvane.so"));
    EXPECT_FALSE(isLoaded(LV2_BUNDLE "/QDX Corvane Mono.aaxplugin/Contents/x64/QDX Corvane Mono.aaxplugin"))
        << "the effect goes with its last instance";
  }
  EXPECT_FALSE(isLoaded(LV2_BUNDLE "/corvane.so"));
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

TEST_F(Lv2, BlocksOfAnyLengthSoundAlike) {
  const Floats x = programme(20000);
  const auto heard = [&](auto next) {
    RawStrip strip(binary);
    busy(strip);
    return strip.renderInBlocksOf(next, x);
  };
  std::mt19937 dice(5);
  const Floats expected = heard([] { return std::size_t{20000}; });
  EXPECT_EQ(heard([] { return std::size_t{1}; }).size(), expected.size());
  // the sub-blocks of 64 begin anew with each block, so only multiples of them can be alike to the bit
  EXPECT_EQ(heard([] { return std::size_t{64}; }), expected);
  EXPECT_EQ(heard([&] { return std::size_t{64} * (dice() % 5); }), expected) << "empty blocks between";
  for (const float y : heard([&] { return std::size_t{dice() % 700}; })) ASSERT_TRUE(std::isfinite(y));
}

TEST_F(Lv2, BuffersMayBeOneAndTheSame) {
  const Floats x = programme(9600);
  RawStrip apart(binary, 48000.0, true), inPlace(binary, 48000.0, true);
  for (RawStrip* strip : {&apart, &inPlace}) {
    busy(*strip);
    strip->control("comp_side_chain") = 1.0f;
  }
  const Floats expected = apart.render(x, 9600, x.data());
  Floats y = x;
  inPlace.connect(y.data(), y.data(), y.data());
  inPlace.run(static_cast<std::uint32_t>(y.size()));
  EXPECT_EQ(y, expected);
}

TEST_F(Lv2, PortsThatNobodyConnectsStandAtTheirDefaults) {
  const Floats x = programme(4800);
  RawStrip connected(binary), bare(binary, 48000.0, false, false);
  uncoloured(connected);
  float preType = 1.0f;
  for (std::uint32_t port = 0; port <= bare.all.key(); ++port)
    bare.descriptor.connect_port(bare.handle, port, nullptr);
  bare.run(64);  // no input, no output
  for (std::size_t k = 0; k < bare.controls.size(); ++k)
    if (bare.all.controls[k].symbol == "pre_type")
      bare.descriptor.connect_port(bare.handle, kFirstControlPort + static_cast<std::uint32_t>(k), &preType);
  EXPECT_EQ(bare.render(x), connected.render(x));
}

TEST_F(Lv2, AnythingAtAPortIsClamped) {
  const Floats x = programme(2400);
  for (const float value : {kNan, kInfinity, -kInfinity, 1e30f, -1e30f, 1e-40f, 0.37f}) {
    RawStrip strip(binary);
    for (float& control : strip.controls) control = value;
    for (const char* on : {"enabled", "process"}) strip.control(on) = 1.0f;
    for (const float y : strip.render(x)) ASSERT_TRUE(std::isfinite(y)) << value;
  }
  RawStrip plain(binary), numberless(binary);
  uncoloured(plain), uncoloured(numberless);
  for (float& control : numberless.controls)
    if (&control != &numberless.control("pre_type")) control = kNan;
  EXPECT_EQ(numberless.render(x), plain.render(x)) << "not a number stands for the default";
}

TEST_F(Lv2, TheEnabledPortFadesBetweenDryAndStrip) {
  RawStrip strip(binary);
  uncoloured(strip);
  strip.control("mstr_type") = 1.0f;
  strip.control("mstr_gain") = 10.0f;
  const Floats x = tone(0.1f, 9600);
  const float loud = largest(strip.render(x), 4800);
  EXPECT_GT(loud, 0.2f);
  const auto isSmooth = [&](const Floats& y) {
    // a tone of 100 Hz moves by 1.3 % of its peak in a sample, the fade by half a per cent
    for (std::size_t n = 1; n < y.size(); ++n) ASSERT_LE(std::abs(y[n] - y[n - 1]), 0.025f * loud) << n;
  };
  strip.control("enabled") = 0.0f;
  const Floats off = strip.render(x, 64);
  isSmooth(off);
  EXPECT_TRUE(std::equal(off.begin() + 480, off.end(), x.begin() + 480)) << "dry to the bit";
  strip.control("enabled") = 1.0f;
  const Floats on = strip.render(x, 64);
  isSmooth(on);
  EXPECT_GT(largest(on, 4800), 0.2f);
}

TEST_F(Lv2, ReportsLatencyAndMetersAfterAnEmptyBlock) {
  RawStrip strip(binary);
  strip.run(0);
  EXPECT_EQ(strip.latency, 0.0f);
  EXPECT_EQ(strip.meter("pre_in_level"), kLowestLevelDb);
  EXPECT_EQ(strip.meter("total_reduction"), 0.0f);
  strip.control("comp_threshold") = -40.0f;
  strip.render(tone(0.5f, 48000));
  EXPECT_NEAR(strip.meter("pre_in_level"), -6.02f, 0.5f);
  EXPECT_GT(strip.meter("comp_reduction"), 3.0f);
  EXPECT_NEAR(strip.meter("total_reduction"), strip.meter("comp_reduction"), 1e-3f);
}

TEST_F(Lv2, AnActivationBeginsFromSilence) {
  RawStrip strip(binary);
  busy(strip);
  strip.activate();
  strip.render(programme(9600));
  strip.activate();
  const Floats out = strip.render(Floats(4800, 0.0f));
  EXPECT_EQ(out, Floats(4800, 0.0f)) << "no tail of what ran before";
  strip.activate();
  strip.activate();
  EXPECT_NE(strip.render(programme(4800)), Floats(4800, 0.0f));
}

TEST_F(Lv2, AnyRateRunsOrIsRefused) {
  for (const double rate : {8000.0, 22050.0, 32000.0, 44100.0, 48000.0, 96000.0, 192000.0, 384000.0, 768000.0,
                            1234.5678, 45678.901}) {
    RawStrip strip(binary, rate);
    ASSERT_TRUE(strip.handle) << rate;
    busy(strip);
    for (const float y : strip.render(programme(4800))) ASSERT_TRUE(std::isfinite(y)) << rate;
  }
  for (const double rate : {0.0, -48000.0, static_cast<double>(kNan), static_cast<double>(kInfinity)})
    EXPECT_FALSE(RawStrip(binary, rate).handle) << rate;
}

TEST_F(Lv2, WithoutItsEffectItIsNotMade) {
  const LV2_Descriptor& descriptor = *binary.descriptor(0);
  const LV2_Feature* none[] = {nullptr};
  EXPECT_EQ(descriptor.instantiate(&descriptor, 48000.0, "/nowhere/", none), nullptr);
  EXPECT_EQ(descriptor.instantiate(&descriptor, 48000.0, nullptr, none), nullptr);
}

TEST_F(Lv2, LeavesProcessorModesAndLocaleAsTheyWere) {
  RawStrip strip(binary);
  busy(strip);
  const std::string locale = std::setlocale(LC_ALL, nullptr);
  for (const int rounding : {FE_TONEAREST, FE_UPWARD}) {
    std::fesetround(rounding);
    strip.render(programme(1000));
    EXPECT_EQ(std::fegetround(), rounding);
  }
  std::fesetround(FE_TONEAREST);
  EXPECT_EQ(std::setlocale(LC_ALL, nullptr), locale);
}

std::size_t residentBytes() {
  std::size_t pages = 0, resident = 0;
  std::ifstream("/proc/self/statm") >> pages >> resident;
  return resident * static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
}

TEST_F(Lv2, TwoHundredInstancesLiveTogether) {
  std::vector<std::unique_ptr<RawStrip>> strips;
  const Floats x = programme(256);
  const auto add = [&] {
    strips.push_back(std::make_unique<RawStrip>(binary));
    ASSERT_TRUE(strips.back()->handle);
    strips.back()->render(x, 64);
  };
  add();
  const std::size_t before = residentBytes();
  while (strips.size() < 200) add();
  const double perInstance = static_cast<double>(residentBytes() - before) / 199.0;
  std::printf("memory per instance: %.2f MB\n", perInstance / 1048576.0);
  RecordProperty("bytesPerInstance", std::to_string(static_cast<long>(perInstance)));
  for (const auto& strip : strips) strip->render(x, 64);
  EXPECT_LT(perInstance, 16e6);
}

}  // namespace
}  // namespace corvane::lv2
