#pragma once

#include <cstdint>
#include <vector>

namespace corvane::soak {

/// How long blocks took, to a microsecond up to a tenth of a second. Adding neither allocates nor locks.
class BlockTimes {
 public:
  BlockTimes() : counts(kLongestUs + 1) {}
  void add(std::int64_t nanoseconds);
  /// ms that the given share of blocks stayed within, 0 .. 1.
  double withinMs(double share) const;
  double worstMs() const { return static_cast<double>(worstNs) * 1e-6; }
  std::int64_t longerThan(double ms) const;
  std::int64_t blocks() const { return total; }

 private:
  static constexpr std::size_t kLongestUs = 100'000;
  std::vector<std::int64_t> counts;  ///< by microsecond; the last holds all longer ones
  std::int64_t total = 0, worstNs = 0;
};

}  // namespace corvane::soak
