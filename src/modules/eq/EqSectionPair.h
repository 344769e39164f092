#pragma once

#include "core/dsp/SectionPair.h"
#include "core/dsp/Staggered.h"
#include "modules/eq/EqSection.h"

namespace corvane::eq {

/// Dry and wet of a band that is being switched. `V`: a double or a pack of them.
template <typename V>
inline V crossfade(V dry, V wet, V fade) {
  return dry + (wet - dry) * fade;
}

/// Where the analog character of a section sits.
enum class Character { none, withinRecursion, behindRecursion };

/// Where a section's flush acts: in the recursion, or, as long as no output is so small that the flush would
/// change it, nowhere, so that a recursion waits for two additions less.
enum class FlushForm { bare, within };

/// Two sections at rest, side by side in the lanes of a Pair: the settled form of `EqSection`, with the same
/// arithmetic and so the same bits, but without its guards against not-a-number. Recursion and what stands
/// behind it are apart, since they can work on different frames.
struct EqSectionPair {
  /// `first` goes to lane 0. Neither may be gliding.
  EqSectionPair(const EqSection& first, const EqSection& second);

  /// One sample of each through the recursion.
  template <Character kCharacter, FlushForm kFlush>
  Pair recursion(Pair x);
  /// One sample of each, as it came from the recursion, through what stands behind it.
  template <Character kCharacter>
  Pair behind(Pair y);

  /// Whether the flush has something to do from the start.
  bool isSmall() const {
    const PairMask now = absolute(filter.y1) < kFilterFlushMatters;
    return (now[0] | now[1]) != 0;
  }
  /// Whether guards and, if it was left out, the flush would have changed nothing.
  bool isExact() const { return !filter.isPoisoned() && (small[0] | small[1]) == 0; }

  /// Hands the memory back, behind one sample or more.
  void store(EqSection& first, EqSection& second) const;

  SectionPair filter;
  Pair feedbackDrive;
  TrackCoefficients<Pair> trackCoefficients;
  Track<Pair> track;
  PairMask small{};  ///< outputs that a flush could have changed, where it was left out
};

inline EqSectionPair::EqSectionPair(const EqSection& first, const EqSection& second)
    : filter(first.filter.target, first.filter.history, second.filter.target, second.filter.history),
      feedbackDrive{first.feedbackDrive, second.feedbackDrive} {
  const TrackCoefficients<double>&c = first.trackCoefficients, &d = second.trackCoefficients;
  trackCoefficients = {Pair{c.trackLowCoeff, d.trackLowCoeff}, Pair{c.trackBandCoeff, d.trackBandCoeff},
                       Pair{c.drive, d.drive}};
  track = {Pair{first.track.trackLow, second.track.trackLow},
           Pair{first.track.trackBand, second.track.trackBand}};
}

inline void EqSectionPair::store(EqSection& first, EqSection& second) const {
  EqSection* sections[] = {&first, &second};
  for (int lane = 0; lane < 2; ++lane) {
    sections[lane]->filter.current = sections[lane]->filter.target;
    sections[lane]->filter.history = filter.history(lane);
    sections[lane]->track = {track.trackLow[lane], track.trackBand[lane]};
  }
}

template <Character kCharacter, FlushForm kFlush>
inline Pair EqSectionPair::recursion(Pair x) {
  Pair y = biquadSum(x, filter, filter);
  if constexpr (kCharacter == Character::withinRecursion) y = softened(y, feedbackDrive);
  if constexpr (kFlush == FlushForm::within)
    y = flushed(y, kFilterFlush);
  else
    small |= absolute(y) < kFilterFlushMatters;
  filter.push(x, y);
  return y;
}

template <Character kCharacter>
inline Pair EqSectionPair::behind(Pair y) {
  if constexpr (kCharacter == Character::behindRecursion) return tracked(y, trackCoefficients, track);
  return y;
}

/// The lane of `to` that is named, from `from`.
inline void takeLane(int lane, SectionPair& to, const SectionPair& from) {
  to.x1[lane] = from.x1[lane], to.x2[lane] = from.x2[lane];
  to.y1[lane] = from.y1[lane], to.y2[lane] = from.y2[lane];
}
inline void takeLane(int lane, Track<Pair>& to, const Track<Pair>& from) {
  to.trackLow[lane] = from.trackLow[lane], to.trackBand[lane] = from.trackBand[lane];
}

/// Four sections in series, with a crossfade around each.
///
/// Lane 0 of both pairs holds the first and second section and works on the newest frame; lane 1 holds the
/// third and fourth and works `kLag` frames behind, on what lane 0 made then. So no recursion waits for
/// another. At either end of the block one lane has no frame: what it does there is undone. `take`: void (int
/// frame, double sample).
template <Character kCharacter, FlushForm kFlush, typename Take>
inline void runFour(EqSectionPair& pairA, EqSectionPair& pairB, Pair fadeA, Pair fadeB, const double* input,
                    int frames, Take take) {
  constexpr bool kTracks = kCharacter == Character::behindRecursion;
  // More than the stages below, and long enough that two sections behind one another take no longer than as
  // many steps of one recursion.
  constexpr int kLag = kTracks ? 6 : 4;
  constexpr int kSteps = kBlockFrames + kLag;
  EqSectionPair a = pairA, b = pairB;
  const EqSectionPair startA = a, startB = b;
  EqSectionPair endA = a, endB = b;
  Pair inA[kSteps], fromA[kSteps], inB[kSteps], fromB[kSteps], out[kSteps];
  const auto atEdge = [frames](int i, auto& now, const auto& start, auto& end) {
    if (i == frames) end = now;
    if (i == kLag) takeLane(1, now, start);
  };
  const auto recursionA = [&](int i) {
    atEdge(i, a.filter, startA.filter, endA.filter);
    inA[i] = Pair{i < frames ? input[i] : 0.0, i < kLag ? 0.0 : out[i - kLag][0]};
    fromA[i] = a.template recursion<kCharacter, kFlush>(inA[i]);
  };
  const auto behindA = [&](int i) {
    if constexpr (kTracks) atEdge(i, a.track, startA.track, endA.track);
    inB[i] = crossfade(inA[i], a.template behind<kCharacter>(fromA[i]), fadeA);
  };
  const auto recursionB = [&](int i) {
    atEdge(i, b.filter, startB.filter, endB.filter);
    fromB[i] = b.template recursion<kCharacter, kFlush>(inB[i]);
  };
  const auto behindB = [&](int i) {
    if constexpr (kTracks) atEdge(i, b.track, startB.track, endB.track);
    out[i] = crossfade(inB[i], b.template behind<kCharacter>(fromB[i]), fadeB);
  };
  const auto finish = [&](int i) {
    if (i >= kLag) take(i - kLag, out[i][1]);
  };
  if constexpr (kTracks)
    staggered(frames + kLag, recursionA, behindA, recursionB, behindB, finish);
  else
    staggered(
        frames + kLag, [&](int i) { recursionA(i), behindA(i); }, [&](int i) { recursionB(i), behindB(i); },
        finish);
  takeLane(0, a.filter, endA.filter), takeLane(0, a.track, endA.track);
  takeLane(0, b.filter, endB.filter), takeLane(0, b.track, endB.track);
  pairA = a, pairB = b;
}

}  // namespace corvane::eq
