#pragma once

#include <cstdint>
#include <span>

namespace corvane {

// The built-in bank: settings of all parameters, compiled from the text files in factory/. [any]

inline constexpr int kFactoryPlaces = 235;
inline constexpr int kHouseDesigner = 22;
inline constexpr int kPresetNameBytes = 24;  ///< a preset's name with its terminating zero

/// Setting `index`: 360 normalised values by id, a name (kPresetNameBytes), and category and designer in
/// `group`. Any argument may be null. The places behind the last setting, and any other index, hold "Init"
/// with all defaults. Without a category `group[0]` stays as it was, and so do values of ids without a use.
void factoryPreset(int index, double* values, char* name, std::int32_t* group);

/// Whose sound a preset is.
struct Designer {
  const char* name;  ///< empty for the house
  const char* link;
  int portrait;  ///< id of the picture
};
std::span<const Designer> factoryDesigners();
std::span<const char* const> factoryCategories();

}  // namespace corvane
