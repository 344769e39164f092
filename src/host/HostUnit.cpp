#include "core/ParameterBank.h"
#include "host/QDX_QcMN_1200_AAX_Parameters_Wrapper.h"

namespace corvane::host {

namespace {

/// Units of ids that are no own parameter of a family.
struct Extra {
  int id;
  const char* unit;
};
constexpr Extra kExtras[] = {
    {53, " "},      // Flt:Monitor
    {144, " "},     // EQ:Type
    {385, " dB "},  // Lim:GRMeter
    {389, " "},
    {390, " "},
    {391, " "},
    {392, " "},  // the level meters of Master Control
    {kTotalReductionMeterId, " dB "},
};

}  // namespace

const char* hostUnit(int id) {
  for (const Extra& extra : kExtras)
    if (extra.id == id) return extra.unit;
  const int place = placeOfParameter(id);
  if (place < 0 || place >= kFixedPlaces) return "";
  const Place& p = kRack[static_cast<std::size_t>(place)];
  const int offset = id - p.parameterBase;
  return offset >= kFirstOwnOffset ? unitText(familyOfKind(p.kind), offset) : "";
}

}  // namespace corvane::host
