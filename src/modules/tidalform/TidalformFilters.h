#pragma once

#include <cmath>

#include "core/dsp/Biquad.h"

namespace corvane {

/// What the three sections are designed from, smoothed. Hz and Q.
struct TidalformBand {
  double frequencyCurrent = 1000.0;
  double peakQCurrent = 1.0;
  double shelfQCurrent = 0.7;
};

enum class TidalformFilter { lowShelf = 0, peak = 1, highShelf = 2 };
enum class TidalformControl { off = 0, direct = 1, complement = 2 };

/// The same over a block, one sample each, and what several sections take from it.
struct TidalformBandBlock {
  double frequency[kBlockFrames], peakQ[kBlockFrames], shelfQ[kBlockFrames];
  double sine[kBlockFrames], cosine[kBlockFrames];  ///< of the frequency's angle
  double peakBend[kBlockFrames];                    ///< factor of Q in every section of the peak
};
/// Fills sine, cosine and, for the peak, its bend for samples 0 .. count - 1.
void prepareMoving(TidalformFilter filter, TidalformBandBlock& band, int count, double sampleRateHz);

/// Coefficients that change from sample to sample.
struct CoefficientBlock {
  double b0[kBlockFrames], b1[kBlockFrames], b2[kBlockFrames], a1[kBlockFrames], a2[kBlockFrames];
  BiquadCoefficients at(int i) const { return {1.0, a1[i], a2[i], b0[i], b1[i], b2[i]}; }
  void set(int i, const BiquadCoefficients& c) {
    b0[i] = c.b0, b1[i] = c.b1, b2[i] = c.b2, a1[i] = c.a1, a2[i] = c.a2;
  }
};

/// Coefficients that stand.
struct StandingCoefficients {
  BiquadCoefficients c;
  const BiquadCoefficients& at(int) const { return c; }
};

/// The control filter: two sections in series in the band of the dynamic filter, or in what it leaves.
struct ControlPlan {
  SectionType type = SectionType::none;
  bool isPeak = false;       ///< whether the peak's Q counts, in both sections
  double secondRatio = 1.0;  ///< frequency of the second section against the first
};
ControlPlan controlPlan(TidalformFilter filter, TidalformControl control);
SectionType dynamicType(TidalformFilter filter);

/// Designs of both control sections for a standing band, precise.
void designControl(const ControlPlan& plan, const TidalformBand& band, double sampleRateHz,
                   StandingCoefficients& first, StandingCoefficients& second);
/// For a moving band that is prepared, samples 0 .. count - 1; sine, cosine and Q are within 1e-15 of the
/// precise ones.
void designControl(const ControlPlan& plan, const TidalformBandBlock& band, int count, double sampleRateHz,
                   CoefficientBlock& first, CoefficientBlock& second);

/// What a gain is put onto: angle and Q of the dynamic section.
struct DynamicAngle {
  double sine = 0.0, cosine = 1.0, bentQ = 1.0;
};
/// For a standing band, precise.
DynamicAngle designDynamicAngle(TidalformFilter filter, const TidalformBand& band, double sampleRateHz);
/// Dynamic section for gains in dB on a standing band, samples from .. to - 1.
void designDynamic(TidalformFilter filter, const DynamicAngle& angle, const double* gainDb, int from, int to,
                   CoefficientBlock& out);
/// For a moving band that is prepared, samples 0 .. count - 1.
void designDynamic(TidalformFilter filter, const TidalformBandBlock& band, const double* gainDb, int count,
                   double sampleRateHz, CoefficientBlock& out);

/// The biquad as it runs here: no glide and no flush, since its coefficients are new with every sample. An
/// input that is not a number counts as 0; a result that is not one becomes 0 and clears the outputs.
inline double processDirect(double x, const BiquadCoefficients& c, BiquadHistory& h) {
  const double x0 = std::isnan(x) ? 0.0 : x;
  const double y0 = biquadSum(x0, c, h);
  pushHistory(x0, y0, h);
  if (!std::isnan(y0)) return y0;
  h.y0 = h.y1 = h.y2 = 0.0;
  return 0.0;
}

/// Samples from .. to - 1 of `x` through one section. Equal to `processDirect` of each.
template <typename Coefficients>
void runDirect(const Coefficients& c, const double* x, double* y, int from, int to, BiquadHistory& history) {
  BiquadHistory h = history;
  for (int i = from; i < to; ++i) {
    y[i] = biquadSum(x[i], c.at(i), h);
    pushHistory(x[i], y[i], h);
  }
  if (std::isnan(h.y0)) {  // it stays once it is in: the guards would have acted, so run again with them
    h = history;
    for (int i = from; i < to; ++i) y[i] = processDirect(x[i], c.at(i), h);
  }
  history = h;
}

/// The same through two sections in series.
template <typename Coefficients>
void runDirect(const Coefficients& first, const Coefficients& second, const double* x, double* y, int from,
               int to, BiquadHistory& history1, BiquadHistory& history2) {
  BiquadHistory h = history1, k = history2;
  for (int i = from; i < to; ++i) {
    const double between = biquadSum(x[i], first.at(i), h);
    pushHistory(x[i], between, h);
    y[i] = biquadSum(between, second.at(i), k);
    pushHistory(between, y[i], k);
  }
  if (std::isnan(k.y0)) {
    h = history1, k = history2;
    for (int i = from; i < to; ++i)
      y[i] = processDirect(processDirect(x[i], first.at(i), h), second.at(i), k);
  }
  history1 = h, history2 = k;
}

/// Takes what is far below any signal out of a history, once a block: without a flush in the section a decay
/// would end in denormals, which cost a hundred times an addition.
void clearTraces(BiquadHistory& history);

}  // namespace corvane
