#include "control/bank/BankText.h"

#include <algorithm>
#include <charconv>
#include <functional>
#include <optional>
#include <set>

#include "control/ParameterText.h"
#include "core/ParameterBank.h"

namespace corvane::bank {

namespace {

constexpr std::size_t kRowText = 64;  // characters of a designer's name or link

std::string_view trimmed(std::string_view text) {
  const auto first = text.find_first_not_of(" \t\r");
  if (first == text.npos) return {};
  return text.substr(first, text.find_last_not_of(" \t\r") - first + 1);
}

std::string quoted(std::string_view text) { return '"' + std::string(text) + '"'; }

/// Calls `take(number, line)` for each line that is neither empty nor a comment.
void eachLine(std::string_view text, const std::function<void(int, std::string_view)>& take) {
  for (int number = 1; !text.empty(); ++number) {
    const auto end = std::min(text.find('\n'), text.size());
    std::string_view line = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    line = trimmed(line.substr(0, line.find('#')));
    if (!line.empty()) take(number, line);
  }
}

std::string_view firstWord(std::string_view& line) {
  const auto end = std::min(line.find_first_of(" \t"), line.size());
  const std::string_view word = line.substr(0, end);
  line = trimmed(line.substr(end));
  return word;
}

template <typename Number>
std::optional<Number> readWhole(std::string_view text) {
  Number value{};
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc{} || end != text.data() + text.size()) return std::nullopt;
  return value;
}

/// "0.1333" or "113/255".
std::optional<double> readRaw(std::string_view text) {
  const auto slash = text.find('/');
  if (slash == text.npos) return readWhole<double>(text);
  const auto top = readWhole<double>(text.substr(0, slash)),
             bottom = readWhole<double>(text.substr(slash + 1));
  if (!top || !bottom || *bottom == 0.0) return std::nullopt;
  return *top / *bottom;
}

const Place& rackPlace(int place) { return kRack[static_cast<std::size_t>(place)]; }

std::array<double, kParameters> defaultValues() {
  std::array<double, kParameters> values{};
  for (int id = 0; id < kParameters; ++id) values[static_cast<std::size_t>(id)] = parameterDefault(id);
  return values;
}

std::string shown(int id, int insertIndex, double value) {
  char text[kTextBytes];
  parameterDisplay(id, insertIndex, value, text);
  return text;
}

/// Reads one file line by line.
class Reader {
 public:
  Reader(const std::string& fileName, const std::vector<DesignerRow>& designerRows,
         const std::vector<BankPreset>& earlierPresets)
      : file(fileName), designers(designerRows), earlier(earlierPresets) {}

  BankFile read(std::string_view text) {
    eachLine(text, [this](int number, std::string_view line) {
      lineNumber = number;
      takeLine(line);
    });
    finishPreset();
    return std::move(result);
  }

 private:
  [[noreturn]] void fail(const std::string& what) const { throw BankError(file, lineNumber, what); }

  double& value(int id) { return preset().values[static_cast<std::size_t>(id)]; }
  BankPreset& preset() {
    if (result.presets.empty()) fail("a preset must start with a line \"preset NAME\"");
    return result.presets.back();
  }

  void takeLine(std::string_view line) {
    std::string_view rest = line;
    const std::string_view word = firstWord(rest);
    if (word == "category")
      takeCategory(rest);
    else if (word == "preset")
      startPreset(rest);
    else if (word == "designer")
      takeDesigner(rest);
    else if (word == "like")
      takeLike(rest);
    else if (word == "raw")
      takeRaw(rest);
    else if (word.ends_with(':'))
      takeModule(word.substr(0, word.size() - 1), rest);
    else
      takeParameter(line);
  }

  void takeCategory(std::string_view rest) {
    if (!result.presets.empty() || result.category >= 0)
      fail("the category stands once, before the first preset");
    const auto number = readWhole<int>(firstWord(rest));
    if (!number || *number < 0 || rest.empty()) fail("a category is a number and a name");
    result.category = *number;
    result.categoryName = rest;
  }

  void startPreset(std::string_view name) {
    finishPreset();
    if (name.empty()) fail("a preset needs a name");
    result.presets.push_back({std::string(name), result.category, -1, defaultValues()});
    chain.clear();
    openPlace = -1;
    liked = false;
    written.clear();
  }

  void takeDesigner(std::string_view who) {
    if (preset().designer >= 0) fail("a preset has one designer");
    if (const auto row = readWhole<int>(who)) {
      if (*row < 0 || *row >= static_cast<int>(designers.size()))
        fail("no designer in row " + std::string(who));
      preset().designer = *row;
      return;
    }
    const auto at = std::ranges::find(designers, who, &DesignerRow::name);
    if (at == designers.end()) fail("no designer " + quoted(who));
    preset().designer = static_cast<int>(at - designers.begin());
  }

  void takeLike(std::string_view name) {
    if (liked || !chain.empty() || !written.empty()) fail("\"like\" stands alone, before single values");
    const auto at = std::ranges::find(earlier, name, &BankPreset::name);
    if (at == earlier.end()) fail("no earlier preset " + quoted(name));
    preset().values = at->values;
    liked = true;
  }

  void takeRaw(std::string_view line) {
    const auto blank = line.find_last_of(" \t");
    if (blank == line.npos) fail("raw needs a name and a number");
    const std::string_view name = trimmed(line.substr(0, blank)), number = line.substr(blank + 1);
    const int id = parameterIdOfName(name);
    if (id < 0) fail("no parameter " + quoted(name));
    const auto stored = readRaw(number);
    if (!stored || !(*stored >= 0.0 && *stored <= 1.0)) fail(quoted(number) + " is no number from 0 to 1");
    once(id, "raw " + std::string(name));
    value(id) = *stored;
  }

  void takeModule(std::string_view prefix, std::string_view module) {
    if (liked) fail("a preset has modules of its own or is like another one, not both");
    if (chain.empty() && !written.empty()) fail("modules come before stored numbers");
    const auto at = std::ranges::find(kRack, prefix, &Place::prefix);
    if (at == kRack.end()) fail("no place " + quoted(prefix));
    const int place = static_cast<int>(at - kRack.begin());
    if (std::ranges::find(chain, place) != chain.end()) fail(quoted(prefix) + " stands in the chain twice");
    if (chain.empty())
      for (const Place& each : kRack) value(each.parameterBase) = 0.0;
    chain.push_back(place);
    openPlace = place;
    double type = 0.0;
    if (!valueFromTyped(at->parameterBase, std::string(module).c_str(), &type) || type == 0.0)
      fail("no module " + quoted(module) + " for " + quoted(prefix));
    value(at->parameterBase) = type;
    if (place >= kFixedPlaces)
      for (int offset = kFirstOwnOffset; offset < at->parameterCount; ++offset)
        value(at->parameterBase + offset) = defaultValue(family(), offset);
  }

  const ModuleFamily& family() {
    const Place& place = rackPlace(openPlace);
    return openPlace < kFixedPlaces ? familyOfKind(place.kind)
                                    : *familyOfInsertIndex(decodeInsertIndex(value(place.parameterBase)));
  }

  /// Offset of the parameter of the open place whose label starts `line`; the rest of the line is its text.
  int takeLabel(std::string_view& line) {
    static constexpr std::array<std::string_view, 4> kSwitches{"Mute", "Solo", "Side Chain", "Monitor"};
    int offset = -1;
    std::size_t length = 0;
    const auto consider = [&](std::string_view label, int candidate) {
      const bool starts = line.starts_with(label) && line.size() > label.size() && line[label.size()] == ' ';
      if (starts && label.size() > length) offset = candidate, length = label.size();
    };
    for (std::size_t k = 0; k < kSwitches.size(); ++k)
      consider(kSwitches[k], kMuteOffset + static_cast<int>(k));
    for (const Row& row : family().rows) {
      const std::string_view name = row.name;
      if (row.offset >= kFirstOwnOffset) consider(name.substr(name.find(':') + 1), row.offset);
    }
    if (offset >= 0) line = trimmed(line.substr(length));
    return offset;
  }

  void takeParameter(std::string_view line) {
    preset();
    if (openPlace < 0) fail(quoted(line) + " stands under no module");
    const std::string where = rackPlace(openPlace).prefix;
    std::string_view text = line;
    const int offset = takeLabel(text);
    if (offset < 0) fail("no parameter of " + quoted(where) + " starts " + quoted(line));
    const int id = rackPlace(openPlace).parameterBase + offset;
    const int index =
        openPlace < kFixedPlaces ? 0 : decodeInsertIndex(value(rackPlace(openPlace).parameterBase));
    once(id, std::string(line.substr(0, line.size() - text.size())));
    if (!valueFromTyped(id, index, std::string(text).c_str(), &value(id)))
      fail(quoted(text) + " does not fit; from " + quoted(shown(id, index, 0.0)) + " to " +
           quoted(shown(id, index, 1.0)));
  }

  void once(int id, const std::string& what) {
    if (!written.insert(id).second) fail(quoted(trimmed(what)) + " is set twice");
  }

  void finishPreset() {
    if (result.presets.empty()) return;
    if (preset().designer < 0) fail("preset " + quoted(preset().name) + " has no designer");
    if (!chain.empty()) setPositions();
    int seen = 0;
    for (const Place& place : kRack)
      seen |= 1 << decodePosition(value(place.parameterBase + kPositionOffset));
    if (seen != (1 << kPlaces) - 1)
      fail("preset " + quoted(preset().name) + " has two places at one position");
  }

  /// Places without a module follow those of the chain. A position given raw stays.
  void setPositions() {
    for (int place = 0; place < kPlaces; ++place)
      if (std::ranges::find(chain, place) == chain.end()) chain.push_back(place);
    for (std::size_t position = 0; position < chain.size(); ++position) {
      const int id = rackPlace(chain[position]).parameterBase + kPositionOffset;
      if (!written.contains(id)) value(id) = static_cast<double>(position) / 8.0;
    }
  }

  const std::string& file;
  const std::vector<DesignerRow>& designers;
  const std::vector<BankPreset>& earlier;
  int lineNumber = 0;
  BankFile result;
  // of the preset being read
  std::vector<int> chain;
  int openPlace = -1;
  bool liked = false;
  std::set<int> written;
};

}  // namespace

std::vector<DesignerRow> parseDesigners(const std::string& file, std::string_view text) {
  std::vector<DesignerRow> rows;
  eachLine(text, [&](int number, std::string_view line) {
    const auto first = line.find('|'), second = line.find('|', first == line.npos ? first : first + 1);
    if (second == line.npos) throw BankError(file, number, "a row is \"number | name | link\"");
    if (readWhole<std::size_t>(trimmed(line.substr(0, first))) != rows.size())
      throw BankError(file, number, "this is row " + std::to_string(rows.size()));
    DesignerRow row{std::string(trimmed(line.substr(first + 1, second - first - 1))),
                    std::string(trimmed(line.substr(second + 1)))};
    if (row.name.size() > kRowText || row.link.size() > kRowText)
      throw BankError(file, number, "name and link have at most 64 characters");
    rows.push_back(std::move(row));
  });
  return rows;
}

BankFile parseBank(const std::string& file, std::string_view text, const std::vector<DesignerRow>& designers,
                   const std::vector<BankPreset>& earlier) {
  return Reader(file, designers, earlier).read(text);
}

std::vector<PlaceRun> parsePlaces(const std::string& file, std::string_view text) {
  std::vector<PlaceRun> runs;
  eachLine(text, [&](int number, std::string_view line) {
    const std::string_view range = firstWord(line);
    const auto dash = range.find('-');
    const auto first = readWhole<int>(range.substr(0, dash));
    const auto last = dash == range.npos ? first : readWhole<int>(range.substr(dash + 1));
    const int expected = runs.empty() ? 0 : runs.back().last + 1;
    if (!first || !last || *last < *first || line.empty())
      throw BankError(file, number, "a row is \"first-last file\"");
    if (*first != expected) throw BankError(file, number, "the next place is " + std::to_string(expected));
    runs.push_back({*first, *last, std::string(line), number});
  });
  return runs;
}

}  // namespace corvane::bank
