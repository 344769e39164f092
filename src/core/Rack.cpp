#include "core/Rack.h"

namespace corvane {

int placeOfParameter(int id) {
  for (int k = 0; k < kPlaces; ++k)
    if (id >= kRack[k].parameterBase && id < kRack[k].parameterBase + kRack[k].parameterCount) return k;
  return -1;
}

int placeOfMeter(int id) {
  for (int k = 0; k < kPlaces; ++k)
    if (id >= kRack[k].meterBase && id < kRack[k].meterBase + kRack[k].meterCount) return k;
  return -1;
}

int kindOfInsertIndex(int insertIndex) {
  if (insertIndex == 0) return 0;
  const ModuleFamily* family = familyOfInsertIndex(insertIndex);
  return family ? static_cast<int>(family->kind) : -1;
}

const char* insertName(int insertIndex) {
  const ModuleFamily* family = familyOfInsertIndex(insertIndex);
  if (!family) return "-";
  for (const Variant& variant : family->variants)
    if (insertIndex == family->firstInsertIndex + variant.type - 1) return variant.name;
  return "-";
}

double insertValueFromTypeValue(int id, double value) {
  const int place = placeOfParameter(id);
  if (place < 0 || place >= kFixedPlaces || id != kRack[place].parameterBase) return value;
  const int type = decodeVariant(value);
  if (type == 0) return 0.0;
  return (familyOfKind(kRack[place].kind).firstInsertIndex + type - 1) / 255.0;
}

double typeValueFromInsertValue(double value) {
  const int insertIndex = decodeInsertIndex(value);
  const ModuleFamily* family = familyOfInsertIndex(insertIndex);
  if (!family || family->kind == ModuleKind::special) return 0.0;
  return (insertIndex - family->firstInsertIndex + 1) / 15.0;
}

}  // namespace corvane
