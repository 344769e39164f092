#pragma once

#include <array>

#include "core/ParameterRow.h"

namespace corvane::deesser {

inline constexpr std::array<Row, 0> kRows{};

}  // namespace corvane::deesser
