#pragma once

#include <array>

#include "core/ParameterRow.h"

namespace corvane::dehummer {

inline constexpr std::array<Row, 0> kRows{};

}  // namespace corvane::dehummer
