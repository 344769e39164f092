#include "core/ModuleFamily.h"

#include <algorithm>
#include <cassert>
#include <cstring>

#include "core/Rack.h"

namespace corvane {

const ModuleFamily& familyOfKind(ModuleKind kind) {
  const auto families = moduleFamilies();
  const auto at = std::ranges::find(families, kind, &ModuleFamily::kind);
  assert(at != families.end());
  return **at;
}

const ModuleFamily* familyOfInsertIndex(int insertIndex) {
  for (const ModuleFamily* family : moduleFamilies())
    for (const Variant& variant : family->variants)
      if (insertIndex == family->firstInsertIndex + variant.type - 1) return family;
  return nullptr;
}

const Row* findRow(const ModuleFamily& family, int offset) {
  const auto at = std::ranges::find(family.rows, offset, &Row::offset);
  return at == family.rows.end() ? nullptr : &*at;
}

std::string_view measureOf(const Row& row) {
  std::string_view unit = row.measure;
  if (!unit.empty()) return unit;
  unit = row.unit;
  const auto first = unit.find_first_not_of(' ');
  return first == unit.npos ? "" : unit.substr(first, unit.find_last_not_of(' ') - first + 1);
}

double physicalValue(const ModuleFamily& family, int offset, double p) {
  const Row* row = findRow(family, offset);
  assert(row);
  return row->taper.physical(p);
}

const char* variantName(const ModuleFamily& family, int type) {
  for (const Variant& variant : family.variants)
    if (variant.type == type) return variant.panelName ? variant.panelName : variant.name;
  return "-";
}

void valueText(const ModuleFamily& family, int offset, double p, char* text) {
  text[0] = '\0';
  const Row* row = findRow(family, offset);
  if (!row && offset != 0) return;
  if (!(p >= 0.0 && p <= 1.0)) {
    std::strcpy(text, "UNDEF");
  } else if (row) {
    row->display.write(*row, p, text);
  } else {
    std::strcpy(text, variantName(family, decodeVariant(p)));
  }
}

bool valueFromText(const ModuleFamily& family, int offset, const char* text, double* p) {
  const Row* row = findRow(family, offset);
  return row && row->entry.kind == Entry::Kind::typed && row->entry.read(*row, text, p);
}

const char* unitText(const ModuleFamily& family, int offset) {
  const Row* row = findRow(family, offset);
  return row ? row->unit : "";
}

double defaultValue(const ModuleFamily& family, int offset) {
  const Row* row = findRow(family, offset);
  return row ? row->defaultValue : 0.0;
}

void modulePreset(const ModuleFamily& family, int index, double* values, char* name) {
  for (int offset = 0; offset < family.presetLength; ++offset) values[offset] = defaultValue(family, offset);
  const bool known = index >= 0 && index < static_cast<int>(family.presets.size());
  std::strcpy(name, known ? family.presets[static_cast<std::size_t>(index)].name : "Init");
  if (!known) return;
  for (const PresetValue& entry : family.presets[static_cast<std::size_t>(index)].values)
    if (entry.offset > 0) values[entry.offset] = entry.value;
}

void sendDefaults(const ModuleFamily& family, StripEffect& module, int parameterBase) {
  for (const Row& row : family.rows)
    if (row.offset >= kFirstOwnOffset) module.setParameter(parameterBase + row.offset, row.defaultValue);
}

}  // namespace corvane
