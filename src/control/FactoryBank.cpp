#include "control/FactoryBank.h"

#include <algorithm>
#include <cstring>
#include <string_view>

#include "core/ParameterBank.h"
#include "core/Rack.h"

namespace corvane {

namespace {

/// What a setting changes against the defaults of the bank.
struct FactoryValue {
  std::int16_t id;
  double value;
};
struct FactoryEntry {
  const char* name;
  std::int32_t category, designer;
  std::uint32_t firstValue, valueCount;
};

#include "FactoryBankTable.inc"

static_assert(std::size(kFactoryEntries) <= kFactoryPlaces);
static_assert(std::size(kFactoryDesigners) == kHouseDesigner + 1);

constexpr FactoryEntry kInit{"Init", -1, kHouseDesigner, 0, 0};

const FactoryEntry& entryAt(int index) {
  const bool known = index >= 0 && index < static_cast<int>(std::size(kFactoryEntries));
  return known ? kFactoryEntries[static_cast<std::size_t>(index)] : kInit;
}

}  // namespace

void factoryPreset(int index, double* values, char* name, std::int32_t* group) {
  const FactoryEntry& entry = entryAt(index);
  if (values) {
    for (int id = 0; id < kParameters; ++id)
      if (parameterKind(id) & kKindStored) values[id] = parameterDefault(id);
    for (const FactoryValue& each : std::span(kFactoryValues).subspan(entry.firstValue, entry.valueCount))
      values[each.id] = each.value;
  }
  if (name) {
    const std::string_view text = std::string_view(entry.name).substr(0, kPresetNameBytes - 1);
    std::memcpy(name, text.data(), text.size());
    name[text.size()] = '\0';
  }
  if (group) {
    if (entry.category >= 0) group[0] = entry.category;
    group[1] = entry.designer;
  }
}

std::span<const Designer> factoryDesigners() { return kFactoryDesigners; }
std::span<const char* const> factoryCategories() { return kFactoryCategories; }

}  // namespace corvane
