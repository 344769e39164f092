#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "corvane/Setting.h"

namespace corvane::cli {

struct NamedParameter {
  int id;
  std::string name;
};

/// Every host parameter under its name in the bank, in rising order of id.
const std::vector<NamedParameter>& hostParameters();

/// Own parameters of the modules that stand in the inserts, by the module's own words: "InsX:Threshold"
/// beside "InsX:Prm03".
std::vector<NamedParameter> insertParameters(const Setting& setting);

/// Id of a name (letter case aside) or of a number. Throws Failure with the nearest names.
int parameterFromName(std::string_view name, const Setting& setting);

}  // namespace corvane::cli
