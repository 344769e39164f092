#pragma once

#include <array>

#include "core/ParameterRow.h"

namespace corvane::compressor {

// clang-format off
inline constexpr std::array kRows{
    //  offset  name  default  steps  taper  unit  text
    Row{16, "Comp:Attack", 0.5, kContinuous, linear(0.0, 1.0), " ", kNoDisplay},
    Row{17, "Comp:Release", 0.5, kContinuous, linear(0.0, 1.0), " ", kNoDisplay},
    Row{18, "Comp:Threshold", 0.5, kContinuous, linear(0.0, 1.0), " ", kNoDisplay},
    Row{19, "Comp:Ratio", 0.5, kContinuous, linear(0.0, 1.0), " ", kNoDisplay},
    Row{20, "Comp:Mix", 1.0, kContinuous, linear(0.0, 1.0), " ", kNoDisplay},
    Row{21, "Comp:Makeup Gain", 0.145, kContinuous, linear(0.0, 1.0), " ", kNoDisplay},
    Row{22, "Comp:HPF", 0.5, kContinuous, linear(0.0, 1.0), " ", kNoDisplay},
    Row{23, "Comp:Link", 1.0, 1, stepped(1), " ", kNoDisplay},
};
// clang-format on

}  // namespace corvane::compressor
