#pragma once

#include <array>

#include "core/ParameterRow.h"

namespace corvane::gate {

// clang-format off
inline constexpr std::array kRows{
    //  offset  name  default  steps  taper  unit  text
    Row{16, "Gate:Attack", 0.5, kContinuous, linear(0.0, 1.0), " ", kNoDisplay},
    Row{17, "Gate:Release", 0.5, kContinuous, linear(0.0, 1.0), " ", kNoDisplay},
    Row{18, "Gate:Ratio", 0.5, kContinuous, linear(0.0, 1.0), " ", kNoDisplay},
    Row{19, "Gate:Hold", 0.5, kContinuous, linear(0.0, 1.0), " ", kNoDisplay},
    Row{20, "Gate:Threshold", 0.5, kContinuous, linear(0.0, 1.0), " ", kNoDisplay},
    Row{21, "Gate:Shape", 0.5, kContinuous, linear(0.0, 1.0), " ", kNoDisplay},
    Row{22, "Gate:Range", 0.0, kContinuous, linear(0.0, 1.0), " ", kNoDisplay},
    Row{23, "Gate:HPF In", 0.0, 1, stepped(1), " ", kNoDisplay},
    Row{24, "Gate:HPF Freq", 0.0, kContinuous, linear(0.0, 1.0), " ", kNoDisplay},
    Row{25, "Gate:LPF In", 0.0, 1, stepped(1), " ", kNoDisplay},
    Row{26, "Gate:LPF Freq", 1.0, kContinuous, linear(0.0, 1.0), " ", kNoDisplay},
};
// clang-format on

}  // namespace corvane::gate
