#pragma once

#include <array>

#include "core/ParameterRow.h"

namespace corvane::eq {

// clang-format off
inline constexpr std::array kRows{
    //  offset  name  default  steps  taper  unit  text
    Row{16, "EQ:HI In", 1.0, 1, stepped(1), " ", kNoDisplay},
    Row{17, "EQ:HI Gain", 0.5, kContinuous, linear(0.0, 1.0), " ", kNoDisplay},
    Row{18, "EQ:HI Freq", 0.5, kContinuous, linear(0.0, 1.0), " ", kNoDisplay},
    Row{19, "EQ:HI Q", 0.0, 2, stepped(2), " ", kNoDisplay},
    Row{20, "EQ:HM In", 1.0, 1, stepped(1), " ", kNoDisplay},
    Row{21, "EQ:HM Gain", 0.5, kContinuous, linear(0.0, 1.0), " ", kNoDisplay},
    Row{22, "EQ:HM Freq", 0.5, kContinuous, linear(0.0, 1.0), " ", kNoDisplay},
    Row{23, "EQ:HM Q", 0.5, 2, stepped(2), " ", kNoDisplay},
    Row{24, "EQ:LM In", 1.0, 1, stepped(1), " ", kNoDisplay},
    Row{25, "EQ:LM Gain", 0.5, kContinuous, linear(0.0, 1.0), " ", kNoDisplay},
    Row{26, "EQ:LM Freq", 0.5, kContinuous, linear(0.0, 1.0), " ", kNoDisplay},
    Row{27, "EQ:LM Q", 0.5, 2, stepped(2), " ", kNoDisplay},
    Row{28, "EQ:LO In", 1.0, 1, stepped(1), " ", kNoDisplay},
    Row{29, "EQ:LO Gain", 0.5, kContinuous, linear(0.0, 1.0), " ", kNoDisplay},
    Row{30, "EQ:LO Freq", 0.5, kContinuous, linear(0.0, 1.0), " ", kNoDisplay},
    Row{31, "EQ:LO Q", 0.0, 2, stepped(2), " ", kNoDisplay},
    Row{32, "EQ:Out", 0.5, kContinuous, linear(0.0, 1.0), " ", kNoDisplay},
    Row{33, "EQ:Analog", 1.0, 1, stepped(1), " ", kNoDisplay},
};
// clang-format on

}  // namespace corvane::eq
