#include "modules/tidalform/TidalformFilters.h"

#include <numbers>

#include "core/dsp/FastMath.h"
#include "core/dsp/SectionShape.h"

namespace corvane {

namespace {

constexpr double kEdgeQ = 0.5;  // second section of a control filter at an edge of the band

double angleOf(double hz, double sampleRateHz) {
  return 2.0 * std::numbers::pi * designedHz(hz, sampleRateHz) / sampleRateHz;
}

double fastPower(double x, double y) { return fast::pow(x, y); }

/// A section of a moving band; every call of the same arguments gives the same bits.
template <SectionType kType>
inline BiquadCoefficients designMoving(double hz, double q, double A, double sampleRateHz) {
  const fast::SinCos angle = fast::sinCos(angleOf(hz, sampleRateHz));
  return shapeSection(kType, angle.sin, angle.cos, bentQ(kType, hz, q, sampleRateHz, fastPower), A);
}

inline double amplitudeOf(double gainDb) { return fast::pow10(gainDb / 40.0); }

template <SectionType kType>
void designControlMoving(const ControlPlan& plan, const TidalformBandBlock& band, int count,
                         double sampleRateHz, CoefficientBlock& first, CoefficientBlock& second) {
  const double* q = plan.isPeak ? band.peakQ : band.shelfQ;
  for (int i = 0; i < count; ++i)
    first.set(i, designMoving<kType>(band.frequency[i], q[i], 1.0, sampleRateHz));
  if (plan.isPeak)
    for (int i = 0; i < count; ++i)
      second.set(i, designMoving<kType>(band.frequency[i], 0.5 * q[i], 1.0, sampleRateHz));
  else
    for (int i = 0; i < count; ++i)
      second.set(i, designMoving<kType>(band.frequency[i] * plan.secondRatio, kEdgeQ, 1.0, sampleRateHz));
}

template <SectionType kType>
void designDynamicMoving(const double* hz, const double* q, const double* gainDb, int count,
                         double sampleRateHz, CoefficientBlock& out) {
  for (int i = 0; i < count; ++i)
    out.set(i, designMoving<kType>(hz[i], q[i], amplitudeOf(gainDb[i]), sampleRateHz));
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
  switch (plan.type) {
    case SectionType::lowPass:
      return designControlMoving<SectionType::lowPass>(plan, band, count, sampleRateHz, first, second);
    case SectionType::highPass:
      return designControlMoving<SectionType::highPass>(plan, band, count, sampleRateHz, first, second);
    case SectionType::bandPass:
      return designControlMoving<SectionType::bandPass>(plan, band, count, sampleRateHz, first, second);
    default: return designControlMoving<SectionType::notch>(plan, band, count, sampleRateHz, first, second);
  }
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
  const double* hz = band.frequency;
  switch (filter) {
    case TidalformFilter::lowShelf:
      return designDynamicMoving<SectionType::lowShelf>(hz, band.shelfQ, gainDb, count, sampleRateHz, out);
    case TidalformFilter::highShelf:
      return designDynamicMoving<SectionType::highShelf>(hz, band.shelfQ, gainDb, count, sampleRateHz, out);
    default:
      return designDynamicMoving<SectionType::peaking>(hz, band.peakQ, gainDb, count, sampleRateHz, out);
  }
}

void clearTraces(BiquadHistory& history) {
  constexpr double kTrace = 1e-200;  // -4000 dBFS
  for (double* v : {&history.x0, &history.x1, &history.x2, &history.y0, &history.y1, &history.y2})
    if (std::abs(*v) < kTrace) *v = 0.0;
}

}  // namespace corvane
