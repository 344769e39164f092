#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <map>
#include <string>

#include "core/ParameterBank.h"
#include "core/Rack.h"

// The composed bank against the numbering as it was agreed, written out id by id.

namespace corvane {
namespace {

struct Entry {
  int id;
  const char* name;
  double defaultValue;
  int steps;
};

// clang-format off
constexpr Entry kOwn[] = {
    {32, "Pre:Gain", 0.5, 0}, {33, "Pre:AutoIn", 0, 1}, {34, "Pre:RefLevel", 0.5, 0}, {35, "Pre:AutoDetectMode", 1, 1},
    {36, "Pre:AutoLevelMode", 0, 1}, {37, "Pre:PhaseL", 0, 1}, {38, "Pre:PhaseR", 0, 1}, {39, "Pre:Analog", 1, 1},
    {40, "Pre:Drive", 0.5, 0}, {41, "Pre:NoiseIn", 0, 2}, {42, "Pre:NoiseLevel", 0.5, 0},
    {64, "Flt:LPF In", 1, 1}, {65, "Flt:LPF Freq", 1, 0}, {66, "Flt:LPF Slope", 0.5, 2}, {67, "Flt:Parametric In", 1, 1},
    {68, "Flt:Parametric Gain", 0.5, 0}, {69, "Flt:Parametric Freq", 0.5, 0}, {70, "Flt:Parametric Q", 0.5, 0},
    {71, "Flt:Parametric Type", 0.5, 4}, {72, "Flt:HPF In", 1, 1}, {73, "Flt:HPF Freq", 0, 0}, {74, "Flt:HPF Slope", 0.5, 2},
    {96, "Gate:Attack", 0.5, 0}, {97, "Gate:Release", 0.5, 0}, {98, "Gate:Ratio", 0.5, 0}, {99, "Gate:Hold", 0.5, 0},
    {100, "Gate:Threshold", 0.5, 0}, {101, "Gate:Shape", 0.5, 0}, {102, "Gate:Range", 0, 0}, {103, "Gate:HPF In", 0, 1},
    {104, "Gate:HPF Freq", 0, 0}, {105, "Gate:LPF In", 0, 1}, {106, "Gate:LPF Freq", 1, 0},
    {128, "Comp:Attack", 0.5, 0}, {129, "Comp:Release", 0.5, 0}, {130, "Comp:Threshold", 0.5, 0}, {131, "Comp:Ratio", 0.5, 0},
    {132, "Comp:Mix", 1, 0}, {133, "Comp:Makeup Gain", 0.145, 0}, {134, "Comp:HPF", 0.5, 0}, {135, "Comp:Link", 1, 1},
    {160, "EQ:HI In", 1, 1}, {161, "EQ:HI Gain", 0.5, 0}, {162, "EQ:HI Freq", 0.5, 0}, {163, "EQ:HI Q", 0, 2},
    {164, "EQ:HM In", 1, 1}, {165, "EQ:HM Gain", 0.5, 0}, {166, "EQ:HM Freq", 0.5, 0}, {167, "EQ:HM Q", 0.5, 2},
    {168, "EQ:LM In", 1, 1}, {169, "EQ:LM Gain", 0.5, 0}, {170, "EQ:LM Freq", 0.5, 0}, {171, "EQ:LM Q", 0.5, 2},
    {172, "EQ:LO In", 1, 1}, {173, "EQ:LO Gain", 0.5, 0}, {174, "EQ:LO Freq", 0.5, 0}, {175, "EQ:LO Q", 0, 2},
    {176, "EQ:Out", 0.5, 0}, {177, "EQ:Analog", 1, 1},
    {208, "Lim:Attack", 0.5, 0}, {209, "Lim:Release", 0.5, 0}, {210, "Lim:Ceiling", 0.8, 0}, {211, "Lim:Output", 0.5, 0},
    {212, "Lim:HPF", 0, 0}, {213, "Lim:Link", 0, 1}, {214, "Lim:Soft", 0, 1}, {217, "Lim:Mode", 0, 10},
    {220, "Lim:Smooth", 0.5, 1000}, {221, "Lim:Shape", 0.2, 10},
    {240, "Mstr:Width", 0.5, 0}, {241, "Mstr:Balance", 0.5, 0}, {242, "Mstr:Gain", 0.7511, 0},
    {243, "Mstr:MeasurementPoint", 0.625, 3},
};

struct Head {
  const char* prefix;
  int base;
  double type, position;
};
constexpr Head kHeads[] = {{"Pre", 16, 0.25, 0},     {"Flt", 48, 0.0625, 0.125}, {"Gate", 80, 0, 0.25},
                           {"Comp", 112, 0.125, 0.375}, {"EQ", 144, 0.0625, 0.5},   {"Lim", 192, 0, 0.625},
                           {"Mstr", 224, 0, 0.75},   {"InsX", 256, 0, 0.875},    {"InsY", 304, 0, 1}};

constexpr std::array kMeters{
    "Pre:InMeter", "Pre:OutMeter", "Pre:PstGainMeter", "Pre:Automat", "Pre:InSatMeter", "Pre:xm1",
    "Flt:InMeter", "Flt:OutMeter", "Flt:xm1", "Flt:xm2",
    "Gate:InMeter", "Gate:OutMeter", "Gate:GRMeter", "Gate:xm1",
    "Comp:InMeter", "Comp:OutMeter", "Comp:GRMeter", "Comp:xm1",
    "EQ:InMeter", "EQ:OutMeter", "EQ:xm1", "EQ:xm2",
    "Lim:InMeter", "Lim:OutMeter", "Lim:GRMeter", "Lim:xm1",
    "Mstr:InMeter", "Mstr:OutMeter", "Mstr:Peak L", "Mstr:Peak R", "Mstr:RMS L", "Mstr:RMS R",
    "Mstr:xm1", "Mstr:xm2", "Mstr:xm3", "Mstr:xm4", "Mstr:xm5", "Mstr:xm6"};
// clang-format on

std::map<int, Entry> agreed(std::map<int, std::string>& names) {
  std::map<int, Entry> all;
  const auto put = [&](int id, const std::string& name, double value, int steps) {
    names[id] = name;
    all[id] = {id, names[id].c_str(), value, steps};
  };
  put(0, "Process", 1.0, 1);
  for (const Head& head : kHeads) {
    const std::string p = std::string(head.prefix) + ":";
    put(head.base, p + "Type", head.type, head.base >= 256 ? 256 : 15);
    put(head.base + 1, p + "Position", head.position, 8);
    int offset = 2;
    for (const char* name : {"Mute", "Solo", "Side Chain", "Monitor"})
      put(head.base + offset++, p + name, 0.0, 1);
  }
  for (const Entry& entry : kOwn) put(entry.id, entry.name, entry.defaultValue, entry.steps);
  for (int n = 1; n <= 32; ++n) {
    std::array<char, 16> x{}, y{};
    std::snprintf(x.data(), x.size(), "InsX:Prm%02d", n);
    std::snprintf(y.data(), y.size(), "InsY:Prm%02d", n);
    put(271 + n, x.data(), 0.0, 0);
    put(319 + n, y.data(), 0.0, 0);
  }
  return all;
}

TEST(ParameterBank, EqualsTheAgreedNumberingIdById) {
  std::map<int, std::string> names;
  const auto all = agreed(names);
  EXPECT_EQ(all.size(), 192u);
  for (int id = -1; id < 900; ++id) {
    char text[kTextBytes];
    parameterName(id, text);
    const auto at = all.find(id);
    const bool meter = id >= 361 && id <= 423;
    EXPECT_EQ(parameterKind(id), at != all.end() ? 9 : meter ? 2 : 0) << id;
    if (at == all.end()) {
      EXPECT_EQ(parameterDefault(id), 0.0) << id;
      EXPECT_EQ(parameterSteps(id), 0) << id;
      continue;
    }
    EXPECT_STREQ(text, at->second.name) << id;
    EXPECT_EQ(parameterDefault(id), at->second.defaultValue) << text;
    EXPECT_EQ(parameterSteps(id), at->second.steps) << text;
  }
  for (std::size_t k = 0; k < kMeters.size(); ++k) {
    char text[kTextBytes];
    parameterName(361 + static_cast<int>(k), text);
    EXPECT_STREQ(text, kMeters[k]);
  }
}

TEST(ParameterBank, IdentifiersLeadBackToTheirIds) {
  EXPECT_STREQ(parameterIdentifier(128), "128: Comp:Attack");
  for (int id = 0; id < kIdentifiers; ++id) {
    EXPECT_LE(std::string(parameterIdentifier(id)).size(), 31u);
    EXPECT_EQ(parameterIdOf(parameterIdentifier(id)), id);
  }
  EXPECT_EQ(parameterIdOf("128: comp:attack"), -1);
}

}  // namespace
}  // namespace corvane
