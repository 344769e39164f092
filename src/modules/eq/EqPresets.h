#pragma once

#include <array>

#include "core/ModuleFamily.h"
#include "modules/eq/EqTable.h"

namespace corvane::eq {

namespace preset {
constexpr PresetValue in(Band band, double p) { return {offsetOf(band, kIn), p}; }
constexpr PresetValue gain(Band band, double p) { return {offsetOf(band, kGain), p}; }
constexpr PresetValue freq(Band band, double p) { return {offsetOf(band, kFreq), p}; }
constexpr PresetValue shape(Band band, double p) { return {offsetOf(band, kShape), p}; }
}  // namespace preset

using preset::freq, preset::gain, preset::in, preset::shape;

inline constexpr std::array kPresets{
    ModulePreset{"Default", {}},
    ModulePreset{"A little help",
                 {gain(kHi, 0.515), freq(kHi, 0.3533), in(kHm, 0.0), gain(kLm, 0.485), freq(kLm, 0.0),
                  shape(kLm, 0.0), gain(kLo, 0.545), shape(kLo, 1.0)}},
    ModulePreset{
        "Walking Low End",
        {in(kHi, 0.0), gain(kHi, 0.535), freq(kHi, 0.3683), in(kHm, 0.0), gain(kHm, 0.375), freq(kHm, 0.43),
         gain(kLm, 0.319), freq(kLm, 0.6263), gain(kLo, 0.5646), freq(kLo, 0.3967)}},
    ModulePreset{
        "Opened like piano",
        {gain(kHi, 0.67), freq(kHi, 0.8), gain(kHm, 0.5554), freq(kHm, 0.7867), shape(kHm, 0.0),
         gain(kLm, 0.4661), freq(kLm, 0.1732), gain(kLo, 0.6634), freq(kLo, 0.3779), shape(kLo, 1.0)}},
    ModulePreset{"Darker",
                 {gain(kHi, 0.4444), freq(kHi, 0.0593), gain(kHm, 0.5556), freq(kHm, 0.1963),
                  gain(kLm, 0.4444), gain(kLo, 0.5556), freq(kLo, 0.7685)}},
    ModulePreset{"Warmer, brighter",
                 {gain(kHi, 0.555), freq(kHi, 0.6333), gain(kLm, 0.59), freq(kLm, 0.2667), shape(kLm, 0.0),
                  freq(kLo, 0.4933)}},
    ModulePreset{"Extra presence",
                 {gain(kHi, 0.5564), freq(kHi, 1.0), in(kHm, 0.0), gain(kHm, 0.6654), shape(kHm, 0.0),
                  gain(kLm, 0.4448), freq(kLm, 0.0), shape(kLm, 0.0), gain(kLo, 0.6105), freq(kLo, 0.0852),
                  shape(kLo, 1.0)}},
    ModulePreset{"Warmer",
                 {gain(kHi, 0.445),
                  freq(kHi, 0.8),
                  gain(kHm, 0.5654),
                  freq(kHm, 0.3667),
                  shape(kHm, 0.0),
                  in(kLm, 0.0),
                  gain(kLm, 0.4661),
                  freq(kLm, 0.1732),
                  gain(kLo, 0.5684),
                  freq(kLo, 0.5446),
                  {kOut, 0.4324}}},
    ModulePreset{"Telefunkenstein",
                 {gain(kHi, 0.44), freq(kHi, 0.74), gain(kHm, 0.38), freq(kHm, 0.8533), gain(kLm, 0.435),
                  freq(kLm, 0.6)}},
    ModulePreset{"Not so boxy",
                 {gain(kHi, 0.545), freq(kHi, 0.71), gain(kHm, 0.475), freq(kHm, 0.0233), shape(kHm, 1.0),
                  gain(kLm, 0.445), freq(kLm, 0.4241), shape(kLm, 0.0), gain(kLo, 0.56), freq(kLo, 0.5833)}},
};

}  // namespace corvane::eq
