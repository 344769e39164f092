#pragma once

#include <algorithm>
#include <cmath>

#include "core/ParameterBank.h"
#include "core/Rack.h"
#include "tests/lv2/RawHost.h"

// Settings for tests that put the whole rack to work.

namespace corvane::lv2 {

/// So many rounds of `fillRack` meet every variant at every place, an insert's included.
inline constexpr std::size_t kRounds = 25;

/// Type and own parameters of an insert, at the defaults of the family that comes in.
inline void fillInsert(RawStrip& strip, const std::string& prefix, int index) {
  strip.control(prefix + "_type") = static_cast<float>(index);
  const ModuleFamily* family = familyOfInsertIndex(index);
  for (std::size_t k = 0; k < strip.controls.size(); ++k) {
    const ControlPort& port = strip.all.controls[k];
    if (!port.symbol.starts_with(prefix + "_prm")) continue;
    const Row* row = findRow(*family, port.id - kRack[static_cast<std::size_t>(port.place)].parameterBase);
    strip.controls[k] = row ? static_cast<float>(row->defaultValue) : 0.0f;
  }
}

/// A module in every place; the levels of the programme move all dynamics.
inline void fillRack(RawStrip& strip, std::size_t round) {
  for (const ControlPort& port : strip.all.controls) {
    if (port.place == kNoPlace) continue;
    const Place& place = kRack[static_cast<std::size_t>(port.place)];
    if (port.id != place.parameterBase + kTypeOffset) continue;
    const auto& choices = port.scale.choices;  // the first is "Off"
    const std::size_t step = port.place == kInsertY ? round + 11 : round;
    const int type = choices[1 + step % (choices.size() - 1)].value;
    if (port.place >= kFixedPlaces)
      fillInsert(strip, port.symbol.substr(0, 4), type);
    else
      strip.control(port.symbol) = static_cast<float>(type);
  }
  for (const auto& [symbol, value] : {std::pair{"gate_threshold", -33.3f},
                                      {"comp_threshold", -27.1f},
                                      {"eq_hm_gain", 4.3f},
                                      {"eq_lo_gain", -5.1f},
                                      {"lim_ceiling", -6.5f}})
    strip.control(symbol) = value;
}

inline constexpr float kFirstUncoloured = 17.0f;  ///< of an insert's types; below are preamps
inline constexpr int kSibilance = 113;            ///< an insert's type

/// The same without what differs from unit to unit: the colours of the preamps.
inline void fillRackUncoloured(RawStrip& strip, std::size_t round) {
  fillRack(strip, round);
  strip.control("pre_type") = 1.0f;
  for (const char* insert : {"insx_type", "insy_type"})
    if (strip.control(insert) < kFirstUncoloured) fillInsert(strip, std::string(insert, 4), kSibilance);
}

/// All that glides is where it leads to, nothing sounds: the rest from which a test can begin.
inline void rest(RawStrip& strip) {
  strip.run(0);
  strip.activate();
  strip.run(0);
}

/// Highest difference of two sounds from `from` on, linear.
inline float difference(const Floats& a, const Floats& b, std::size_t from = 0) {
  float most = 0.0f;
  for (std::size_t n = from; n < a.size(); ++n) {
    const float d = std::abs(a[n] - b[n]);
    most = d <= most ? most : d;  // not a number is the highest of all
  }
  return most;
}

}  // namespace corvane::lv2
