#pragma once

#include <array>
#include <cstdint>

#include "core/Rack.h"

namespace corvane::lv2 {

/// What the position and monitor ports mean together. A host sets ports one at a time and cannot be answered,
/// so two places often ask for one position. No module is ever dropped: nine positions that are all different
/// are taken as they are; otherwise a port that changes moves its place and shifts those in between, as a
/// drag in the rack does. Of several monitors the one switched on last counts. [render]
class RackRules {
 public:
  using Positions = std::array<int, kPlaces>;  ///< by place, 0 .. 8

  RackRules();
  void takePositions(const Positions& asked);
  /// Bit k: the monitor port of place k is on.
  void takeMonitors(unsigned asked);

  /// Where each place stands.
  Positions positions() const;
  /// The one place that is monitored, or -1.
  int monitored() const { return monitor; }

  /// All that the next moves depend on: what was asked, the order made of it, the monitor. A session keeps
  /// it, since ports alone do not tell which of two was written last.
  std::uint64_t memory() const;
  /// False, and nothing changed, for a word that no rack gave.
  bool recall(std::uint64_t word);

 private:
  Positions lastAsked{};
  std::array<int, kPlaces> order{};  ///< places by position
  unsigned lastMonitors = 0;
  int monitor = -1;
};

}  // namespace corvane::lv2
