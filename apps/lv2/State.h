#pragma once

#include <lv2/state/state.h>
#include <lv2/urid/urid.h>

namespace corvane::lv2 {

class Strip;

/// What the ports do not hold, in and out of a host's session: the effect's own state with the ports' values
/// laid into it, and the memory of the rack. [control], also while sound runs
class State {
 public:
  /// Without `map` there is no state.
  explicit State(LV2_URID_Map* map);

  LV2_State_Status save(Strip& strip, LV2_State_Store_Function store, LV2_State_Handle handle) const;
  /// A state with any fault leaves all as it was.
  LV2_State_Status restore(Strip& strip, LV2_State_Retrieve_Function retrieve, LV2_State_Handle handle) const;

 private:
  bool usable = false;
  LV2_URID chunkType = 0, effectKey = 0, rackKey = 0;
};

}  // namespace corvane::lv2
