#pragma once

#include <array>
#include <cmath>

#include "core/ParameterRow.h"
#include "core/Rack.h"
#include "core/text/NumberText.h"

namespace corvane::deesser {

inline constexpr int kFrequency = 16;
inline constexpr int kResonance = 17;
inline constexpr int kSensitivity = 18;
inline constexpr int kRange = 19;
inline constexpr int kRatio = 20;
inline constexpr int kMode = 21;

/// base 32^(p^x): five octaves with more room at their top. The exponent puts 60 % of the way in octaves at
/// the middle of the travel.
inline constexpr double kOctaveBend = 0.736965594166206;
inline double fiveOctaves(const Taper& t, double p) {
  return t.base * std::pow(32.0, std::pow(p, kOctaveBend));
}
inline double fiveOctavesInverse(const Taper& t, double value) {
  return std::pow(std::log(value / t.base) / std::log(32.0), 1.0 / kOctaveBend);
}
constexpr Taper bentOctaves(double base) { return ownTaper(fiveOctaves, fiveOctavesInverse, base); }

/// dB, whole numbers.
inline double sensitivityDb(const Taper&, double p) { return std::trunc(48.0 * (p * p) + 0.5) - 24.0; }
inline double sensitivityPosition(const Taper&, double db) { return std::sqrt((db + 24.0) / 48.0); }

/// dB. The exponent puts 18 dB of the 24 at the middle of the travel.
inline constexpr double kRangeBend = 0.415037499278844;
inline double rangeDb(const Taper&, double p) { return 24.0 * std::pow(p, kRangeBend) - 24.0; }
inline double rangePosition(const Taper&, double db) {
  return std::pow((db + 24.0) / 24.0, 1.0 / kRangeBend);
}

/// The knob moves in per cent of its travel, not in the steps of the gain behind it.
inline void showSensitivity(const Row&, double p, char* text) {
  text[0] = '\0';
  formatFixed(static_cast<float>(100.0 * p), 0, text);
}

// clang-format off
inline constexpr std::array kRows{
    //  offset          name           default            steps        taper                                            unit    text                      typed
    Row{kTypeOffset,    "Type",        0.0,               255,         stepped(255),                                    " ",    choiceText("Empty")},
    Row{kMonitorOffset, "Monitor",     0.0,               1,           onOff(),                                         " ",    choiceText("Off|On")},
    Row{kFrequency,     "Freq",        0.636715681427498, kContinuous, bentOctaves(500.0),                              " Hz ", frequencyText(),          kSearchEntry},
    Row{kResonance,     "Resonance",   0.636715681427498, kContinuous, bentOctaves(0.5),                                " ",    fixedText(2),             kSearchEntry},
    Row{kSensitivity,   "Sensitivity", 0.5,               kContinuous, ownTaper(sensitivityDb, sensitivityPosition),    " % ",  ownText(showSensitivity), kSearchEntry},
    Row{kRange,         "Range",       0.5,               kContinuous, ownTaper(rangeDb, rangePosition),                " dB ", fixedText(1),             kSearchEntry},
    Row{kRatio,         "Ratio",       0.0,               1,           onOff(),                                         " ",    choiceText("2:1|4:1"),    kSearchEntry},
    Row{kMode,          "Mode",        0.0,               1,           onOff(),                                         " ",    choiceText("Off|On"),     kSearchEntry},
};
// clang-format on

}  // namespace corvane::deesser
