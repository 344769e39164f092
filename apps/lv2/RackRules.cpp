#include "lv2/RackRules.h"

#include <bit>

namespace corvane::lv2 {

namespace {

constexpr std::uint64_t kDigits = 10;  // one more than the places, so that "no monitor" has a digit too

bool isPermutation(const RackRules::Positions& values) {
  unsigned seen = 0;
  for (const int value : values) seen |= 1u << value;
  return seen == (1u << kPlaces) - 1;
}

}  // namespace

RackRules::RackRules() {
  for (int place = 0; place < kPlaces; ++place) lastAsked[place] = order[place] = place;
}

void RackRules::takePositions(const Positions& asked) {
  if (isPermutation(asked)) {
    for (int place = 0; place < kPlaces; ++place) order[asked[place]] = place;
  } else {
    for (int place = 0; place < kPlaces; ++place)
      if (asked[place] != lastAsked[place]) moveInOrder(order, place, asked[place]);
  }
  lastAsked = asked;
}

void RackRules::takeMonitors(unsigned asked) {
  const bool holds = monitor >= 0 && (asked >> monitor & 1u) != 0;
  if (const unsigned switchedOn = asked & ~lastMonitors)
    monitor = std::bit_width(switchedOn) - 1;
  else if (!holds)
    monitor = asked != 0 ? std::countr_zero(asked) : -1;
  lastMonitors = asked;
}

RackRules::Positions RackRules::positions() const {
  Positions at{};
  for (int k = 0; k < kPlaces; ++k) at[order[k]] = k;
  return at;
}

std::uint64_t RackRules::memory() const {
  auto word = static_cast<std::uint64_t>(monitor) + 1;  // -1 becomes 0
  for (const auto& digits : {lastAsked, order})
    for (const int digit : digits) word = word * kDigits + static_cast<std::uint64_t>(digit);
  return word;
}

bool RackRules::recall(std::uint64_t word) {
  RackRules told;
  for (auto* digits : {&told.order, &told.lastAsked})
    for (int k = kPlaces - 1; k >= 0; --k, word /= kDigits) {
      if (word % kDigits >= kPlaces) return false;
      (*digits)[k] = static_cast<int>(word % kDigits);
    }
  if (word > kPlaces || !isPermutation(told.order)) return false;
  told.monitor = static_cast<int>(word) - 1;
  told.lastMonitors = ~0u;  // none of those that are on counts as new
  *this = told;
  return true;
}

}  // namespace corvane::lv2
