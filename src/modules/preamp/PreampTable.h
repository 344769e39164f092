#pragma once

#include <array>

#include "core/ParameterRow.h"

namespace corvane::preamp {

// clang-format off
inline constexpr std::array kRows{
    //  offset  name  default  steps  taper  unit  text
    Row{16, "Pre:Gain", 0.5, kContinuous, linear(0.0, 1.0), " ", kNoDisplay},
    Row{17, "Pre:AutoIn", 0.0, 1, stepped(1), " ", kNoDisplay},
    Row{18, "Pre:RefLevel", 0.5, kContinuous, linear(0.0, 1.0), " ", kNoDisplay},
    Row{19, "Pre:AutoDetectMode", 1.0, 1, stepped(1), " ", kNoDisplay},
    Row{20, "Pre:AutoLevelMode", 0.0, 1, stepped(1), " ", kNoDisplay},
    Row{21, "Pre:PhaseL", 0.0, 1, stepped(1), " ", kNoDisplay},
    Row{22, "Pre:PhaseR", 0.0, 1, stepped(1), " ", kNoDisplay},
    Row{23, "Pre:Analog", 1.0, 1, stepped(1), " ", kNoDisplay},
    Row{24, "Pre:Drive", 0.5, kContinuous, linear(0.0, 1.0), " ", kNoDisplay},
    Row{25, "Pre:NoiseIn", 0.0, 2, stepped(2), " ", kNoDisplay},
    Row{26, "Pre:NoiseLevel", 0.5, kContinuous, linear(0.0, 1.0), " ", kNoDisplay},
};
// clang-format on

}  // namespace corvane::preamp
