#include "corvane/Setting.h"

#include "core/ParameterBank.h"

namespace corvane::cli {

Setting::Setting() {
  for (int id = 0; id < kParameters; ++id) values[static_cast<std::size_t>(id)] = parameterDefault(id);
}

const ModuleFamily* familyInPlace(int place, const Setting& setting) {
  const Place& group = kRack[static_cast<std::size_t>(place)];
  return place < kFixedPlaces ? &familyOfKind(group.kind)
                              : familyOfInsertIndex(decodeInsertIndex(setting.value(group.parameterBase)));
}

}  // namespace corvane::cli
