#include "corvane/Setting.h"

#include <algorithm>

#include "core/ParameterBank.h"

namespace corvane::cli {

namespace {

const Place& rackPlace(int place) { return kRack[static_cast<std::size_t>(place)]; }

}  // namespace

Setting::Setting() {
  for (int id = 0; id < kParameters; ++id) values[static_cast<std::size_t>(id)] = parameterDefault(id);
}

void Setting::edit(int id, double value) {
  const int place = placeOfParameter(id);
  const int offset = place < 0 ? -1 : id - rackPlace(place).parameterBase;
  if (offset == kPositionOffset) return move(place, decodePosition(value));
  if (offset == kTypeOffset && place >= kFixedPlaces) {
    const int before = decodeInsertIndex(this->value(id)), after = decodeInsertIndex(value);
    const int kind = kindOfInsertIndex(after);
    const bool sameFamily =
        kind == kindOfInsertIndex(before) && kind != static_cast<int>(ModuleKind::special);
    if (after != before && !sameFamily) loadInsertDefaults(place, after);
  }
  store(id, value);
}

void Setting::loadInsertDefaults(int place, int insertIndex) {
  const ModuleFamily* family = familyOfInsertIndex(insertIndex);
  if (!family) return;
  const Place& group = rackPlace(place);
  for (int offset = kFirstOwnOffset; offset < group.parameterCount; ++offset)
    store(group.parameterBase + offset, defaultValue(*family, offset));
}

void Setting::move(int place, int newPosition) {
  const auto positionOf = [&](int k) {
    return decodePosition(value(rackPlace(k).parameterBase + kPositionOffset));
  };
  const int from = positionOf(place), to = std::clamp(newPosition, 0, kPlaces - 1);
  for (int k = 0; k < kPlaces; ++k) {
    const int position = positionOf(k);
    int shifted = position;
    if (k == place)
      shifted = to;
    else if (position > from && position <= to)
      shifted = position - 1;
    else if (position >= to && position < from)
      shifted = position + 1;
    store(rackPlace(k).parameterBase + kPositionOffset, shifted / 8.0);
  }
}

const ModuleFamily* familyInPlace(int place, const Setting& setting) {
  const Place& group = rackPlace(place);
  return place < kFixedPlaces ? &familyOfKind(group.kind)
                              : familyOfInsertIndex(decodeInsertIndex(setting.value(group.parameterBase)));
}

}  // namespace corvane::cli
