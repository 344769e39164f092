#include "tests/soak/BlockTimes.h"

#include <algorithm>
#include <cmath>

namespace corvane::soak {

void BlockTimes::add(std::int64_t nanoseconds) {
  const auto us = static_cast<std::size_t>(std::max<std::int64_t>(nanoseconds, 0) / 1000);
  ++counts[std::min(us, kLongestUs)];
  ++total;
  worstNs = std::max(worstNs, nanoseconds);
}

double BlockTimes::withinMs(double share) const {
  const auto wanted = static_cast<std::int64_t>(std::ceil(share * static_cast<double>(total)));
  std::int64_t seen = 0;
  for (std::size_t us = 0; us < counts.size(); ++us)
    if ((seen += counts[us]) >= wanted) return static_cast<double>(us + 1) * 1e-3;
  return worstMs();
}

std::int64_t BlockTimes::longerThan(double ms) const {
  std::int64_t longer = 0;
  for (auto us = static_cast<std::size_t>(ms * 1e3); us < counts.size(); ++us) longer += counts[us];
  return longer;
}

}  // namespace corvane::soak
