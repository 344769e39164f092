#include "corvane/ParameterWords.h"

#include <algorithm>
#include <vector>

#include "control/ParameterText.h"
#include "core/ParameterBank.h"
#include "corvane/Failure.h"
#include "corvane/Words.h"

namespace corvane::cli {

namespace {

constexpr std::string_view kUnusedState = "undef";  // shown for steps that no module has

int insertIndexFor(int id, const Setting& setting) {
  const int place = placeOfParameter(id);
  if (place < kFixedPlaces) return 0;
  return decodeInsertIndex(setting.value(kRack[static_cast<std::size_t>(place)].parameterBase));
}

/// Row of an own parameter; null for a head, and for an insert without a module.
const Row* rowOf(int id, const Setting& setting) {
  const int place = placeOfParameter(id);
  if (place < 0) return nullptr;
  const int offset = id - kRack[static_cast<std::size_t>(place)].parameterBase;
  const ModuleFamily* family = familyInPlace(place, setting);
  return family && offset >= kFirstOwnOffset ? findRow(*family, offset) : nullptr;
}

/// States of a parameter of few words, in rising order; empty for one that is a range.
std::vector<std::string> wordsOf(int id, const Setting& setting) {
  const Row* row = rowOf(id, setting);
  const int steps = row ? row->steps : parameterSteps(id);
  if (steps == 0) return {};
  std::vector<std::string> words;
  for (int step = 0; step <= steps; ++step) {
    const std::string word = shownValue(id, static_cast<double>(step) / steps, setting);
    if (word.empty() || word == kUnusedState) continue;
    if (numberOf(word)) return {};
    if (std::ranges::find(words, word) == words.end()) words.push_back(word);
  }
  if (words.empty() && steps == 1) words = {"off", "on"};  // a button speaks for itself
  return words;
}

/// Whether the parameter belongs to an insert whose module gives it no meaning.
bool isGeneric(int id, const Setting& setting) {
  const int place = placeOfParameter(id);
  if (place < kFixedPlaces || rowOf(id, setting)) return false;
  return id - kRack[static_cast<std::size_t>(place)].parameterBase >= kFirstOwnOffset;
}

bool isPosition(int id) {
  const int place = placeOfParameter(id);
  return place >= 0 && id - kRack[static_cast<std::size_t>(place)].parameterBase == kPositionOffset;
}

bool startsAsNumber(std::string_view text) {
  return !text.empty() && text.find_first_of("0123456789") <= text.find_first_not_of("+-.");
}

}  // namespace

std::string shownValue(int id, double value, const Setting& setting) {
  char text[kTextBytes] = "";
  if (isGeneric(id, setting)) return shortest(value);
  parameterDisplay(id, insertIndexFor(id, setting), value, text);
  std::string shown = text;
  std::ranges::replace(shown, '\n', ' ');  // small displays show the unit on a line of its own
  return shown;
}

std::string unitOf(int id, const Setting& setting) {
  const Row* row = rowOf(id, setting);
  return row ? std::string(measureOf(*row)) : "";
}

std::string rangeOf(int id, const Setting& setting) {
  const auto words = isPosition(id) ? std::vector<std::string>{} : wordsOf(id, setting);
  if (!words.empty()) {
    std::string list;
    for (const auto& word : words) list += (list.empty() ? "" : ", ") + word;
    return list;
  }
  const std::string low = shownValue(id, 0.0, setting), high = shownValue(id, 1.0, setting);
  const bool bare = low.empty() || low == high;
  return bare ? "0 to 1" : fmt::format("{} to {}", low, high);
}

double valueFromWords(int id, std::string_view text, const Setting& setting) {
  double value = 0.0;
  if (valueFromTyped(id, insertIndexFor(id, setting), std::string(text).c_str(), &value)) return value;
  const std::string range = rangeOf(id, setting), unit = unitOf(id, setting);
  const bool unitIsThere = unit.empty() || range.ends_with(unit);
  const std::string limits = unitIsThere ? range : range + " " + unit;
  if (!isPosition(id) && !wordsOf(id, setting).empty()) refuse("\"{}\" is none of: {}", text, range);
  if (startsAsNumber(text)) refuse("outside {}", limits);
  refuse("\"{}\" is no value; must be {}", text, limits);
}

}  // namespace corvane::cli
