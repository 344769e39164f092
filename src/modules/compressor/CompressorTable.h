#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <cstring>

#include "core/ParameterRow.h"
#include "core/Rack.h"
#include "core/text/NumberText.h"

namespace corvane::compressor {

inline constexpr int kAttack = 16;
inline constexpr int kRelease = 17;
inline constexpr int kThreshold = 18;
inline constexpr int kRatio = 19;
inline constexpr int kMix = 20;
inline constexpr int kMakeupGain = 21;
inline constexpr int kHpf = 22;
inline constexpr int kLink = 23;

inline constexpr double kRatioExponent = 0.415;
inline constexpr double kHighestRatio = 92.0;     // a typed ratio above is a limiter
inline constexpr double kLimiterFrom = 0.976073;  // p from which the display says so

/// Share of each dB above the threshold that is taken away: 0 at 1:1, 1 for a limiter. It grows fast from
/// 1:1, where the ear tells ratios apart.
inline double ratioSlope(double p) { return std::pow(p, kRatioExponent); }

inline double ratioToOne(const Taper&, double p) { return 1.0 / (1.0 - ratioSlope(p)); }
inline double ratioPosition(const Taper&, double ratio) {
  constexpr double kInverseExponent = 2.4096385542168677;
  return std::pow(1.0 - 1.0 / ratio, kInverseExponent);
}

/// Two digits behind the point below 2:1, one below 10:1, none above, "oo" for a limiter.
inline void showRatio(const Row& row, double p, char* text) {
  if (p < kLimiterFrom) {
    const double ratio = row.taper.physical(p);
    formatFixed(static_cast<float>(ratio), ratio < 2.0 ? 2 : ratio < 10.0 ? 1 : 0, text);
  } else {
    std::strcpy(text, "oo");
  }
  std::strcat(text, ":1");
}

inline void showMix(const Row& row, double p, char* text) {
  std::snprintf(text, kTextBytes, "%2.0f%%", row.taper.physical(p));
}

/// Number in the range of the row's entry. What reads as 0 must look like one, so that a word is not taken
/// for it: "0", or what starts with `zero`.
inline bool readWithZero(const Row& row, const char* text, const char* zero, double* p) {
  const double number = readNumber(text);
  const bool isZero = std::strcmp(text, "0") == 0 || std::strncmp(text, zero, std::strlen(zero)) == 0;
  if (number == 0.0 && !isZero) return false;
  if (number < row.entry.low || number > row.entry.high) return false;
  *p = row.taper.normalised(number);
  return true;
}
inline bool readDb(const Row& row, const char* text, double* p) { return readWithZero(row, text, "0.", p); }
inline bool readMix(const Row& row, const char* text, double* p) { return readWithZero(row, text, "0%", p); }

/// "4", "4:1", "oo" or "oo:1".
inline bool readRatio(const Row& row, const char* text, double* p) {
  const bool limiter = std::strcmp(text, "oo") == 0 || std::strcmp(text, "oo:1") == 0;
  const double ratio = readNumber(text);
  if (!limiter && ratio < row.entry.low) return false;
  *p = limiter || ratio > row.entry.high ? 1.0 : row.taper.normalised(ratio);
  return true;
}

/// Hz; a word ("Off") stands for the lowest setting.
inline bool readHpf(const Row& row, const char* text, double* p) {
  const double hz = readFrequency(text);
  if (hz != 0.0 && (hz < row.entry.low || hz > row.entry.high)) return false;
  *p = hz == 0.0 ? 0.0 : row.taper.normalised(hz);
  return true;
}

// clang-format off
inline constexpr std::array kRows{
    //  offset            name                default  steps        taper                                unit  text                   typed
    Row{kSideChainOffset, "Comp:Side Chain",  0.0,     1,           stepped(3),                          "",   choiceText("Input|Ext AUX|Ext AUX|Ext AUX")},
    Row{kAttack,          "Comp:Attack",      0.5,     kContinuous, exponential(0.1, 1000.0),            "",   fixedText(1),          typed(0.1, 100.0), "ms"},
    Row{kRelease,         "Comp:Release",     0.5,     kContinuous, exponential(25.0, 100.0),            "",   fixedText(1),          typed(25.0, 2500.0), "ms"},
    Row{kThreshold,       "Comp:Threshold",   0.5,     kContinuous, linear(-40.0, 50.0),                 "",   fixedText(1),          typedBy(readDb, -40.0, 10.0), "dB"},
    Row{kRatio,           "Comp:Ratio",       0.5,     kContinuous, ownTaper(ratioToOne, ratioPosition), "",   ownText(showRatio),    typedBy(readRatio, 1.0, kHighestRatio)},
    Row{kMix,             "Comp:Mix",         1.0,     kContinuous, linear(0.0, 100.0),                  "",   ownText(showMix),      typedBy(readMix, 0.0, 100.0), "%"},
    Row{kMakeupGain,      "Comp:Makeup Gain", 0.145,   kContinuous, linear(0.0, 20.0),                   "",   fixedText(1),          typedBy(readDb, 0.0, 20.0), "dB"},
    Row{kHpf,             "Comp:HPF",         0.5,     kContinuous, exponential(10.0, 100.0),            "",   frequencyOrOffText(),  typedBy(readHpf, 10.0, 1000.0), "Hz"},
    Row{kLink,            "Comp:Link",        1.0,     1,           onOff(),                             "",   kNoDisplay},
};
// clang-format on

}  // namespace corvane::compressor
