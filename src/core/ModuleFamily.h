#pragma once

#include <memory>
#include <span>

#include "core/ParameterRow.h"
#include "core/StripEffect.h"

namespace corvane {

enum class ModuleKind { none = 0, preamp, filters, gate, compressor, eq, limiter, master, special };

/// A value of `type` within a family.
struct Variant {
  int type;
  const char* name;                 ///< as the rack lists it
  const char* panelName = nullptr;  ///< as the family's own Type display shows it, where that differs
};

struct PresetValue {
  int offset = 0;
  double value = 0.0;  ///< normalised
};

/// A setting of one module: what differs from the defaults. Unused entries have offset 0.
struct ModulePreset {
  const char* name;
  PresetValue values[20] = {};
};

/// All that the rest of the strip knows of a family of modules.
struct ModuleFamily {
  ModuleKind kind;
  const char* prefix;    ///< of its parameter names, without the colon; "" for families of inserts alone
  const char* title;     ///< short title for panels
  int firstInsertIndex;  ///< insert index of type 1
  std::span<const Variant> variants;
  std::span<const Row> rows;              ///< in rising order of offset
  std::span<const char* const> meters;    ///< names, from the first meter id of the group
  int presetLength;                       ///< values that `modulePreset` fills, from offset 0
  std::span<const ModulePreset> presets;  ///< index 0 is "Default"; any index beyond is "Init"
  /// A new module that answers to the given ids, ready to process at 44100 Hz.
  std::unique_ptr<StripEffect> (*make)(int parameterBase, int meterBase, int tagBase);
};

/// The families in order of their insert indices. Filled by modules/ModuleCatalogue.cpp.
std::span<const ModuleFamily* const> moduleFamilies();

/// The family of a fixed place's kind (1 to 7).
const ModuleFamily& familyOfKind(ModuleKind kind);
/// The family that an insert index selects; null for an index without a module.
const ModuleFamily* familyOfInsertIndex(int insertIndex);

/// Row at `offset`, null where the family has none.
const Row* findRow(const ModuleFamily& family, int offset);
/// Physical value of own parameter `offset`; the row must exist.
double physicalValue(const ModuleFamily& family, int offset, double p);

// The functions that stand beside every module. Offsets count from the first id of the group; `text` and
// `name` point at kTextBytes bytes or more.

/// Name of a variant on the family's own display; "-" for a type without one.
const char* variantName(const ModuleFamily& family, int type);
/// Display of a value; "UNDEF" out of 0..1, empty for an offset without a display.
void valueText(const ModuleFamily& family, int offset, double p, char* text);
/// Typed text to a normalised value; false, and `p` as it was, for an offset or text that is not taken.
bool valueFromText(const ModuleFamily& family, int offset, const char* text, double* p);
/// Unit for hosts, with its blanks; "" where there is none.
const char* unitText(const ModuleFamily& family, int offset);
/// Default of an own parameter; 0 for an offset without one.
double defaultValue(const ModuleFamily& family, int offset);
/// Fills `values` (presetLength doubles by offset) with the defaults and then the preset, and its name.
void modulePreset(const ModuleFamily& family, int index, double* values, char* name);

/// Sends every own default to `module` through `setParameter`; the common part of `setDefaults`.
void sendDefaults(const ModuleFamily& family, StripEffect& module, int parameterBase);

}  // namespace corvane
