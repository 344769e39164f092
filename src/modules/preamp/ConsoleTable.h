#pragma once

#include <array>
#include <cstdint>

namespace corvane::preamp {

/// Values of `type` that have a colour of their own.
enum class Colour : std::int32_t { console60s = 2, console70s, console80s, converter90s };

struct SectionRow {
  double hz, q, gainDb = 0.0;
};

/// The parts of a console: what the three models have in common in shape and not in value.
struct ConsoleRow {
  // Hiss: one-pole corner, share of the noise level, shelf and the peaks at hum frequencies, before the
  // spread of the unit.
  double hissCornerHz, hissScale;
  SectionRow hissShelf, hissPeak1, hissPeak2, hissPeak3;
  int firstSpread;  ///< which of the unit's three spreads the peaks begin with
  // Behind the hiss, only while there is hiss: a part of the signal passes a low-pass.
  double lowpassHz, filteredShare, plainShare;
  SectionRow crosstalk;
  double crosstalkGain;
  SectionRow lowTone;
  double inTrim, outTrim;
  // Input stage with a sliding working point; the 80s have none.
  double biasCornerHz, inputScale, inverseInputScale, k, l, m;
};

// clang-format off
inline constexpr std::array<ConsoleRow, 3> kConsoles{{
    {.hissCornerHz = 11500.0, .hissScale = 0.75537,
     .hissShelf = {1800.0, 0.2, -8.0},
     .hissPeak1 = {45.0, 0.7, 14.0}, .hissPeak2 = {60.0, 7.0, 14.0}, .hissPeak3 = {100.0, 7.0, 10.0},
     .firstSpread = 0,
     .lowpassHz = 18000.0, .filteredShare = 0.75, .plainShare = 0.25,
     .crosstalk = {1400.0, 1.0}, .crosstalkGain = 0.0315 * 0.5,
     .lowTone = {33.0, 0.33, 2.2},
     .inTrim = 0.176775, .outTrim = 5.656908499505021,
     .biasCornerHz = 27.0, .inputScale = 0.28284, .inverseInputScale = 3.5355,
     .k = 0.7, .l = 0.3, .m = 1.1486983549970349},
    {.hissCornerHz = 15000.0, .hissScale = 0.83,
     .hissShelf = {1000.0, 0.25, -8.0},
     .hissPeak1 = {40.0, 0.8, 10.0}, .hissPeak2 = {60.0, 7.0, 15.0}, .hissPeak3 = {100.0, 7.0, 9.0},
     .firstSpread = 1,
     .lowpassHz = 21000.0, .filteredShare = 0.5, .plainShare = 0.5,
     .crosstalk = {2400.0, 0.7}, .crosstalkGain = 0.01 * 0.7,
     .lowTone = {22.0, 0.42, 2.5},
     .inTrim = 0.06125, .outTrim = 16.0,
     .biasCornerHz = 13.0, .inputScale = 0.35, .inverseInputScale = 2.857142857142857,
     .k = 0.5, .l = 0.6, .m = 0.5},
    {.hissCornerHz = 15500.0, .hissScale = 0.627,
     .hissShelf = {1000.0, 0.3, -6.0},
     .hissPeak1 = {35.0, 0.8, 6.0}, .hissPeak2 = {60.0, 7.0, 7.0}, .hissPeak3 = {100.0, 7.0, 4.0},
     .firstSpread = 2,
     .lowpassHz = 22000.0, .filteredShare = 0.35, .plainShare = 0.65,
     .crosstalk = {7400.0, 0.5}, .crosstalkGain = 0.002,
     .lowTone = {28.0, 0.7, 0.5},
     .inTrim = 0.06, .outTrim = 16.666666666666668,
     .biasCornerHz = 0.0, .inputScale = 0.0, .inverseInputScale = 0.0,
     .k = 0.0, .l = 0.0, .m = 0.0},
}};
// clang-format on

constexpr const ConsoleRow& consoleOf(Colour colour) {
  return kConsoles[static_cast<std::size_t>(colour) - static_cast<std::size_t>(Colour::console60s)];
}

}  // namespace corvane::preamp
