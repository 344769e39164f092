#pragma once

#include <array>

#include "core/ParameterRow.h"

namespace corvane::limiter {

// clang-format off
inline constexpr std::array kRows{
    //  offset  name  default  steps  taper  unit  text
    Row{16, "Lim:Attack", 0.5, kContinuous, linear(0.0, 1.0), " ", kNoDisplay},
    Row{17, "Lim:Release", 0.5, kContinuous, linear(0.0, 1.0), " ", kNoDisplay},
    Row{18, "Lim:Ceiling", 0.8, kContinuous, linear(0.0, 1.0), " ", kNoDisplay},
    Row{19, "Lim:Output", 0.5, kContinuous, linear(0.0, 1.0), " ", kNoDisplay},
    Row{20, "Lim:HPF", 0.0, kContinuous, linear(0.0, 1.0), " ", kNoDisplay},
    Row{21, "Lim:Link", 0.0, 1, stepped(1), " ", kNoDisplay},
    Row{22, "Lim:Soft", 0.0, 1, stepped(1), " ", kNoDisplay},
    Row{25, "Lim:Mode", 0.0, 10, stepped(10), " ", kNoDisplay},
    Row{28, "Lim:Smooth", 0.5, 1000, stepped(1000), " ", kNoDisplay},
    Row{29, "Lim:Shape", 0.2, 10, stepped(10), " ", kNoDisplay},
};
// clang-format on

}  // namespace corvane::limiter
