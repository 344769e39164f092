#include "core/Rack.h"

#include <algorithm>
#include <cstdint>

namespace corvane {

namespace {

/// Place of each id from 0 on, -1 for ids of no group. Every block asks for all meters.
template <std::size_t kIds>
constexpr std::array<std::int8_t, kIds> placesById(int Place::*base, int Place::*count) {
  std::array<std::int8_t, kIds> places{};
  places.fill(-1);
  for (std::size_t k = 0; k < kPlaces; ++k)
    std::fill_n(places.begin() + kRack[k].*base, kRack[k].*count, static_cast<std::int8_t>(k));
  return places;
}

constexpr auto kPlaceOfParameter = placesById<kParameters>(&Place::parameterBase, &Place::parameterCount);
constexpr auto kPlaceOfMeter =
    placesById<kRack.back().meterBase + kRack.back().meterCount>(&Place::meterBase, &Place::meterCount);

template <std::size_t kIds>
int lookUp(const std::array<std::int8_t, kIds>& places, int id) {
  return id >= 0 && id < static_cast<int>(kIds) ? places[static_cast<std::size_t>(id)] : -1;
}

}  // namespace

int placeOfParameter(int id) { return lookUp(kPlaceOfParameter, id); }
int placeOfMeter(int id) { return lookUp(kPlaceOfMeter, id); }

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
  if (place < 0 || place >= kFixedPlaces) return value;
  const Place& fixed = kRack[static_cast<std::size_t>(place)];
  if (id != fixed.parameterBase) return value;
  const int type = decodeVariant(value);
  if (type == 0) return 0.0;
  return (familyOfKind(fixed.kind).firstInsertIndex + type - 1) / 255.0;
}

double typeValueFromInsertValue(double value) {
  const int insertIndex = decodeInsertIndex(value);
  const ModuleFamily* family = familyOfInsertIndex(insertIndex);
  if (!family || family->kind == ModuleKind::special) return 0.0;
  return (insertIndex - family->firstInsertIndex + 1) / 15.0;
}

}  // namespace corvane
