#pragma once

#include <array>

#include "core/ParameterRow.h"

namespace corvane::filters {

// clang-format off
inline constexpr std::array kRows{
    //  offset  name  default  steps  taper  unit  text
    Row{16, "Flt:LPF In", 1.0, 1, stepped(1), " ", kNoDisplay},
    Row{17, "Flt:LPF Freq", 1.0, kContinuous, linear(0.0, 1.0), " ", kNoDisplay},
    Row{18, "Flt:LPF Slope", 0.5, 2, stepped(2), " ", kNoDisplay},
    Row{19, "Flt:Parametric In", 1.0, 1, stepped(1), " ", kNoDisplay},
    Row{20, "Flt:Parametric Gain", 0.5, kContinuous, linear(0.0, 1.0), " ", kNoDisplay},
    Row{21, "Flt:Parametric Freq", 0.5, kContinuous, linear(0.0, 1.0), " ", kNoDisplay},
    Row{22, "Flt:Parametric Q", 0.5, kContinuous, linear(0.0, 1.0), " ", kNoDisplay},
    Row{23, "Flt:Parametric Type", 0.5, 4, stepped(4), " ", kNoDisplay},
    Row{24, "Flt:HPF In", 1.0, 1, stepped(1), " ", kNoDisplay},
    Row{25, "Flt:HPF Freq", 0.0, kContinuous, linear(0.0, 1.0), " ", kNoDisplay},
    Row{26, "Flt:HPF Slope", 0.5, 2, stepped(2), " ", kNoDisplay},
};
// clang-format on

}  // namespace corvane::filters
