#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "lv2/Scale.h"

namespace corvane::lv2 {

// The ports of the two plug-ins, one list for both: the code that runs them and the description that hosts
// read are made from it. [any]; the list is made once and shared by all instances.

inline constexpr const char* kPluginUri = "https://quadrexa.example/lv2/corvane-mono";
inline constexpr const char* kSideChainPluginUri = "https://quadrexa.example/lv2/corvane-mono-sidechain";

// Indices. Control inputs and meters follow in the order of their lists; the key stands last, so that all
// others have the same index in both plug-ins.
inline constexpr std::uint32_t kInputPort = 0;
inline constexpr std::uint32_t kOutputPort = 1;
inline constexpr std::uint32_t kLatencyPort = 2;
inline constexpr std::uint32_t kFirstControlPort = 3;

inline constexpr int kEnabledId = -1;  ///< stands for the bypass, which has no id in the bank
inline constexpr int kNoPlace = -1;

/// A control input: one parameter.
struct ControlPort {
  int id;              ///< of the bank, or kEnabledId
  std::string symbol;  ///< letters, digits and "_"; stable for ever
  std::string name;
  int place = kNoPlace;
  Scale scale{};
  bool logarithmic = false;
  std::vector<Choice> stops{};  ///< ends of the range that displays name by a word: "Off", "-oo"
};

/// A control output: one reading.
struct MeterPort {
  int id;  ///< of the bank
  std::string symbol, name;
  int place = kNoPlace;
  bool reduction = false;  ///< dB of gain taken away; else a level in dB of full scale
};

inline constexpr float kLowestLevelDb = -100.0f, kMostReductionDb = 100.0f;

struct Ports {
  std::vector<ControlPort> controls;
  std::vector<MeterPort> meters;

  std::uint32_t firstMeter() const { return kFirstControlPort + static_cast<std::uint32_t>(controls.size()); }
  std::uint32_t key() const { return firstMeter() + static_cast<std::uint32_t>(meters.size()); }
};
const Ports& ports();

/// Title of a place for people.
std::string_view placeTitle(int place);

}  // namespace corvane::lv2
