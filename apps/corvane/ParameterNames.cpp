#include "corvane/ParameterNames.h"

#include <algorithm>
#include <cstring>
#include <optional>

#include "core/ParameterBank.h"
#include "corvane/Failure.h"
#include "corvane/Words.h"

namespace corvane::cli {

namespace {

constexpr std::size_t kNearestShown = 3;
constexpr std::size_t kOtherGroup = 2;    // edits that a wrong group counts as
constexpr std::size_t kShortestPart = 3;  // letters of a word that stand for it

std::string_view behindColon(std::string_view name) { return name.substr(name.find(':') + 1); }

std::string nameOf(int id) {
  char text[kTextBytes];
  parameterName(id, text);
  return text;
}

/// Edits to the nearest start of a word: people shorten names, and mistype what they shorten.
std::size_t distanceToStart(std::string_view asked, std::string_view candidate) {
  std::size_t least = editDistance(asked, candidate);
  for (std::size_t size = asked.size() - 1; size <= asked.size() + 1 && size < candidate.size(); ++size)
    least = std::min(least, std::max<std::size_t>(1, editDistance(asked, candidate.substr(0, size))));
  return least;
}

/// Edits from one word to another; a part of a word counts as one. None when they have little in common.
std::optional<std::size_t> wordDistance(std::string_view asked, std::string_view candidate) {
  const bool isLong = asked.size() >= kShortestPart;
  const bool isPart = isLong && lowerCase(candidate).find(lowerCase(asked)) != std::string::npos;
  const std::size_t edits = isPart && asked.size() < candidate.size() ? 1
                            : isLong                                  ? distanceToStart(asked, candidate)
                                                                      : editDistance(asked, candidate);
  if (edits > std::max<std::size_t>(1, asked.size() / 3)) return std::nullopt;
  return edits;
}

/// The words of a group may be right where the group is wrong: groups weigh little.
std::optional<std::size_t> nameDistance(std::string_view asked, std::string_view candidate) {
  const auto colon = asked.find(':');
  if (colon == asked.npos) {
    const auto whole = wordDistance(asked, candidate), words = wordDistance(asked, behindColon(candidate));
    return whole && words ? std::min(whole, words) : whole ? whole : words;
  }
  const auto words = wordDistance(behindColon(asked), behindColon(candidate));
  if (!words) return std::nullopt;
  const std::string_view group = candidate.substr(0, candidate.find(':'));
  return *words + std::min(kOtherGroup, editDistance(asked.substr(0, colon), group));
}

std::string nearestNames(std::string_view asked, const std::vector<NamedParameter>& candidates) {
  std::vector<std::pair<std::size_t, std::string_view>> near;
  for (const auto& candidate : candidates)
    if (const auto distance = nameDistance(asked, candidate.name))
      near.emplace_back(*distance, candidate.name);
  std::ranges::stable_sort(near, {}, &std::pair<std::size_t, std::string_view>::first);
  std::string names;
  for (std::size_t k = 0; k < std::min(kNearestShown, near.size()); ++k)
    names += (names.empty() ? "" : ", ") + std::string(near[k].second);
  return names;
}

std::optional<int> idFromDigits(std::string_view text) {
  if (text.empty() || text.size() > 4 || text.find_first_not_of("0123456789") != text.npos)
    return std::nullopt;
  return std::stoi(std::string(text));
}

}  // namespace

const std::vector<NamedParameter>& hostParameters() {
  static const std::vector<NamedParameter> parameters = [] {
    std::vector<NamedParameter> announced;
    for (int id = 0; id < kParameters; ++id)
      if (parameterKind(id) & kKindAnnounced) announced.push_back({id, nameOf(id)});
    return announced;
  }();
  return parameters;
}

std::vector<NamedParameter> insertParameters(const Setting& setting) {
  std::vector<NamedParameter> named;
  for (const int place : {kInsertX, kInsertY})
    if (const ModuleFamily* family = familyInPlace(place, setting))
      for (const Row& row : family->rows)
        if (row.offset >= kFirstOwnOffset) {
          const Place& group = kRack[static_cast<std::size_t>(place)];
          named.push_back(
              {group.parameterBase + row.offset, fmt::format("{}:{}", group.prefix, behindColon(row.name))});
        }
  return named;
}

int parameterFromName(std::string_view name, const Setting& setting) {
  if (const auto id = idFromDigits(name)) {
    if (parameterKind(*id) & kKindAnnounced) return *id;
    if (parameterKind(*id) & kKindMeter) refuse("{} is the meter {}, not a parameter", *id, nameOf(*id));
    refuse("no parameter has the id {}; `corvane params` lists all", *id);
  }
  std::vector<NamedParameter> candidates = hostParameters();
  std::ranges::move(insertParameters(setting), std::back_inserter(candidates));
  const std::string wanted = lowerCase(name);
  for (const auto& candidate : candidates)
    if (lowerCase(candidate.name) == wanted) return candidate.id;
  for (int id = kParameters; id <= kTotalReductionMeterId; ++id)
    if (lowerCase(nameOf(id)) == wanted) refuse("{} is a meter, not a parameter", nameOf(id));
  const std::string near = nearestNames(name, candidates);
  if (near.empty()) refuse("no parameter \"{}\"; `corvane params` lists all", name);
  refuse("no parameter \"{}\"; nearest: {}", name, near);
}

}  // namespace corvane::cli
