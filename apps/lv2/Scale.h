#pragma once

#include <cmath>
#include <string>
#include <vector>

#include "core/ModuleFamily.h"

namespace corvane::lv2 {

/// A value that a person picks by name.
struct Choice {
  int value = 0;   ///< at the port
  double p = 0.0;  ///< normalised
  std::string name{};
};

/// The way between a port's value, in the unit that a person reads, and the normalised value of the strip.
///
/// Mostly a row's taper. Three things come on top: gains and ratios to a stop read as dB; a law that runs to
/// infinity at a stop goes on as a straight line from where displays say "oo"; and choices are whole numbers.
struct Scale {
  enum class Form {
    bare,      ///< the normalised value itself
    plain,     ///< the taper's physical value times `factor`
    decibels,  ///< 20 log10 of the taper's physical value over that of 0 dB
    choice,    ///< one of `choices`
    toggle,    ///< on for anything above 0, as hosts mean it
  };

  Form form = Form::bare;
  const Row* row = nullptr;
  float lowest = 0.0f, highest = 1.0f, standard = 0.0f;
  double factor = 1.0;  ///< plain: port units per physical unit; decibels: physical value at 0 dB
  /// The law holds between these; outside, a straight line leads to the stop.
  double lawFrom = -HUGE_VAL, lawTo = HUGE_VAL;
  double pFrom = 0.0, pTo = 1.0;  ///< normalised values at their ends
  std::string unit{};             ///< as people write it; empty for none
  std::vector<Choice> choices{};  ///< in rising order of value and of p

  /// 0..1 for any float. Not a number stands for the default, what lies outside for the nearer stop, a
  /// choice's fraction for the nearest state. [render]
  double normalised(float x) const;
  /// The port's value that comes nearest. [control]
  float physical(double p) const;

  double lawNormalised(double x) const;
  double lawPhysical(double p) const;
};

/// Scale of own parameter `offset` of a fixed place's family.
Scale scaleOf(const ModuleFamily& family, const Row& row);
/// 0..1, for parameters whose meaning changes with the module in an insert.
Scale bareScale(double standard);
Scale toggleScale(double standard);
Scale choiceScale(std::vector<Choice> choices, double standard);

}  // namespace corvane::lv2
