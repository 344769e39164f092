#include "corvane/ParameterReference.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>
#include <optional>
#include <vector>

#include "control/ParameterText.h"
#include "core/ParameterBank.h"
#include "core/Rack.h"
#include "corvane/ParameterWords.h"
#include "corvane/Setting.h"
#include "corvane/Words.h"

namespace corvane::cli {

namespace {

constexpr const char* kIntroduction = R"(# Parameters

Made by `make docs` from the tables of the modules; a test compares the two.

Values lie between 0 and 1 for hosts, presets and sessions; this page gives what they mean. An id is the first id
of a place plus an offset. *Range* is what the display shows from 0 to 1, *typed* what a person may enter: a number
in that range, or one of the words and forms named, in any letter case. *Steps* is the number of steps between the
ends, "-" for a continuous value.
)";

/// Positions at which a display is asked for forms other than a plain number.
constexpr double kSamples[] = {0.0, 0.3, 0.75, 1.0};

struct Group {
  const ModuleFamily& family;
  int place;  ///< its own, or the first insert for a family without one
  Setting setting;
};

std::optional<int> fixedPlaceOf(const ModuleFamily& family) {
  for (int place = 0; place < kFixedPlaces; ++place)
    if (kRack[static_cast<std::size_t>(place)].kind == family.kind) return place;
  return std::nullopt;
}

Group groupOf(const ModuleFamily& family) {
  Setting setting;
  const auto place = fixedPlaceOf(family);
  if (!place) setting.store(kRack[kInsertX].parameterBase, family.firstInsertIndex / 255.0);
  return {family, place.value_or(kInsertX), setting};
}

std::string stepsText(int steps) { return steps == 0 ? "-" : std::to_string(steps); }

std::string orDash(const std::string& text) { return text.empty() ? "-" : text; }

std::string nameOfId(int id) {
  char text[kTextBytes];
  parameterName(id, text);
  return text;
}

bool isTaken(int id, const Setting& setting, const std::string& text) {
  const int place = placeOfParameter(id);
  const int insertIndex =
      place < kFixedPlaces
          ? 0
          : decodeInsertIndex(setting.value(kRack[static_cast<std::size_t>(place)].parameterBase));
  double value = 0.0;
  return valueFromTyped(id, insertIndex, text.c_str(), &value);
}

/// As the display shows it, without the blanks that align it there.
std::string shownAt(int id, double value, const Setting& setting) {
  return std::string(trimmed(shownValue(id, value, setting)));
}

/// A number, or a number with its unit.
bool isPlain(std::string_view form, std::string_view unit) {
  if (!unit.empty() && form.ends_with(unit)) form.remove_suffix(unit.size());
  return numberOf(trimmed(form)).has_value();
}

/// Those of the candidates that a person may type and that are no plain numbers, as a list in code type.
std::string formsOf(int id, const Setting& setting, const std::vector<std::string>& candidates) {
  std::string list;
  std::vector<std::string> listed;
  for (const std::string& form : candidates) {
    const std::string key = lowerCase(form);
    if (isPlain(form, unitOf(id, setting)) || std::ranges::find(listed, key) != listed.end()) continue;
    if (!isTaken(id, setting, form)) continue;
    listed.push_back(key);
    list += (list.empty() ? "`" : ", `") + form + "`";
  }
  return list;
}

std::string typedOf(int id, const Row& row, const Setting& setting) {
  const std::string low = shownAt(id, 0.0, setting);
  const bool isChoice = row.steps == 1 || row.display.words;
  if (isChoice && isPlain(low, unitOf(id, setting))) return "one of its numbers";
  if (row.steps == 1) return formsOf(id, setting, {low, shownAt(id, 1.0, setting), "off", "on"});
  if (isChoice) return "a word of the range";
  std::string numbers = "a number";
  if (row.entry.kind == Entry::Kind::typed)
    numbers = fmt::format("{} to {}", shortest(row.entry.low), shortest(row.entry.high));
  std::vector<std::string> samples;
  for (const double p : kSamples) samples.push_back(shownAt(id, p, setting));
  const std::string forms = formsOf(id, setting, samples);
  return forms.empty() ? numbers : numbers + "; " + forms;
}

template <typename... Args>
void add(std::string& page, fmt::format_string<Args...> pattern, Args&&... args) {
  fmt::format_to(std::back_inserter(page), pattern, std::forward<Args>(args)...);
}

void addPlaces(std::string& page) {
  add(page,
      "\n## Places\n\n| place | ids | Type at first | Position at first | meters |\n|---|---|---|---|---|\n");
  const Setting setting;
  for (const Place& place : kRack) {
    const int type = place.parameterBase + kTypeOffset, position = place.parameterBase + kPositionOffset;
    add(page, "| {} | {} to {} | {} | {} | {} to {} |\n", place.prefix, place.parameterBase,
        place.parameterBase + place.parameterCount - 1, shownValue(type, parameterDefault(type), setting),
        shownValue(position, parameterDefault(position), setting), place.meterBase,
        place.meterBase + place.meterCount - 1);
  }
  add(page, "\n`{}` (id {}) switches the whole strip: {}. Meter {} is `{}`.\n", nameOfId(kProcessId),
      kProcessId, rangeOf(kProcessId, setting), kTotalReductionMeterId, nameOfId(kTotalReductionMeterId));
}

/// The head of every place: the same offsets, each only where the place announces it.
void addHeads(std::string& page) {
  add(page,
      "\n## Head of a place\n\n| offset | name | range | default | steps | places "
      "|\n|---|---|---|---|---|---|\n");
  const Setting setting;
  for (int offset = 0; offset < kHeadSize; ++offset) {
    std::vector<const Place*> places;
    for (const Place& place : kRack)
      if (parameterKind(place.parameterBase + offset) & kKindAnnounced) places.push_back(&place);
    if (places.empty()) continue;
    std::string names;
    for (const Place* place : places) names += (names.empty() ? "" : ", ") + std::string(place->prefix);
    const int id = places.front()->parameterBase + offset;
    const std::string name = nameOfId(id);
    const bool differs = offset == kTypeOffset || offset == kPositionOffset;
    add(page, "| {} | {} | {} | {} | {} | {} |\n", offset, name.substr(name.find(':') + 1),
        offset == kTypeOffset ? "name of a variant, - for none" : rangeOf(id, setting),
        differs ? "see above" : shownValue(id, parameterDefault(id), setting), stepsText(parameterSteps(id)),
        places.size() == kRack.size() ? "all" : names);
  }
  add(page,
      "\nType counts the family's variants in fifteenths, in an insert all modules in 255ths (256 steps for "
      "hosts). "
      "A typed\n`off` empties the place. `on`, `off`, `1` and `0` also set Mute, Solo, Side Chain and "
      "Monitor.\n");
}

void addFamily(std::string& page, const ModuleFamily& family) {
  const auto [ignored, place, setting] = groupOf(family);
  const Place& group = kRack[static_cast<std::size_t>(place)];
  const bool fixed = place < kFixedPlaces;
  add(page, "\n## {}\n\n", family.title);
  if (fixed)
    add(page, "Place {}, ids from {}. In an insert the same offsets count from {} (InsX) or {} (InsY).\n\n",
        group.prefix, group.parameterBase, kRack[kInsertX].parameterBase, kRack[kInsertY].parameterBase);
  else
    add(page,
        "Stands in inserts alone: offsets count from {} (InsX) or {} (InsY); ids below are those of "
        "InsX.\n\n",
        kRack[kInsertX].parameterBase, kRack[kInsertY].parameterBase);
  add(page, "| variant | Type | in an insert |\n|---|---|---|\n");
  for (const Variant& variant : family.variants)
    add(page, "| {}{} | {} | {} |\n", variant.name,
        variant.panelName ? fmt::format(" (panel: {})", variant.panelName) : "",
        fixed ? std::to_string(variant.type) : "-", family.firstInsertIndex + variant.type - 1);
  add(page,
      "\n| offset | id | name | range | unit | default | steps | typed "
      "|\n|---|---|---|---|---|---|---|---|\n");
  for (const Row& row : family.rows) {
    if (row.offset < kFirstOwnOffset) continue;
    const int id = group.parameterBase + row.offset;
    add(page, "| {} | {} | {} | {} | {} | {} | {} | {} |\n", row.offset, id, row.name,
        trimmed(rangeOf(id, setting)), orDash(std::string(measureOf(row))),
        orDash(shownAt(id, row.defaultValue, setting)), stepsText(row.steps), typedOf(id, row, setting));
  }
  add(page, "\nMeters, from the first meter id of the place:");
  for (const char* meter : family.meters) add(page, " `{}`", meter);
  add(page, "\n");
}

}  // namespace

std::string parameterReference() {
  std::string page = kIntroduction;
  addPlaces(page);
  addHeads(page);
  for (const ModuleFamily* family : moduleFamilies()) addFamily(page, *family);
  return page;
}

}  // namespace corvane::cli
