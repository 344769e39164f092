#include "control/ParameterText.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <optional>
#include <string>
#include <string_view>

#include "core/ParameterBank.h"
#include "core/Rack.h"

namespace corvane {

namespace {

constexpr int kContinuousWalkSteps = 1000;

bool isNormalised(double value) { return value >= 0.0 && value <= 1.0; }
bool isFixed(int place) { return place >= 0 && place < kFixedPlaces; }
int offsetOf(int place, int id) { return id - kRack[static_cast<std::size_t>(place)].parameterBase; }

template <typename... Arguments>
void write(char* text, fmt::format_string<Arguments...> pattern, Arguments&&... arguments) {
  const auto result = fmt::format_to_n(text, kTextBytes - 1, pattern, std::forward<Arguments>(arguments)...);
  *result.out = '\0';
}

void reductionText(double gain, char* text) {
  if (gain >= 0.0001)
    write(text, "{:4.2f}", 20.0 * std::log10(gain));
  else
    std::strcpy(text, "-oo");
}

void headText(int place, int offset, double value, char* text) {
  const bool on = value >= 0.5;
  switch (offset) {
    case kTypeOffset:
      if (isFixed(place))
        valueText(familyOfKind(kRack[static_cast<std::size_t>(place)].kind), kTypeOffset, value, text);
      else
        std::strcpy(text, isNormalised(value) ? insertName(decodeInsertIndex(value)) : "-");
      return;
    case kPositionOffset: {
      const int position = isNormalised(value) ? decodePosition(value) : -1;
      write(text, "{}", position >= 0 ? static_cast<char>('A' + position) : '-');
      return;
    }
    case kMuteOffset: std::strcpy(text, on ? "Mute" : "-"); return;
    case kSoloOffset: std::strcpy(text, on ? "Solo" : "-"); return;
    case kSideChainOffset: std::strcpy(text, on ? "Ext AUX" : "Input"); return;
    case kMonitorOffset: std::strcpy(text, on ? "Monitor" : "-"); return;
    default: return;
  }
}

void bareInsertText(int place, double value, char* text) {
  write(text, "Insert{}:{:4.2f}", place == kInsertX ? 'X' : 'Y', value);
}

/// What a search needs to know of a parameter.
struct Shown {
  int id;
  const ModuleFamily* family;  ///< whose own parameter it is, or null
  int steps;                   ///< 0 for continuous

  std::string at(double value) const {
    char text[kTextBytes] = "";
    const int place = placeOfParameter(id);
    if (family && place >= 0)
      valueText(*family, offsetOf(place, id), value, text);
    else
      parameterDisplay(id, value, text);
    return text;
  }
  int walkSteps() const { return steps > 0 ? steps : kContinuousWalkSteps; }
  double walkValue(int step) const { return std::min(step * (1.0 / walkSteps()), 1.0); }
};

/// Number of a text in thousandths, as the search compares them.
double thousandths(const std::string& text) { return std::trunc(readFrequency(text.c_str()) * 1000.0 + 0.5); }

bool isWord(const char* text) { return readFrequency(text) == 0.0 && !isTypedZero(text); }

template <typename Fits>
std::optional<double> findWord(const Shown& shown, Fits fits) {
  for (int step = 0; step <= shown.walkSteps(); ++step)
    if (fits(shown.at(shown.walkValue(step)))) return shown.walkValue(step);
  return std::nullopt;
}

/// First value whose display reaches `target`, in thousandths, from below.
std::optional<double> findNumber(const Shown& shown, double target) {
  bool below = false;
  for (int step = 0; step <= shown.walkSteps(); ++step) {
    const double number = thousandths(shown.at(shown.walkValue(step)));
    if (number == target || (below && number > target)) return shown.walkValue(step);
    below = number < target;
  }
  return std::nullopt;
}

char lowered(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

bool sameWord(std::string_view a, std::string_view b) {
  return std::ranges::equal(a, b, {}, lowered, lowered);
}

std::string_view trimmed(std::string_view text) {
  const auto first = text.find_first_not_of(" \t\r\n");
  if (first == text.npos) return {};
  return text.substr(first, text.find_last_not_of(" \t\r\n") - first + 1);
}

/// "0", "0.0", "-0 dB": a zero that a person may write in more ways than an entry takes.
bool isZeroWithUnit(const std::string& text) {
  const char* end = nullptr;
  if (readNumber(text.c_str(), &end) != 0.0 || end == text.c_str()) return false;
  const std::string_view rest = trimmed(end);
  return rest.empty() || (lowered(rest.front()) != 'k' && rest.find_first_of("0123456789") == rest.npos);
}

std::optional<double> switchValue(const std::string& text) {
  for (const char* word : {"on", "1", "yes"})
    if (sameWord(text, word)) return 1.0;
  for (const char* word : {"off", "0", "no"})
    if (sameWord(text, word)) return 0.0;
  return std::nullopt;
}

/// The general search, but only for what really fits.
std::optional<double> searchStrictly(const Shown& shown, const std::string& text) {
  if (isWord(text.c_str())) {
    auto found = findWord(shown, [&](const std::string& display) { return sameWord(display, text); });
    if (!found)
      found = findWord(shown, [&](const std::string& display) {
        return display.size() > text.size() &&
               sameWord(std::string_view(display).substr(0, text.size()), text);
      });
    return found;
  }
  const std::string low = shown.at(0.0), high = shown.at(1.0);
  if (low.empty() || (isWord(low.c_str()) && isWord(high.c_str()))) return std::nullopt;
  const double target = thousandths(text);
  if (target < thousandths(low) || target > thousandths(high)) return std::nullopt;
  return findNumber(shown, target);
}

std::optional<double> bareValue(const std::string& text) {
  const char* end = nullptr;
  const double value = readNumber(text.c_str(), &end);
  if (end == text.c_str() || *end != '\0' || !isNormalised(value)) return std::nullopt;
  return value;
}

/// Types are stored as a share of all types: the search's own grid is not it.
double canonicalType(int place, double value) {
  return isFixed(place) ? decodeVariant(value) / 15.0 : decodeInsertIndex(value) / 255.0;
}

std::optional<double> typedValue(const Shown& shown, const std::string& text) {
  const Row* row =
      shown.family ? findRow(*shown.family, offsetOf(placeOfParameter(shown.id), shown.id)) : nullptr;
  if (row && row->entry.kind == Entry::Kind::typed) {
    const char* entered = isZeroWithUnit(text) ? "0" : text.c_str();
    double value = 0.0;
    if (row->entry.read(*row, entered, &value))
      return std::clamp(value, 0.0, 1.0);  // some entries take a little more than their taper spans
    // what the display shows can be typed back, also where the entry knows numbers alone ("Off")
    return findWord(shown, [&](const std::string& display) { return sameWord(trimmed(display), text); });
  }
  auto found = searchStrictly(shown, text);
  if (!found && shown.steps == 1) found = switchValue(text);
  return found;
}

}  // namespace

void parameterDisplay(int id, double value, char* text) {
  text[0] = '\0';
  if (id == kProcessId) {
    std::strcpy(text, value >= 0.5 ? "On" : "Off");
  } else if (id == kTotalReductionMeterId) {
    reductionText(value, text);
  } else if (const int place = placeOfParameter(id); place >= 0) {
    const int offset = offsetOf(place, id);
    if (offset < kHeadSize)
      headText(place, offset, value, text);
    else if (isFixed(place))
      valueText(familyOfKind(kRack[static_cast<std::size_t>(place)].kind), offset, value, text);
    else if (offset >= kFirstOwnOffset)
      bareInsertText(place, value, text);
  } else if (const int meterPlace = placeOfMeter(id); meterPlace >= kFixedPlaces) {
    bareInsertText(meterPlace, value, text);
  }
}

void parameterDisplay(int id, int insertIndex, double value, char* text) {
  const int place = placeOfParameter(id);
  const ModuleFamily* family = familyOfInsertIndex(insertIndex);
  if (place >= kFixedPlaces && family && offsetOf(place, id) >= kFirstOwnOffset)
    valueText(*family, offsetOf(place, id), value, text);
  else
    parameterDisplay(id, value, text);
}

bool parameterFromText(int id, const char* text, double* value) {
  if (!(parameterKind(id) & kKindStored)) return false;
  const Shown shown{id, nullptr, parameterSteps(id)};
  if (isWord(text)) {
    const std::string_view word = text;
    if (const auto found = findWord(shown, [&](const std::string& s) { return s.starts_with(word); })) {
      *value = *found;
      return true;
    }
  }
  const double target = thousandths(text);
  if (target <= thousandths(shown.at(0.0)))
    *value = 0.0;
  else if (target >= thousandths(shown.at(1.0)))
    *value = 1.0;
  else
    *value = findNumber(shown, target).value_or(0.0);
  return true;
}

bool valueFromTyped(int id, const char* text, double* value) { return valueFromTyped(id, 0, text, value); }

bool valueFromTyped(int id, int insertIndex, const char* text, double* value) {
  const std::string plain{trimmed(text)};
  if (plain.empty() || !(parameterKind(id) & kKindStored)) return false;
  const int place = placeOfParameter(id);
  const int offset = place >= 0 ? offsetOf(place, id) : 0;
  const bool own = place >= 0 && offset >= kFirstOwnOffset;
  const ModuleFamily* family = nullptr;
  if (own)
    family = isFixed(place) ? &familyOfKind(kRack[static_cast<std::size_t>(place)].kind)
                            : familyOfInsertIndex(insertIndex);
  std::optional<double> found;
  if (place >= 0 && offset == kTypeOffset && sameWord(plain, "off"))
    found = 0.0;
  else if (own && !isFixed(place) && (!family || !findRow(*family, offset)))
    found = bareValue(plain);
  else
    found =
        typedValue({id, family, own && family ? findRow(*family, offset)->steps : parameterSteps(id)}, plain);
  if (!found) return false;
  *value = place >= 0 && offset == kTypeOffset ? canonicalType(place, *found) : *found;
  return true;
}

int parameterIdOfName(std::string_view name) {
  for (int id = 0; id < kParameters; ++id) {
    char text[kTextBytes];
    parameterName(id, text);
    if (parameterKind(id) & kKindStored && name == text) return id;
  }
  return -1;
}

}  // namespace corvane
