#pragma once

#include <array>
#include <cstdint>

#include "core/dsp/Biquad.h"
#include "modules/eq/EqTable.h"

namespace corvane::eq {

/// What the four knobs of a band ask for.
struct EqBand {
  std::int32_t bandIn = 1;     ///< 0 out, 1 in
  double bandFrequency = 0.0;  ///< Hz
  double bandGain = 0.0;       ///< dB
  std::int32_t bandShape = 0;  ///< 0 .. 2; what it means is up to band and equaliser
};

/// Design values of one second-order section.
struct SectionDesign {
  SectionType type;
  double frequencyHz, q, gainDb;
};

/// Bellform: one section a band. HI and LO are a soft shelf, a steep shelf and a bell by shape, HM and LM a
/// wide, a standard and a narrow bell. Q rises with boost and cut; the narrower bells do more than the knob
/// shows; a shelf turns a factor of about 3 inside the marked frequency, which so stands on its plateau.
SectionDesign designBellform(Band band, const EqBand& setting);

/// Lumenband: two sections in series a band, a main curve and a small counter-curve that narrows its skirts.
/// A boost is a pair of bells in every band; the cut of HI and LO is a shelf with a neutral bell behind it.
/// 0 dB counts as a boost; both sections are flat there.
std::array<SectionDesign, 2> designLumenband(Band band, const EqBand& setting);

/// Tonbox, HI and LO: the low-pass or high-pass that is subtracted from the signal to leave the band.
SectionDesign designTonboxShelf(Band band, const EqBand& setting);

/// Tonbox, HM and LM: the two edges of the band, an octave and less around its frequency.
struct TonboxEdges {
  SectionDesign passLow, passHigh;
};
/// A cut has half the Q of a boost, so that it is wider.
TonboxEdges designTonboxEdges(const EqBand& setting);

/// Linear gain of a Tonbox band. A deep narrow cut of HM or LM levels off towards -13.5 dB.
double tonboxGain(Band band, const EqBand& setting);
/// Linear gain from which a Tonbox band sets out after a reset.
double tonboxStartGain(const EqBand& setting);

}  // namespace corvane::eq
