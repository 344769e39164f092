#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <cstring>

#include "core/ParameterRow.h"
#include "core/text/NumberText.h"

namespace corvane::master {

inline constexpr int kWidth = 16;
inline constexpr int kBalance = 17;
inline constexpr int kGain = 18;
inline constexpr int kMeasurementPoint = 19;

// Fader law: -100 dB just above the stop, +10 dB at the top, finest around unity gain.
inline constexpr double kFaderFloor = 1e-5;   // -100 dB, linear
inline constexpr double kFaderDecades = 5.5;  // 110 dB from floor to top
inline constexpr double kFaderExponent = 0.333;

/// Linear gain of the fader; exactly 0 at the stop.
inline double faderGain(const Taper&, double p) {
  return p > 0.0 ? kFaderFloor * std::pow(10.0, kFaderDecades * std::pow(p, kFaderExponent)) : 0.0;
}
inline double faderPosition(const Taper&, double gain) {
  constexpr double kInverseDecades = 0.18181818181818182, kInverseExponent = 3.003003003003003;
  const double decades = std::log10(100000.0 * gain) * kInverseDecades;
  return decades > 0.0 ? std::min(std::pow(decades, kInverseExponent), 1.0) : 0.0;
}

inline void showWidth(const Row& row, double p, char* text) {
  formatFixed(static_cast<float>(row.taper.physical(p)), 0, text);
  std::strcat(text, "\n%");
}

inline void showBalance(const Row&, double p, char* text) {
  const int b = static_cast<int>(100.0 * p + 0.5) - 50;
  if (b == 0) {
    std::strcpy(text, "C");
    return;
  }
  formatFixed(static_cast<float>(std::abs(b)), 0, text);
  std::strcat(text, b < 0 ? "L" : "R");
}

inline void showGain(const Row& row, double p, char* text) {
  if (p > 0.0)
    formatFixed(static_cast<float>(20.0 * std::log10(row.taper.physical(p))), 2, text);
  else
    std::strcpy(text, "-oo");
}

inline bool readWidth(const Row& row, const char* text, double* p) {
  const double percent = readNumber(text);
  if (percent == 0.0 && !isTypedZero(text)) return false;
  if (percent < row.entry.low || percent > row.entry.high) return false;
  *p = percent * 0.005;
  return true;
}

/// "20L", "20R", "C", or a signed number, left below zero.
inline bool readBalance(const Row&, const char* text, double* p) {
  for (const char* centre : {"0", "0.", "0.0", "C", "c"})
    if (std::strcmp(text, centre) == 0) {
      *p = 0.5;
      return true;
    }
  const double number = readNumber(text);
  double position = 0.0;
  if (std::strpbrk(text, "Ll"))
    position = (50.0 - number) * 0.01;
  else if (std::strpbrk(text, "Rr") || number != 0.0)
    position = (number + 50.0) * 0.01;
  else
    return false;
  if (position < 0.0 || position > 1.0) return false;
  *p = position;
  return true;
}

/// dB; the stop below -100 dB, the top above +10 dB.
inline bool readGain(const Row& row, const char* text, double* p) {
  const char* end = nullptr;
  const double db = readNumber(text, &end);
  if (std::strcmp(text, "oo") == 0 || std::strcmp(text, "-oo") == 0 || db < row.entry.low)
    *p = 0.0;
  else if (end == text)
    return false;
  else
    *p = db > row.entry.high ? 1.0 : row.taper.normalised(std::pow(10.0, db * 0.05));
  return true;
}

// clang-format off
inline constexpr std::array kRows{
    //  offset             name                     default steps        taper                           unit    text                              typed
    Row{kWidth,            "Mstr:Width",            0.5,    kContinuous, linear(0.0, 200.0),             " ",    ownText(showWidth),               typedBy(readWidth, 0.0, 200.0), "%"},
    Row{kBalance,          "Mstr:Balance",          0.5,    kContinuous, linear(-50.0, 100.0),           " ",    ownText(showBalance),             typedBy(readBalance, -50.0, 50.0)},
    Row{kGain,             "Mstr:Gain",             0.7511, kContinuous, ownTaper(faderGain, faderPosition), " dB ", ownText(showGain),            typedBy(readGain, -100.0, 10.0)},
    Row{kMeasurementPoint, "Mstr:MeasurementPoint", 0.625,  3,           stepped(3),                     " ",    choiceText("In|Pre|Post|Out"),    kSearchEntry},
};
// clang-format on

}  // namespace corvane::master
