#pragma once

#include <array>
#include <charconv>
#include <cmath>
#include <cstring>
#include <string>

#include "core/ParameterRow.h"
#include "core/Rack.h"
#include "core/text/NumberText.h"

namespace corvane::dehummer {

inline constexpr int kEvenOdd = 16;
inline constexpr int kBrightness = 17;
inline constexpr int kAttenuation = 18;
inline constexpr int kMains = 19;
inline constexpr int kOffset = 20;

/// Share of the attenuation that odd and even harmonics get, 0..1: both in full at the middle of the knob,
/// only the odd ones at its left stop, only the even ones at its right.
struct HarmonicBalance {
  double oddWeight = 1.0, evenWeight = 1.0;
};
inline HarmonicBalance harmonicBalance(double p) {
  if (p < 0.5) return {1.0, 2.0 * p};
  if (p > 0.5) return {2.0 * (1.0 - p), 1.0};
  return {};
}

/// Decades by which the curve of the harmonics stays below its highest, 0..1; finer near the bright end.
inline double harmonicDarkness(double p) { return (1.0 - p) * (1.0 - p); }

inline double percent(const Taper&, double p) { return 100.0 * p; }
inline double percentPosition(const Taper&, double value) { return value * 0.01; }

/// dB. The exponent puts 36 dB of the 48 at the middle of the travel.
inline double attenuationDb(const Taper&, double p) { return 48.0 * std::pow(p, 0.415037499278844) - 48.0; }
inline double attenuationPosition(const Taper&, double db) {
  return std::pow((db + 48.0) / 48.0, 2.409420839653208);
}

/// Hz.
inline double mainsHz(const Taper&, double p) { return p >= 0.5 ? 60.0 : 50.0; }
inline double mainsPosition(const Taper&, double hz) { return hz >= 60.0 ? 1.0 : 0.0; }

/// Hz, in steps of a hundredth.
inline double offsetHz(const Taper&, double p) { return std::trunc(2000.0 * p + 0.5) * 0.01 - 10.0; }
inline double offsetPosition(const Taper&, double hz) { return (hz + 10.0) / 20.0; }

/// Odd and even weight in per cent: "100/60".
inline void showEvenOdd(const Row&, double p, char* text) {
  const int n = static_cast<int>(200.0 * p + 0.5);
  const std::string odd = std::to_string(n > 100 ? 200 - n : 100), even = std::to_string(n < 100 ? n : 100);
  std::strcpy(text, (odd + "/" + even).c_str());
}

/// "+0.25", "-1.50", "0".
inline void showOffset(const Row& row, double p, char* text) {
  const double hz = row.taper.physical(p);
  char* at = text;
  if (hz > 0.0) *at++ = '+';
  if (hz == 0.0)
    *at++ = '0';
  else
    at = std::to_chars(at, text + kTextBytes - 1, hz, std::chars_format::fixed, 2).ptr;
  *at = '\0';
}

/// "100/60", "60\100", or a signed number from -100 (odd alone) to 100 (even alone).
inline bool readEvenOdd(const Row& row, const char* text, double* p) {
  const char* slash = std::strpbrk(text, "/\\");
  if (!slash) return readTypedNumber(row, text, p);
  const char *oddEnd = nullptr, *evenEnd = nullptr;
  const double odd = readNumber(text, &oddEnd), even = readNumber(slash + 1, &evenEnd);
  if (oddEnd == text || oddEnd > slash) return false;
  if (odd >= 0.0 && odd < 100.0) {
    *p = (100.0 - odd) / 200.0 + 0.5;
    return true;
  }
  if (odd != 100.0 || evenEnd == slash + 1 || even < 0.0 || even > 100.0) return false;
  *p = (even - 100.0) / 200.0 + 0.5;
  return true;
}

// clang-format off
inline constexpr std::array kRows{
    //  offset          name           default steps        taper                                         unit    text                   typed
    Row{kTypeOffset,    "Type",        0.0,    255,         stepped(255),                                 " ",    choiceText("Empty")},
    Row{kMonitorOffset, "Monitor",     0.0,    1,           onOff(),                                      " ",    choiceText("Off|On")},
    Row{kEvenOdd,       "EvenOdd",     0.5,    kContinuous, linear(-100.0, 200.0),                        " ",    ownText(showEvenOdd),  typedBy(readEvenOdd, -100.0, 100.0)},
    Row{kBrightness,    "Brightness",  0.5,    kContinuous, ownTaper(percent, percentPosition),           " ",    fixedText(0, "%"),     typed(0.0, 100.0), "%"},
    Row{kAttenuation,   "Attenuation", 0.5,    kContinuous, ownTaper(attenuationDb, attenuationPosition), " dB ", fixedText(1),          typed(-48.0, 0.0)},
    Row{kMains,         "Mains",       1.0,    1,           ownTaper(mainsHz, mainsPosition),             " ",    fixedText(0, "Hz"),    kSearchEntry, "Hz"},
    Row{kOffset,        "Offset",      0.5,    kContinuous, ownTaper(offsetHz, offsetPosition),           " Hz ", ownText(showOffset),   typed(-10.0, 10.0)},
};
// clang-format on

}  // namespace corvane::dehummer
