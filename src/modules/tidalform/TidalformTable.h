#pragma once

#include <array>

#include "core/ParameterRow.h"

namespace corvane::tidalform {

inline constexpr std::array<Row, 0> kRows{};

}  // namespace corvane::tidalform
