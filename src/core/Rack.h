#pragma once

#include <algorithm>
#include <array>

#include "core/ModuleFamily.h"

namespace corvane {

// The numbers of the rack: nine places, their ids, and the decoding of normalised values.

inline constexpr int kPlaces = 9;
inline constexpr int kFixedPlaces = 7;
inline constexpr int kInsertX = 7, kInsertY = 8;
inline constexpr int kParameters = 360;  // size of a preset's value array, ids 0 .. 359

// Offsets of a group's head.
inline constexpr int kTypeOffset = 0;
inline constexpr int kPositionOffset = 1;
inline constexpr int kMuteOffset = 2;
inline constexpr int kSoloOffset = 3;
inline constexpr int kSideChainOffset = 4;
inline constexpr int kMonitorOffset = 5;
inline constexpr int kHeadSize = 6;
inline constexpr int kFirstOwnOffset = 16;

struct Place {
  const char* prefix;  ///< of its parameter names, without the colon
  ModuleKind kind;     ///< none for the inserts, which hold any
  int parameterBase;
  int parameterCount;  ///< ids of the group
  int meterBase;
  int meterCount;
  int tagBase;         ///< first of the 39 editor tags
  double typeDefault;  ///< normalised
};

// clang-format off
inline constexpr std::array<Place, kPlaces> kRack{{
    // prefix  kind                    parameters  meters    tags  default type
    {"Pre",    ModuleKind::preamp,     16,  32,    361, 6,   438,  0.25},
    {"Flt",    ModuleKind::filters,    48,  32,    367, 4,   477,  0.0625},
    {"Gate",   ModuleKind::gate,       80,  32,    371, 4,   516,  0.0},
    {"Comp",   ModuleKind::compressor, 112, 32,    375, 4,   555,  0.125},
    {"EQ",     ModuleKind::eq,         144, 48,    379, 4,   594,  0.0625},
    {"Lim",    ModuleKind::limiter,    192, 32,    383, 4,   633,  0.0},
    {"Mstr",   ModuleKind::master,     224, 32,    387, 12,  672,  0.0},
    {"InsX",   ModuleKind::none,       256, 48,    399, 12,  711,  0.0},
    {"InsY",   ModuleKind::none,       304, 48,    411, 12,  750,  0.0},
}};
// clang-format on

// Decoding of a normalised value: truncation after adding 0.5. The half matters: stored settings hold
// sixteenths and decimals cut to four places.
constexpr int decodeSwitch(double v) { return static_cast<int>(v + 0.5); }
constexpr int decodeVariant(double v) { return static_cast<int>(v * 15.0 + 0.5); }
constexpr int decodePosition(double v) { return static_cast<int>(v * 8.0 + 0.5); }
constexpr int decodeInsertIndex(double v) { return static_cast<int>(v * 255.0 + 0.5); }

/// Takes `place` out of an order of places and puts it in at `position`, 0 .. 8; those in between close the
/// gap.
inline void moveInOrder(std::array<int, kPlaces>& order, int place, int position) {
  const auto old = std::ranges::find(order, place);
  const auto target = order.begin() + position;
  if (target > old)
    std::rotate(old, old + 1, target + 1);
  else
    std::rotate(target, old, old + 1);
}

/// Place whose parameter group holds `id`, or -1.
int placeOfParameter(int id);
/// Place whose meter group holds `id`, or -1.
int placeOfMeter(int id);

/// Kind of an insert index: 0 for 0 (empty), -1 for an index without a module.
int kindOfInsertIndex(int insertIndex);
/// Name shown for an insert index; "-" for an index without a module.
const char* insertName(int insertIndex);

/// Type value of fixed place `id` as the value of an insert's Type; values of insert Types stand as they are.
double insertValueFromTypeValue(int id, double value);
/// Value of an insert's Type as the Type value of a fixed place; 0 where no fixed place takes the module.
double typeValueFromInsertValue(double value);

}  // namespace corvane
