#pragma once

#include <string_view>

#include "core/Taper.h"
#include "core/text/Display.h"
#include "core/text/TypedText.h"

namespace corvane {

inline constexpr int kContinuous = 0;  // steps of a parameter without steps

/// One own parameter of a module family. Everything that knows parameters reads this: the bank (name,
/// default, steps), the module (taper), displays and typed values, units for hosts, the printed reference.
struct Row {
  int offset;  ///< from the first id of the group; 16 up. Rows below 16 only give a head's display
  const char*
      name;  ///< as the bank shows it ("Comp:Attack"); the label for modules that stand in inserts alone
  double defaultValue;  ///< normalised
  int steps;            ///< told to hosts; kContinuous for none
  Taper taper;
  const char* unit;  ///< told to hosts, blanks included
  Display display;
  Entry entry = kNoEntry;
  const char* measure = "";  ///< unit for people where hosts are told none, or another
};

/// Unit of a row's values for people and for hosts that know units: "dB", "ms", "Hz", "%", or "".
std::string_view measureOf(const Row& row);

}  // namespace corvane
