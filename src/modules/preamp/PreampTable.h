#pragma once

#include <array>
#include <cmath>
#include <cstring>

#include "core/ParameterRow.h"
#include "core/text/NumberText.h"

namespace corvane::preamp {

inline constexpr int kGain = 16;
inline constexpr int kAutoIn = 17;
inline constexpr int kRefLevel = 18;
inline constexpr int kAutoDetectMode = 19;
inline constexpr int kAutoLevelMode = 20;
inline constexpr int kPhaseLeft = 21;
inline constexpr int kPhaseRight = 22;
inline constexpr int kAnalog = 23;
inline constexpr int kDrive = 24;
inline constexpr int kNoiseIn = 25;
inline constexpr int kNoiseLevel = 26;
inline constexpr int kParameterSpan = 32;  // offsets of the group, reserved ones included

/// Gain knob in dB, -30 .. +30, in single precision: the figure on the display is the figure that acts.
inline double gainDb(const Taper& t, double p) {
  return static_cast<double>(static_cast<float>(t.span) * static_cast<float>(p) + static_cast<float>(t.base));
}
constexpr Taper gainKnob() { return {gainDb, taper::linearInverse, -30.0, 60.0, Taper::Curve::linear}; }

/// The mid position still shows the lower word, although the switch has tipped there.
inline void showLevelMode(const Row&, double p, char* text) {
  std::strcpy(text, p > 0.5 ? "Up&Down" : "Down");
}

/// dB of the row's ratio (1 .. 1000) over the level of the knob's low stop.
inline void showDb(const Row& row, double p, double lowStop, char* text) {
  formatFixed(static_cast<float>(20.0 * std::log10(row.taper.physical(p) * lowStop)), 1, text);
}
inline void showDrive(const Row& row, double p, char* text) {
  showDb(row, p, 0.1 * 0.3162277638912201, text);
}
inline void showNoiseLevel(const Row& row, double p, char* text) {
  showDb(row, p, 9.999999974752427e-7, text);
}

// Drive and noise level are held as ratios to their low stops, -30 dB and -120 dB; both knobs span 60 dB.
// clang-format off
inline constexpr std::array kRows{
    //  offset           name                  default steps        taper                      unit    text                            typed
    Row{kGain,           "Pre:Gain",           0.5,    kContinuous, gainKnob(),                " dB ", fixedText(1),                   kSearchEntry},
    Row{kAutoIn,         "Pre:AutoIn",         0.0,    1,           onOff(),                   "",     kNoDisplay,                     kSearchEntry},
    Row{kRefLevel,       "Pre:RefLevel",       0.5,    kContinuous, linear(-30.0, 30.0),       " dB ", fixedText(1, "dB"),             kSearchEntry},
    Row{kAutoDetectMode, "Pre:AutoDetectMode", 1.0,    1,           onOff(),                   "",     kNoDisplay,                     kSearchEntry},
    Row{kAutoLevelMode,  "Pre:AutoLevelMode",  0.0,    1,           onOff(),                   "",     ownText(showLevelMode),         kSearchEntry},
    Row{kPhaseLeft,      "Pre:PhaseL",         0.0,    1,           onOff(),                   "",     kNoDisplay,                     kSearchEntry},
    Row{kPhaseRight,     "Pre:PhaseR",         0.0,    1,           onOff(),                   "",     kNoDisplay,                     kSearchEntry},
    Row{kAnalog,         "Pre:Analog",         1.0,    1,           onOff(),                   "",     choiceText("Out|In"),           kSearchEntry},
    Row{kDrive,          "Pre:Drive",          0.5,    kContinuous, exponential(1.0, 1000.0),  "",     ownText(showDrive),             kSearchEntry, "dB"},
    Row{kNoiseIn,        "Pre:NoiseIn",        0.0,    2,           stepped(2),                "",     choiceText("Off|Auto Mute|On"), kSearchEntry},
    Row{kNoiseLevel,     "Pre:NoiseLevel",     0.5,    kContinuous, exponential(1.0, 1000.0),  "",     ownText(showNoiseLevel),        kSearchEntry, "dB"},
};
// clang-format on

}  // namespace corvane::preamp
