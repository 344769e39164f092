#pragma once

#include <algorithm>
#include <array>
#include <cmath>

#include "core/ParameterRow.h"

namespace corvane::eq {

/// The three equalisers, values of `type`.
enum EqType { kBellform = 1, kLumenband = 2, kTonbox = 3 };

/// The four bands, in the order of their parameters.
enum Band { kHi, kHm, kLm, kLo, kBands };

// Offsets: four parameters for each band, then the two that all bands share.
inline constexpr int kFirstBand = 16;
inline constexpr int kBandParameters = 4;
enum BandParameter { kIn, kGain, kFreq, kShape };
inline constexpr int kOut = 32;
inline constexpr int kAnalog = 33;

constexpr int offsetOf(Band band, BandParameter parameter) {
  return kFirstBand + kBandParameters * band + parameter;
}

inline constexpr double kGainSpanDb = 36.0, kLowestGainDb = -18.0;
inline constexpr double kBandSpan = 20.0;  // highest over lowest frequency of every band

/// Position within 0..1, before a root or a power is taken; not-a-number counts as 0.
inline double position(double p) { return p > 0.0 ? std::min(p, 1.0) : 0.0; }

/// Gain behind the bands in whole decibels, although the display follows the knob in tenths.
inline double outGainDb(double p) { return std::trunc(kGainSpanDb * p + 0.5) + kLowestGainDb; }

// Frequency laws: lowest times span to a bent position, so that each knob has the marks of its scale evenly
// spread. HI and LO are finest around the middle, HM and LM nearly even.

/// 0..1 to 0..1, steep at both ends and flat in the middle.
inline double flatCentre(double v) { return std::tan(2.0 * v - 1.0) / (2.0 * std::tan(1.0)) + 0.5; }
inline double flatCentreInverse(double u) { return (std::atan((u - 0.5) * 2.0 * std::tan(1.0)) + 1.0) / 2.0; }

inline double frequencyAt(const Taper& t, double bent) {
  return std::clamp(t.base * std::pow(t.span, bent), t.base, t.base * t.span);
}
inline double bentAt(const Taper& t, double hz) { return position(std::log(hz / t.base) / std::log(t.span)); }

inline constexpr double kHiBend = 0.4, kHiPower = 1.4155, kMiddleBend = 0.89635, kLoBend = 0.6255;

inline double hiFrequency(const Taper& t, double p) {
  return frequencyAt(t, std::pow(flatCentre(std::pow(position(p), kHiBend)), kHiPower));
}
inline double hiPosition(const Taper& t, double hz) {
  return std::pow(position(flatCentreInverse(std::pow(bentAt(t, hz), 1.0 / kHiPower))), 1.0 / kHiBend);
}
inline double middleFrequency(const Taper& t, double p) {
  return frequencyAt(t, std::pow(position(p), kMiddleBend));
}
inline double middlePosition(const Taper& t, double hz) { return std::pow(bentAt(t, hz), 1.0 / kMiddleBend); }
inline double loFrequency(const Taper& t, double p) {
  return frequencyAt(t, flatCentre(std::pow(position(p), kLoBend)));
}
inline double loPosition(const Taper& t, double hz) {
  return std::pow(position(flatCentreInverse(bentAt(t, hz))), 1.0 / kLoBend);
}

inline constexpr Taper kHiHz = ownTaper(hiFrequency, hiPosition, 1400.0, kBandSpan);
inline constexpr Taper kHmHz = ownTaper(middleFrequency, middlePosition, 500.0, kBandSpan);
inline constexpr Taper kLmHz = ownTaper(middleFrequency, middlePosition, 100.0, kBandSpan);
inline constexpr Taper kLoHz = ownTaper(loFrequency, loPosition, 20.0, kBandSpan);
inline constexpr Taper kDb = linear(kLowestGainDb, kGainSpanDb);

inline constexpr Display kInOut = choiceText("OUT|IN");
inline constexpr Display kWidth = choiceText("Wide|Normal|Narrow");
inline constexpr Entry kTypedDb = typed(kLowestGainDb, kLowestGainDb + kGainSpanDb);

// clang-format off
inline constexpr std::array kRows{
    //  offset                name          default steps        taper       unit    text                          typed
    Row{offsetOf(kHi, kIn),    "EQ:HI In",   1.0,    1,           onOff(),    " ",    kInOut},
    Row{offsetOf(kHi, kGain),  "EQ:HI Gain", 0.5,    kContinuous, kDb,        " dB ", fixedText(1),                 kTypedDb},
    Row{offsetOf(kHi, kFreq),  "EQ:HI Freq", 0.5,    kContinuous, kHiHz,      " Hz ", frequencyText(),              kSearchEntry},
    Row{offsetOf(kHi, kShape), "EQ:HI Q",    0.0,    2,           stepped(2), " ",    kWidth},
    Row{offsetOf(kHm, kIn),    "EQ:HM In",   1.0,    1,           onOff(),    " ",    kInOut},
    Row{offsetOf(kHm, kGain),  "EQ:HM Gain", 0.5,    kContinuous, kDb,        " dB ", fixedText(1),                 kTypedDb},
    Row{offsetOf(kHm, kFreq),  "EQ:HM Freq", 0.5,    kContinuous, kHmHz,      " Hz ", frequencyText(),              kSearchEntry},
    Row{offsetOf(kHm, kShape), "EQ:HM Q",    0.5,    2,           stepped(2), " ",    kWidth},
    Row{offsetOf(kLm, kIn),    "EQ:LM In",   1.0,    1,           onOff(),    " ",    kInOut},
    Row{offsetOf(kLm, kGain),  "EQ:LM Gain", 0.5,    kContinuous, kDb,        " dB ", fixedText(1),                 kTypedDb},
    Row{offsetOf(kLm, kFreq),  "EQ:LM Freq", 0.5,    kContinuous, kLmHz,      " Hz ", frequencyText(),              kSearchEntry},
    Row{offsetOf(kLm, kShape), "EQ:LM Q",    0.5,    2,           stepped(2), " ",    kWidth},
    Row{offsetOf(kLo, kIn),    "EQ:LO In",   1.0,    1,           onOff(),    " ",    kInOut},
    Row{offsetOf(kLo, kGain),  "EQ:LO Gain", 0.5,    kContinuous, kDb,        " dB ", fixedText(1),                 kTypedDb},
    Row{offsetOf(kLo, kFreq),  "EQ:LO Freq", 0.5,    kContinuous, kLoHz,      " Hz ", frequencyText(),              kSearchEntry},
    Row{offsetOf(kLo, kShape), "EQ:LO Q",    0.0,    2,           stepped(2), " ",    kWidth},
    Row{kOut,                  "EQ:Out",     0.5,    kContinuous, kDb,        " dB ", fixedText(1),                 kTypedDb},
    Row{kAnalog,               "EQ:Analog",  1.0,    1,           onOff(),    " ",    choiceText("SatOff|SatOn")},
};
// clang-format on

}  // namespace corvane::eq
