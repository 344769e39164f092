#include "lv2/Scale.h"

#include <algorithm>
#include <string_view>

#include "core/Rack.h"
#include "modules/compressor/CompressorTable.h"
#include "modules/gate/GateTable.h"
#include "modules/master/MasterTable.h"
#include "modules/preamp/PreampTable.h"

namespace corvane::lv2 {

namespace {

/// Defaults and stored settings stand on four decimals: what comes back this near is meant as one of them.
/// Less than the rounding of a float at a port, so nothing else is moved by more than that.
constexpr double kDecimals = 1e4, kNear = 3.5e-8;

double onDecimals(double p) {
  const double near = std::round(p * kDecimals) / kDecimals;
  return std::abs(p - near) <= kNear ? near : p;
}

/// What a row's law needs besides its taper.
struct Special {
  ModuleKind kind;
  int offset;
  Scale::Form form;
  double factor;
  double lowest, highest;  ///< stops
  double lawFrom, lawTo;
  const char* unit;
};

constexpr double kStraightTop = 100.0;       // a ratio of 100:1 reads and acts as a limiter
constexpr double kStraightBottomDb = -80.0;  // a floor below -60 dB reads as silence

// clang-format off
const Special kSpecials[] = {
    {ModuleKind::preamp,     preamp::kDrive,      Scale::Form::decibels, std::pow(10.0, 1.5), -30.0,             30.0,         -30.0,  30.0, "dB"},
    {ModuleKind::preamp,     preamp::kNoiseLevel, Scale::Form::decibels, 1e6,                 -120.0,            -60.0,        -120.0, -60.0, "dB"},
    {ModuleKind::gate,       gate::kHold,         Scale::Form::plain,    1000.0,              0.0,               400.0,        0.0,    400.0, "ms"},
    {ModuleKind::gate,       gate::kRange,        Scale::Form::decibels, 1.0,                 kStraightBottomDb, 0.0,          gate::kSilentRangeDb, 0.0, "dB"},
    {ModuleKind::compressor, compressor::kRatio,  Scale::Form::plain,    1.0,                 1.0,               kStraightTop, 1.0,    compressor::kHighestRatio, ":1"},
    {ModuleKind::master,     master::kGain,       Scale::Form::decibels, 1.0,                 -100.0,            10.0,         -100.0, 10.0, "dB"},
};
// clang-format on

Scale steppedScale(const ModuleFamily& family, const Row& row) {
  const std::string measure(measureOf(row));
  std::vector<Choice> choices;
  const int last = static_cast<int>(row.taper.span);
  for (int state = 0; state <= last; ++state) {
    const double p = row.taper.normalised(state);
    char name[kTextBytes];
    valueText(family, row.offset, p, name);
    if (std::string_view(name) == "undef") break;  // room for states to come
    choices.push_back({state, p, measure.empty() ? name : name + (" " + measure)});
  }
  return choiceScale(std::move(choices), row.defaultValue);
}

}  // namespace

double Scale::lawNormalised(double x) const {
  const double physical = form == Form::decibels ? factor * std::pow(10.0, 0.05 * x) : x / factor;
  return row->taper.normalised(physical);
}

double Scale::lawPhysical(double p) const {
  const double physical = row->taper.physical(p);
  return form == Form::decibels ? 20.0 * std::log10(physical / factor) : physical * factor;
}

double Scale::normalised(float given) const {
  const float held = given == given ? std::clamp(given, lowest, highest) : standard;
  const auto x = static_cast<double>(held);
  switch (form) {
    case Form::bare: return x;
    case Form::toggle: return x > 0.0 ? 1.0 : 0.0;
    case Form::choice: {
      const Choice* nearest = &choices.front();
      for (const Choice& choice : choices)
        if (std::abs(choice.value - x) < std::abs(nearest->value - x)) nearest = &choice;
      return nearest->p;
    }
    default: break;
  }
  double p = 0.0;
  if (held == lowest)
    p = 0.0;
  else if (held == highest)
    p = 1.0;
  else if (x < lawFrom)
    p = pFrom * (x - static_cast<double>(lowest)) / (lawFrom - static_cast<double>(lowest));
  else if (x > lawTo)
    p = pTo + (1.0 - pTo) * (x - lawTo) / (static_cast<double>(highest) - lawTo);
  else
    p = lawNormalised(x);
  return onDecimals(std::clamp(p, 0.0, 1.0));
}

float Scale::physical(double p) const {
  if (form == Form::bare) return static_cast<float>(p);
  if (form == Form::toggle) return p >= 0.5 ? 1.0f : 0.0f;
  if (form == Form::choice) {
    const Choice* held = &choices.front();
    for (const Choice& choice : choices)
      if (std::abs(choice.p - p) < std::abs(held->p - p)) held = &choice;
    return static_cast<float>(held->value);
  }
  if (p <= 0.0) return lowest;
  if (p >= 1.0) return highest;
  if (p > pFrom && p < pTo)
    if (const auto x = static_cast<float>(lawPhysical(p)); std::abs(normalised(x) - p) < 1e-7) return x;
  // On a straight line, or a law that rounds: the way back decides.
  auto low = static_cast<double>(lowest), high = static_cast<double>(highest);
  for (int halvings = 0; halvings < 64; ++halvings) {
    const double middle = 0.5 * (low + high);
    (normalised(static_cast<float>(middle)) < p ? low : high) = middle;
  }
  return static_cast<float>(high);
}

Scale bareScale(double standard) {
  Scale scale;
  scale.standard = static_cast<float>(standard);
  return scale;
}

Scale toggleScale(double standard) {
  Scale scale;
  scale.form = Scale::Form::toggle;
  scale.standard = scale.physical(standard);
  return scale;
}

Scale choiceScale(std::vector<Choice> choices, double standard) {
  Scale scale;
  scale.form = Scale::Form::choice;
  scale.choices = std::move(choices);
  scale.lowest = static_cast<float>(scale.choices.front().value);
  scale.highest = static_cast<float>(scale.choices.back().value);
  scale.standard = scale.physical(standard);
  return scale;
}

Scale scaleOf(const ModuleFamily& family, const Row& row) {
  if (row.taper.curve == Taper::Curve::stepped) return steppedScale(family, row);
  Scale scale;
  scale.form = Scale::Form::plain;
  scale.row = &row;
  const auto special = std::ranges::find_if(
      kSpecials, [&](const Special& s) { return s.kind == family.kind && s.offset == row.offset; });
  if (special == std::end(kSpecials)) {
    scale.lowest = static_cast<float>(row.taper.physical(0.0));
    scale.highest = static_cast<float>(row.taper.physical(1.0));
    scale.unit = measureOf(row);
  } else {
    scale.form = special->form;
    scale.factor = special->factor;
    scale.lowest = static_cast<float>(special->lowest);
    scale.highest = static_cast<float>(special->highest);
    scale.lawFrom = special->lawFrom;
    scale.lawTo = special->lawTo;
    scale.unit = special->unit;
    if (special->lawFrom > special->lowest) scale.pFrom = scale.lawNormalised(special->lawFrom);
    if (special->lawTo < special->highest) scale.pTo = scale.lawNormalised(special->lawTo);
  }
  scale.standard = scale.physical(row.defaultValue);
  return scale;
}

}  // namespace corvane::lv2
