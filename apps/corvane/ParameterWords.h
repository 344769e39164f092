#pragma once

#include <string>
#include <string_view>

#include "corvane/Setting.h"

namespace corvane::cli {

// Values in a person's words. A module in an insert speaks its own words there.

/// A normalised value as it is displayed, without the unit.
std::string shownValue(int id, double value, const Setting& setting);
/// Unit with no blanks around it; empty for none.
std::string unitOf(int id, const Setting& setting);
/// "-40.0 to 10.0" or the words of a choice, "Out, In".
std::string rangeOf(int id, const Setting& setting);
/// Normalised value of what a person types. Throws Failure that tells the range.
double valueFromWords(int id, std::string_view text, const Setting& setting);

}  // namespace corvane::cli
