#pragma once

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstring>

#include "core/ParameterRow.h"
#include "core/Rack.h"
#include "core/text/NumberText.h"

namespace corvane::gate {

inline constexpr int kAttack = 16;
inline constexpr int kRelease = 17;
inline constexpr int kRatio = 18;
inline constexpr int kHold = 19;
inline constexpr int kThreshold = 20;
inline constexpr int kShape = 21;
inline constexpr int kRange = 22;
inline constexpr int kHpfIn = 23;
inline constexpr int kHpfFreq = 24;
inline constexpr int kLpfIn = 25;
inline constexpr int kLpfFreq = 26;

/// What the dial of the expander shows, 1:k, for each of its steps.
inline constexpr std::array kRatios{1.0, 1.1, 1.2, 1.3, 1.5, 1.7, 2.0, 2.5, 3.2, 5.0, 10.0};
inline constexpr int kRatioSteps = static_cast<int>(kRatios.size()) - 1;

inline constexpr double kLongestHoldSeconds = 0.4;
inline constexpr double kSilentRange = 0.001;  // -60 dB: from here down a floor is shown as silence
inline constexpr double kSilentRangeDb = -60.0;

/// Seconds; the square leaves half of the travel to the first 100 ms.
inline double holdTime(const Taper&, double p) { return kLongestHoldSeconds * (p * p); }
inline double holdPosition(const Taper&, double seconds) { return std::sqrt(seconds / kLongestHoldSeconds); }

/// Linear gain of the floor, from silence to no reduction at all.
inline double rangeGain(const Taper&, double p) { return p * p; }
inline double rangePosition(const Taper&, double gain) { return std::sqrt(gain); }

/// Linear threshold of a level in dB.
inline double thresholdGain(double thresholdDb) {
  return std::clamp(std::pow(10.0, thresholdDb * 0.05), 0.001, 1.0);
}

inline void showRatio(const Row& row, double p, char* text) {
  const auto step = static_cast<std::size_t>(row.taper.physical(p));
  std::strcpy(text, "1:");
  formatFixed(static_cast<float>(kRatios[step]), 1, text + 2);
}

/// Milliseconds, right-aligned in four places.
inline void showHold(const Row& row, double p, char* text) {
  char digits[kTextBytes];
  const auto end = std::to_chars(digits, digits + sizeof digits, 1000.0 * row.taper.physical(p),
                                 std::chars_format::fixed, 1);
  const auto length = static_cast<std::size_t>(end.ptr - digits);
  const std::size_t blanks = length < 4 ? 4 - length : 0;
  std::memset(text, ' ', blanks);
  std::memcpy(text + blanks, digits, length);
  text[blanks + length] = '\0';
}

inline void showThreshold(const Row& row, double p, char* text) {
  formatFixed(static_cast<float>(20.0 * std::log10(thresholdGain(row.taper.physical(p)))), 1, text);
}

/// Whole steps of the dial.
inline void showShape(const Row& row, double p, char* text) {
  formatFixed(static_cast<float>(std::trunc(row.taper.span * p + 0.5) + row.taper.base), 1, text);
}

inline void showRange(const Row& row, double p, char* text) {
  const double gain = row.taper.physical(p);
  if (gain <= kSilentRange)
    std::strcpy(text, "-oo");
  else
    formatFixed(static_cast<float>(20.0 * std::log10(gain)), 1, text);
}

/// Number in the range of the row's entry. Zero counts in any spelling ("0.0" is what the displays show).
inline bool numberInRange(const Row& row, const char* text, double& number) {
  const char* end = nullptr;
  number = readNumber(text, &end);
  return end != text && number >= row.entry.low && number <= row.entry.high;
}

inline bool readPlain(const Row& row, const char* text, double* p) {
  double number = 0.0;
  if (!numberInRange(row, text, number)) return false;
  *p = row.taper.normalised(number);
  return true;
}

/// Milliseconds.
inline bool readHold(const Row& row, const char* text, double* p) {
  double ms = 0.0;
  if (!numberInRange(row, text, ms)) return false;
  *p = std::sqrt(ms / row.entry.high);
  return true;
}

/// "1:2.5" or "2.5": the highest step whose ratio is not above the number.
inline bool readRatio(const Row& row, const char* text, double* p) {
  const char* colon = std::strchr(text, ':');
  double ratio = 0.0;
  if (!numberInRange(row, colon ? colon + 1 : text, ratio)) return false;
  const auto above = std::upper_bound(kRatios.begin(), kRatios.end(), ratio);
  *p = static_cast<double>(above - kRatios.begin() - 1) * 0.1;
  return true;
}

/// dB, or "-oo" for a floor of silence.
inline bool readRange(const Row& row, const char* text, double* p) {
  const char* end = nullptr;
  const double rangeDb = readNumber(text, &end);
  if (std::strcmp(text, "oo") == 0 || std::strcmp(text, "-oo") == 0)
    *p = 0.0;
  else if (end == text || rangeDb > row.entry.high)
    return false;
  else
    *p = rangeDb <= row.entry.low ? 0.0 : row.taper.normalised(std::pow(10.0, rangeDb / 20.0));
  return true;
}

// clang-format off
inline constexpr std::array kRows{
    //  offset            name                default  steps        taper                               unit    text                       typed
    Row{kSideChainOffset, "Gate:Side Chain",  0.0,     1,           onOff(),                            "",     choiceText("Input|Ext AUX")},
    Row{kMonitorOffset,   "Gate:Monitor",     0.0,     1,           onOff(),                            "",     choiceText("Off|On")},
    Row{kAttack,          "Gate:Attack",      0.5,     kContinuous, exponential(0.1, 2500.0),           "",     fixedText(1),              typed(0.1, 250.0), "ms"},
    Row{kRelease,         "Gate:Release",     0.5,     kContinuous, exponential(10.0, 300.0),           "",     fixedText(0),              typed(10.0, 3000.0), "ms"},
    Row{kRatio,           "Gate:Ratio",       0.5,     kContinuous, stepped(kRatioSteps),               "",     ownText(showRatio),        typedBy(readRatio, 1.0, 10.0)},
    Row{kHold,            "Gate:Hold",        0.5,     kContinuous, ownTaper(holdTime, holdPosition),   "s",    ownText(showHold),         typedBy(readHold, 0.0, 400.0), "ms"},
    Row{kThreshold,       "Gate:Threshold",   0.5,     kContinuous, linear(-60.0, 60.0),                " dB ", ownText(showThreshold),    typedBy(readPlain, -60.0, 0.0)},
    Row{kShape,           "Gate:Shape",       0.5,     kContinuous, linear(-100.0, 200.0),              "",     ownText(showShape),        typedBy(readPlain, -100.0, 100.0)},
    Row{kRange,           "Gate:Range",       0.0,     kContinuous, ownTaper(rangeGain, rangePosition), "",     ownText(showRange),        typedBy(readRange, kSilentRangeDb, 0.0), "dB"},
    Row{kHpfIn,           "Gate:HPF In",      0.0,     1,           onOff(),                            "",     choiceText("Out|In")},
    Row{kHpfFreq,         "Gate:HPF Freq",    0.0,     kContinuous, exponential(20.0, 400.0),           "",     fixedText(0),              typedHz(20.0, 8000.0), "Hz"},
    Row{kLpfIn,           "Gate:LPF In",      0.0,     1,           onOff(),                            "",     choiceText("Out|In")},
    Row{kLpfFreq,         "Gate:LPF Freq",    1.0,     kContinuous, exponential(50.0, 400.0),           "",     fixedText(0),              typedHz(50.0, 20000.0), "Hz"},
};
// clang-format on

}  // namespace corvane::gate
