#pragma once

#include <type_traits>

#include "core/dsp/Pair.h"
#include "core/dsp/Staggered.h"
#include "modules/eq/EqSection.h"

namespace corvane::eq {

/// Dry and wet of a band that is being switched. `V`: a double or a pack of them.
template <typename V>
[[gnu::always_inline]] inline V crossfade(V dry, V wet, V fade) {
  return dry + (wet - dry) * fade;
}

/// Where the analog character of a section sits.
enum class Character { none, withinRecursion, behindRecursion };

/// Where a section's flush acts: in the recursion, or, as long as no output is so small that the flush would
/// change it, nowhere, so that a recursion waits for two additions less.
enum class FlushForm { bare, within };

template <typename V>
inline constexpr int kLanes = sizeof(V) / sizeof(double);

/// `first`, and behind it the lanes of `v` but the last: what the sections of a series hear next.
[[gnu::always_inline]] inline Pair shifted(double first, Pair v) { return Pair{first, v[0]}; }
[[gnu::always_inline]] inline Quad shifted(double first, Quad v) {
  return __builtin_shufflevector(Quad{first, first, first, first}, v, 0, 4, 5, 6);
}

/// Sections at rest, side by side in the lanes of a `V`, a Pair or a Quad: the settled form of `EqSection`,
/// with the same arithmetic and so the same bits, but without its guards against not-a-number. Recursion and
/// what stands behind it are apart, since they can work on different frames. All is inlined, so that it runs
/// in the instructions of its caller.
template <typename V>
struct EqSections {
  using Members = EqSection* const (&)[kLanes<V>];
  using Mask = decltype(V{} < V{});

  /// Member k goes to lane k. None may be gliding.
  explicit EqSections(Members members) {
    for (int k = 0; k < kLanes<V>; ++k) take(k, *members[k]);
  }

  /// One sample of each through the recursion. A lane that is not in `where` stands still.
  template <Character kCharacter, FlushForm kFlush, typename Where>
  [[gnu::always_inline]] V recursion(V x, Where where) {
    V y = biquadSum(x, *this, *this);
    if constexpr (kCharacter == Character::withinRecursion) y = softened(y, feedbackDrive);
    if constexpr (kFlush == FlushForm::within)
      y = flushed(y, kFilterFlush);
    else
      small |= where(absolute(y) < kFilterFlushMatters, Mask{});
    x2 = where(x1, x2), x1 = where(x, x1), y2 = where(y1, y2), y1 = where(y, y1);
    return y;
  }
  /// One sample of each, as it came from the recursion, through what stands behind it.
  template <Character kCharacter, typename Where>
  [[gnu::always_inline]] V behind(V y, Where where) {
    if constexpr (kCharacter != Character::behindRecursion) return y;
    const Track<V> before = track;
    y = tracked(y, trackCoefficients, track);
    track = {where(track.trackLow, before.trackLow), where(track.trackBand, before.trackBand)};
    return y;
  }

  /// Whether the flush has something to do from the start.
  bool isSmall() const { return any(absolute(y1) < kFilterFlushMatters); }
  bool isPoisoned() const { return any(y1 != y1); }
  /// Whether guards and, if it was left out, the flush would have changed nothing.
  bool isExact() const { return !isPoisoned() && !any(small); }

  /// Hands the memory back, behind one sample or more.
  void store(Members members) const {
    for (int k = 0; k < kLanes<V>; ++k) {
      members[k]->filter.current = members[k]->filter.target;
      members[k]->filter.history = {x1[k], x1[k], x2[k], y1[k], y1[k], y2[k]};
      members[k]->track = {track.trackLow[k], track.trackBand[k]};
    }
  }

  V b0, b1, b2, a1, a2;
  V x1, x2, y1, y2;
  V feedbackDrive;
  TrackCoefficients<V> trackCoefficients;
  Track<V> track;
  Mask small{};  ///< outputs that a flush could have changed, where it was left out

 private:
  void take(int k, const EqSection& section) {
    const BiquadCoefficients& c = section.filter.target;
    const BiquadHistory& h = section.filter.history;
    b0[k] = c.b0, b1[k] = c.b1, b2[k] = c.b2, a1[k] = c.a1, a2[k] = c.a2;
    x1[k] = h.x1, x2[k] = h.x2, y1[k] = h.y1, y2[k] = h.y2;
    feedbackDrive[k] = section.feedbackDrive;
    const TrackCoefficients<double>& t = section.trackCoefficients;
    trackCoefficients.trackLowCoeff[k] = t.trackLowCoeff,
    trackCoefficients.trackBandCoeff[k] = t.trackBandCoeff;
    trackCoefficients.drive[k] = t.drive;
    track.trackLow[k] = section.track.trackLow, track.trackBand[k] = section.track.trackBand;
  }
  [[gnu::always_inline]] static bool any(Mask mask) {
    bool found = false;
    for (int k = 0; k < kLanes<V>; ++k) found = found || mask[k] != 0;
    return found;
  }
};

/// `EqSections`' lanes that have a sample: all of them, or those of a mask.
struct Everywhere {
  template <typename V>
  [[gnu::always_inline]] V operator()(V now, V) const {
    return now;
  }
};
template <typename Mask>
struct WhereSet {
  Mask mask;
  template <typename V>
  [[gnu::always_inline]] V operator()(V now, V before) const {
    return mask ? now : before;
  }
};

/// Two sections in series for each lane, and the lanes in series, with a crossfade around each section.
///
/// Lane 0 holds the first two sections, `sectionsA` the first of them, and works on the newest frame; each
/// further lane works `kLag` frames behind the one before it, on what that made then. So no recursion waits
/// for another. At either end of the block the lanes that have no frame stand still. `take`: void (int frame,
/// double sample).
template <Character kCharacter, FlushForm kFlush, typename V, typename Take>
[[gnu::always_inline]] inline void runSeries(EqSections<V>& sectionsA, EqSections<V>& sectionsB, V fadeA,
                                             V fadeB, const double* input, int frames, Take take) {
  constexpr bool kTracks = kCharacter == Character::behindRecursion;
  // What a lane makes is there for the next one as soon as the last stage has run, in the step before. A
  // longer lag would let the lanes wait less, and stand still longer at both ends.
  constexpr int kLag = kTracks ? 5 : 3;
  constexpr int kLast = kLanes<V> - 1, kLastLag = kLast * kLag, kSteps = kBlockFrames + kLastLag;
  EqSections<V> a = sectionsA, b = sectionsB;
  V lags;
  for (int k = 0; k <= kLast; ++k) lags[k] = k * kLag;
  V inA[kSteps], fromA[kSteps], inB[kSteps], fromB[kSteps], out[kSteps];
  const auto where = [&]<bool kInside>(int i, std::bool_constant<kInside>) {
    if constexpr (kInside) {
      return Everywhere{};
    } else {
      const V frame = static_cast<double>(i) - lags;
      return WhereSet<typename EqSections<V>::Mask>{(frame >= 0.0) & (frame < static_cast<double>(frames))};
    }
  };
  const auto recursionA = [&](int i, auto inside) {
    const double newest = inside || i < frames ? input[i] : 0.0;
    inA[i] = shifted(newest, inside || i >= kLag ? out[i - kLag] : V{});
    fromA[i] = a.template recursion<kCharacter, kFlush>(inA[i], where(i, inside));
  };
  const auto behindA = [&](int i, auto inside) {
    inB[i] = crossfade(inA[i], a.template behind<kCharacter>(fromA[i], where(i, inside)), fadeA);
  };
  const auto recursionB = [&](int i, auto inside) {
    fromB[i] = b.template recursion<kCharacter, kFlush>(inB[i], where(i, inside));
  };
  const auto behindB = [&](int i, auto inside) {
    out[i] = crossfade(inB[i], b.template behind<kCharacter>(fromB[i], where(i, inside)), fadeB);
  };
  const auto finish = [&](int i, auto inside) {
    if (inside || i >= kLastLag) take(i - kLastLag, out[i][kLast]);
  };
  if constexpr (kTracks)
    staggered(frames + kLastLag, kLastLag, frames, recursionA, behindA, recursionB, behindB, finish);
  else
    staggered(
        frames + kLastLag, kLastLag, frames,
        [&](int i, auto inside) { recursionA(i, inside), behindA(i, inside); },
        [&](int i, auto inside) { recursionB(i, inside), behindB(i, inside); }, finish);
  sectionsA = a, sectionsB = b;
}

}  // namespace corvane::eq
