#pragma once

#include <array>

#include "core/ParameterRow.h"
#include "core/text/NumberText.h"

namespace corvane::limiter {

inline constexpr int kAttack = 16;
inline constexpr int kRelease = 17;
inline constexpr int kCeiling = 18;
inline constexpr int kOutput = 19;
inline constexpr int kHpf = 20;
inline constexpr int kLink = 21;
inline constexpr int kSoft = 22;
inline constexpr int kMode = 25;
inline constexpr int kSmooth = 28;
inline constexpr int kShape = 29;

inline constexpr double kHpfOffHz = 10.0;  // at the stop the key high-pass is out of the path

/// Whole per cent, halves upwards.
inline void showSmooth(const Row& row, double p, char* text) {
  formatFixed(static_cast<float>(static_cast<int>(row.taper.physical(p) + 0.5)), 0, text);
}

// Release and HPF take typed values from 0.1 on, below the stop of their travel: the position goes below 0
// and the module holds the value at 10.
// clang-format off
inline constexpr std::array kRows{
    //  offset   name           default  steps        taper                      unit     text                                          typed
    Row{kAttack,  "Lim:Attack",  0.5,    kContinuous, exponential(0.1, 1000.0),  " ms ",  fixedText(1),                                 typed(0.1, 100.0)},
    Row{kRelease, "Lim:Release", 0.5,    kContinuous, exponential(10.0, 100.0),  " ms ",  fixedText(0),                                 typed(0.1, 1000.0)},
    Row{kCeiling, "Lim:Ceiling", 0.8,    kContinuous, linear(-40.0, 50.0),       " dB ",  fixedText(1),                                 typed(-40.0, 10.0)},
    Row{kOutput,  "Lim:Output",  0.5,    kContinuous, linear(-20.0, 40.0),       " dB ",  fixedText(1),                                 typed(-20.0, 20.0)},
    Row{kHpf,     "Lim:HPF",     0.0,    kContinuous, exponential(10.0, 100.0),  " Hz ",  frequencyOrOffText(),                         typedHz(0.1, 1000.0)},
    Row{kLink,    "Lim:Link",    0.0,    1,           onOff(),                   "  ",    choiceText("-|Linked")},
    Row{kSoft,    "Lim:Soft",    0.0,    1,           onOff(),                   "  ",    choiceText("-|Soft")},
    Row{kMode,    "Lim:Mode",    0.0,    10,          stepped(10),               "",      choiceText("Mode 1|Mode 2|Mode 3|undef"),     kSearchEntry},
    Row{kSmooth,  "Lim:Smooth",  0.5,    1000,        linear(0.0, 100.0),        "",      ownText(showSmooth),                          typed(0.0, 100.0), "%"},
    Row{kShape,   "Lim:Shape",   0.2,    10,          stepped(10),               "",      choiceText("Valve 1|Valve 2|Tape 1|Tape 2|Soft Clip|Hard Clip|undef"), kSearchEntry},
};
// clang-format on

}  // namespace corvane::limiter
