#include <array>

#include "core/ModuleFamily.h"
#include "modules/compressor/CompressorFamily.h"
#include "modules/deesser/DeesserFamily.h"
#include "modules/dehummer/DehummerFamily.h"
#include "modules/eq/EqFamily.h"
#include "modules/filters/FiltersFamily.h"
#include "modules/gate/GateFamily.h"
#include "modules/limiter/LimiterFamily.h"
#include "modules/master/MasterFamily.h"
#include "modules/preamp/PreampFamily.h"
#include "modules/tidalform/TidalformFamily.h"

namespace corvane {

// The one list of families, in order of their insert indices.
std::span<const ModuleFamily* const> moduleFamilies() {
  static constexpr std::array kFamilies{
      &kPreampFamily,  &kFiltersFamily, &kGateFamily,    &kCompressorFamily, &kEqFamily,
      &kLimiterFamily, &kMasterFamily,  &kDeesserFamily, &kDehummerFamily,   &kTidalformFamily,
  };
  return kFamilies;
}

}  // namespace corvane
