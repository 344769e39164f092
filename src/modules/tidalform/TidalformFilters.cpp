#include "modules/tidalform/TidalformFilters.h"

#include <algorithm>
#include <numbers>

#include "core/dsp/FastMath.h"
#include "core/dsp/SectionShape.h"

namespace corvane {

namespace {

constexpr double kEdgeQ = 0.5;  // second section of a control filter at an edge of the band

double angleOf(double hz, double sampleRateHz) {
  return 2.0 * std::numbers::pi * designedHz(hz, sampleRateHz) / sampleRateHz;
}

struct FastPower {
  double operator()(double x, double y) const { return fast::pow(x, y); }
};

inline double amplitudeOf(double gainDb) { return fast::pow10(gainDb / 40.0); }

// Moving sections, in steps over arrays that the compiler sees apart, so that it takes several samples at
// once. The results of a sample do not depend on which others are in the block.

void moveAngles(const double* hz, int count, double sampleRateHz, double* sine, double* cosine) {
  for (int i = 0; i < count; ++i) {
    const fast::SinCos angle = fast::sinCos(angleOf(hz[i], sampleRateHz));
    sine[i] = angle.sin, cosine[i] = angle.cos;
  }
}

template <SectionType kType>
void moveQ(const double* hz, const double* q, int count, double sampleRateHz, double* bent) {
  for (int i = 0; i < count; ++i) bent[i] = bentQ(kType, hz[i], q[i], sampleRateHz, FastPower{});
}

/// `gainDb` may be null for types without a gain.
template <SectionType kType>
void moveShape(const double* sine, const double* cosine, const double* bent, const double* gainDb, int count,
               CoefficientBlock& out) {
  double s[kBlockFrames], c[kBlockFrames], q[kBlockFrames], amplitude[kBlockFrames];
  std::copy_n(sine, count, s);
  std::copy_n(cosine, count, c);
  std::copy_n(bent, count, q);
  if constexpr (hasGain(kType))
    for (int i = 0; i < count; ++i) amplitude[i] = amplitudeOf(gainDb[i]);
  else
    std::fill_n(amplitude, count, 1.0);
  for (int i = 0; i < count; ++i) out.set(i, shapeSection(kType, s[i], c[i], q[i], amplitude[i]));
}

/// Both sections of a peak's control filter: all is shared but the Q.
template <SectionType kType>
void movePeakControl(const TidalformBandBlock& band, int count, CoefficientBlock& first,
                     CoefficientBlock& second) {
  double bent[kBlockFrames] = {};
  for (int i = 0; i < count; ++i) bent[i] = band.peakQ[i] * band.peakBend[i];
  moveShape<kType>(band.sine, band.cosine, bent, nullptr, count, first);
  for (int i = 0; i < count; ++i) bent[i] = 0.5 * band.peakQ[i] * band.peakBend[i];
  moveShape<kType>(band.sine, band.cosine, bent, nullptr, count, second);
}

/// Both sections of a control filter at an edge.
template <SectionType kType>
void moveEdgeControl(const TidalformBandBlock& band, double ratio, int count, double sampleRateHz,
                     CoefficientBlock& first, CoefficientBlock& second) {
  double bent[kBlockFrames], hz[kBlockFrames] = {}, q[kBlockFrames] = {};
  double sine[kBlockFrames], cosine[kBlockFrames];
  moveQ<kType>(band.frequency, band.shelfQ, count, sampleRateHz, bent);
  moveShape<kType>(band.sine, band.cosine, bent, nullptr, count, first);
  for (int i = 0; i < count; ++i) hz[i] = ratio * band.frequency[i], q[i] = kEdgeQ;
  moveAngles(hz, count, sampleRateHz, sine, cosine);
  moveQ<kType>(hz, q, count, sampleRateHz, bent);
  moveShape<kType>(sine, cosine, bent, nullptr, count, second);
}

template <SectionType kType>
void moveShelf(const TidalformBandBlock& band, const double* gainDb, int count, double sampleRateHz,
               CoefficientBlock& out) {
  double bent[kBlockFrames];
  moveQ<kType>(band.frequency, band.shelfQ, count, sampleRateHz, bent);
  moveShape<kType>(band.sine, band.cosine, bent, gainDb, count, out);
}

void movePeak(const TidalformBandBlock& band, const double* gainDb, int count, CoefficientBlock& out) {
  double bent[kBlockFrames] = {};
  for (int i = 0; i < count; ++i) bent[i] = band.peakQ[i] * band.peakBend[i];
  moveShape<SectionType::peaking>(band.sine, band.cosine, bent, gainDb, count, out);
}

template <SectionType kType>
void designDynamicStanding(const DynamicAngle& angle, const double* gainDb, int from, int to,
                           CoefficientBlock& out) {
  for (int i = from; i < to; ++i)
    out.set(i, shapeSection(kType, angle.sine, angle.cosine, angle.bentQ, amplitudeOf(gainDb[i])));
}

}  // namespace

ControlPlan controlPlan(TidalformFilter filter, TidalformControl control) {
  const bool direct = control == TidalformControl::direct;
  if (filter == TidalformFilter::peak)
    return {direct ? SectionType::bandPass : SectionType::notch, true, 1.0};
  const bool low = (filter == TidalformFilter::lowShelf) == direct;
  return {low ? SectionType::lowPass : SectionType::highPass, false, low ? 2.0 : 0.5};
}

SectionType dynamicType(TidalformFilter filter) {
  constexpr SectionType kTypes[] = {SectionType::lowShelf, SectionType::peaking, SectionType::highShelf};
  return kTypes[static_cast<int>(filter)];
}

void designControl(const ControlPlan& plan, const TidalformBand& band, double sampleRateHz,
                   StandingCoefficients& first, StandingCoefficients& second) {
  const double hz = band.frequencyCurrent, q = plan.isPeak ? band.peakQCurrent : band.shelfQCurrent;
  first.c = designSection(plan.type, hz, q, 0.0, sampleRateHz);
  second.c =
      designSection(plan.type, hz * plan.secondRatio, plan.isPeak ? 0.5 * q : kEdgeQ, 0.0, sampleRateHz);
}

void designControl(const ControlPlan& plan, const TidalformBandBlock& band, int count, double sampleRateHz,
                   CoefficientBlock& first, CoefficientBlock& second) {
  const double ratio = plan.secondRatio;
  switch (plan.type) {
    case SectionType::lowPass:
      return moveEdgeControl<SectionType::lowPass>(band, ratio, count, sampleRateHz, first, second);
    case SectionType::highPass:
      return moveEdgeControl<SectionType::highPass>(band, ratio, count, sampleRateHz, first, second);
    case SectionType::bandPass: return movePeakControl<SectionType::bandPass>(band, count, first, second);
    default: return movePeakControl<SectionType::notch>(band, count, first, second);
  }
}

void prepareMoving(TidalformFilter filter, TidalformBandBlock& band, int count, double sampleRateHz) {
  double hz[kBlockFrames] = {}, one[kBlockFrames] = {};
  std::copy_n(band.frequency, count, hz);
  moveAngles(hz, count, sampleRateHz, band.sine, band.cosine);
  if (filter != TidalformFilter::peak) return;
  std::fill_n(one, count, 1.0);
  moveQ<SectionType::peaking>(hz, one, count, sampleRateHz, band.peakBend);
}

DynamicAngle designDynamicAngle(TidalformFilter filter, const TidalformBand& band, double sampleRateHz) {
  const double w = angleOf(band.frequencyCurrent, sampleRateHz);
  const double q = filter == TidalformFilter::peak ? band.peakQCurrent : band.shelfQCurrent;
  const auto power = [](double x, double y) { return std::pow(x, y); };
  return {std::sin(w), std::cos(w),
          bentQ(dynamicType(filter), band.frequencyCurrent, q, sampleRateHz, power)};
}

void designDynamic(TidalformFilter filter, const DynamicAngle& angle, const double* gainDb, int from, int to,
                   CoefficientBlock& out) {
  switch (filter) {
    case TidalformFilter::lowShelf:
      return designDynamicStanding<SectionType::lowShelf>(angle, gainDb, from, to, out);
    case TidalformFilter::highShelf:
      return designDynamicStanding<SectionType::highShelf>(angle, gainDb, from, to, out);
    default: return designDynamicStanding<SectionType::peaking>(angle, gainDb, from, to, out);
  }
}

void designDynamic(TidalformFilter filter, const TidalformBandBlock& band, const double* gainDb, int count,
                   double sampleRateHz, CoefficientBlock& out) {
  switch (filter) {
    case TidalformFilter::lowShelf:
      return moveShelf<SectionType::lowShelf>(band, gainDb, count, sampleRateHz, out);
    case TidalformFilter::highShelf:
      return moveShelf<SectionType::highShelf>(band, gainDb, count, sampleRateHz, out);
    default: return movePeak(band, gainDb, count, out);
  }
}

void clearTraces(BiquadHistory& history) {
  constexpr double kTrace = 1e-200;  // -4000 dBFS
  for (double* v : {&history.x0, &history.x1, &history.x2, &history.y0, &history.y1, &history.y2})
    if (std::abs(*v) < kTrace) *v = 0.0;
}

}  // namespace corvane
