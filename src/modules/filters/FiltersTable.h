#pragma once

#include <array>
#include <cmath>
#include <cstring>

#include "core/ParameterRow.h"
#include "core/Rack.h"
#include "core/text/NumberText.h"

namespace corvane::filters {

inline constexpr int kLpfIn = 16;
inline constexpr int kLpfFreq = 17;
inline constexpr int kLpfSlope = 18;
inline constexpr int kParametricIn = 19;
inline constexpr int kParametricGain = 20;
inline constexpr int kParametricFreq = 21;
inline constexpr int kParametricQ = 22;
inline constexpr int kParametricType = 23;
inline constexpr int kHpfIn = 24;
inline constexpr int kHpfFreq = 25;
inline constexpr int kHpfSlope = 26;

/// dB in steps of 0.01 from -24 to 24.
inline double steppedGainDb(const Taper&, double p) { return 0.01 * std::trunc(4800.0 * p + 0.5) - 24.0; }
inline double steppedGainPosition(const Taper&, double gainDb) { return (gainDb + 24.0) / 48.0; }

/// The dial's own position, between the steps.
inline void showGain(const Row&, double p, char* text) {
  formatFixed(static_cast<float>(48.0 * p - 24.0), 1, text);
  std::strcat(text, "dB");
}

// clang-format off
inline constexpr std::array kRows{
    //  offset            name                   default  steps        taper                                          unit    text                                            typed
    Row{kMonitorOffset,   "Flt:Monitor",         0.0,     1,           onOff(),                                       " ",    choiceText("Off|On")},
    Row{kLpfIn,           "Flt:LPF In",          1.0,     1,           onOff(),                                       " ",    choiceText("Out|In"),                           kSearchEntry},
    Row{kLpfFreq,         "Flt:LPF Freq",        1.0,     kContinuous, exponential(300.0, 100.0),                     " Hz ", frequencyText(),                                kSearchEntry},
    Row{kLpfSlope,        "Flt:LPF Slope",       0.5,     2,           stepped(2),                                    " ",    choiceText("6|12|18"),                          kSearchEntry, "dB/oct"},
    Row{kParametricIn,    "Flt:Parametric In",   1.0,     1,           onOff(),                                       " ",    choiceText("Out|In"),                           kSearchEntry},
    Row{kParametricGain,  "Flt:Parametric Gain", 0.5,     kContinuous, ownTaper(steppedGainDb, steppedGainPosition),  " dB ", ownText(showGain),                              kSearchEntry},
    Row{kParametricFreq,  "Flt:Parametric Freq", 0.5,     kContinuous, exponential(20.0, 1000.0),                     " Hz ", frequencyText("Hz"),                            kSearchEntry},
    Row{kParametricQ,     "Flt:Parametric Q",    0.5,     kContinuous, exponential(0.05, 400.0),                      " ",    fixedText(2),                                   kSearchEntry},
    Row{kParametricType,  "Flt:Parametric Type", 0.5,     4,           stepped(4),                                    " ",    choiceText("LoShelf|Bell|Peak|Notch|HiShelf"),  kSearchEntry},
    Row{kHpfIn,           "Flt:HPF In",          1.0,     1,           onOff(),                                       " ",    choiceText("Out|In"),                           kSearchEntry},
    Row{kHpfFreq,         "Flt:HPF Freq",        0.0,     kContinuous, exponential(20.0, 100.0),                      " Hz ", frequencyText(),                                kSearchEntry},
    Row{kHpfSlope,        "Flt:HPF Slope",       0.5,     2,           stepped(2),                                    " ",    choiceText("12|18|24"),                         kSearchEntry, "dB/oct"},
};
// clang-format on

}  // namespace corvane::filters
