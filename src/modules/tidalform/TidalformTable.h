#pragma once

#include <array>
#include <cmath>

#include "core/ParameterRow.h"
#include "core/Rack.h"

namespace corvane::tidalform {

inline constexpr int kThreshold = 16;
inline constexpr int kTime = 17;
inline constexpr int kFrequency = 18;
inline constexpr int kAbove = 19;
inline constexpr int kBelow = 20;
inline constexpr int kQ = 21;
inline constexpr int kTransition = 22;
inline constexpr int kFilterType = 23;
inline constexpr int kControlMode = 24;

/// dB, counted down from the top.
inline double thresholdDb(const Taper&, double p) { return 100.0 * (p - 1.0) + 20.0; }
inline double thresholdPosition(const Taper&, double db) { return (db + 80.0) / 100.0; }

/// 0.1 .. 10, in equal ratios, with 1 in the middle.
inline double tenthsPosition(const Taper&, double value) { return std::log(10.0 * value) / std::log(100.0); }
inline constexpr Taper kTenthToTen{taper::exponentialForward, tenthsPosition, 0.1, 100.0,
                                   Taper::Curve::logarithmic};

/// Q of the shelves, 0.35 .. 1.4, on the travel of the peak's.
inline constexpr Taper kShelfQ = exponential(0.35, 4.0);

/// dB; a "0" of any spelling is the hard switch.
inline bool readTransition(const Row& row, const char* text, double* p) {
  const char* end = nullptr;
  const double db = readNumber(text, &end);
  if (end == text || db < row.entry.low || db > row.entry.high) return false;
  *p = row.taper.normalised(db);
  return true;
}

// clang-format off
inline constexpr std::array kRows{
    //  offset          name            default steps        taper                                     unit    text                                   typed
    Row{kTypeOffset,    "Type",         0.0,    255,         stepped(255),                             " ",    choiceText("Empty")},
    Row{kMonitorOffset, "Monitor",      0.0,    1,           onOff(),                                  " ",    choiceText("Off|On")},
    Row{kThreshold,     "Threshold",    0.5,    kContinuous, ownTaper(thresholdDb, thresholdPosition), " dB ", fixedText(1),                          typed(-80.0, 20.0)},
    Row{kTime,          "Time",         0.5,    kContinuous, kTenthToTen,                              " ",    fixedText(2),                          typed(0.1, 10.0)},
    Row{kFrequency,     "Frequency",    0.5,    kContinuous, exponential(20.0, 1000.0),                " Hz ", frequencyText(),                       typedHz(20.0, 20000.0)},
    Row{kAbove,         "Above",        0.5,    kContinuous, linear(-24.0, 48.0),                      " ",    fixedText(1, "dB"),                    typed(-24.0, 24.0), "dB"},
    Row{kBelow,         "Below",        0.5,    kContinuous, linear(-24.0, 48.0),                      " ",    fixedText(1, "dB"),                    typed(-24.0, 24.0), "dB"},
    Row{kQ,             "Q",            0.5,    kContinuous, kTenthToTen,                              " ",    fixedText(2),                          typed(0.1, 10.0)},
    Row{kTransition,    "Transition",   0.5,    kContinuous, linear(0.0, 24.0),                        " dB ", fixedText(1),                          typedBy(readTransition, 0.0, 24.0)},
    Row{kFilterType,    "Filter type",  0.5,    2,           stepped(2),                               " ",    choiceText("LowShelf|Peak|HiShelf"),   kSearchEntry},
    Row{kControlMode,   "Control mode", 0.5,    2,           stepped(2),                               " ",    choiceText("Off|Direct|Complement"),   kSearchEntry},
};
// clang-format on

}  // namespace corvane::tidalform
