#pragma once

#include "modules/preamp/ChannelPair.h"
#include "modules/preamp/ConsoleTable.h"

namespace corvane::preamp {

/// Parabolic clipper of the 70s and 80s: a soft knee that is full at twice its start, then a second, lopsided
/// curve that hangs on what lies below 3 kHz, and a high-pass at 2 Hz that takes the offset out again.
///
///   u = 2 P(v / 2),  P(t) = t - t |t| / 4, |t| <= 2
///   c += (offset + u - c) k,  w = 8 sqrt 2 (u - c |c| / 4)
///
/// Two channels, nothing allocated. [render]
class ConsoleParabola {
 public:
  /// Trim of the offset of each channel, from the unit's parts.
  explicit ConsoleParabola(Pair trims) : offsetTrim(trims) {}

  /// Hz; all state to rest.
  void setSampleRate(double hz);
  void reset();

  /// To a console of the 70s or the 80s; state stays.
  void configure(Colour colour);

  /// In place; writes the drive of each sample to `levels`, for the meter.
  void run(Pair* samples, double* levels, int frames);

  /// The stage over a block step by step, for a loop that runs other stages beside it.
  class Steps {
   public:
    explicit Steps(const ConsoleParabola& stage)
        : filter(stage.highPass),
          clip(stage.clipState),
          bias(stage.offset),
          share(stage.clipShare),
          in(stage.inTrim),
          meter(stage.meterFactor),
          lift(stage.lift),
          out(stage.outTrim) {}

    // `V`: both channels of one frame or of two.

    /// The first curve, and what the sample drives it with.
    template <typename V>
    [[gnu::always_inline]] V bend(V sample, V& magnitude) const {
      V v = in * numbersOrZero(sample) * 0.7071 * 0.7071 * 0.25;
      v = smaller(larger(v, V{} - 4.0), V{} + 4.0);
      magnitude = meter * absolute(v);
      const V t = v / 2.0;
      return 2.0 * (t - timesAbsolute(t) / 4.0);
    }
    /// The way of the second curve's state on from `u`, not flushed.
    Pair moved(Pair u) const { return clip + (bias + u - clip) * share; }
    /// The second curve, behind the new state.
    template <typename V>
    [[gnu::always_inline]] static V lopsided(V u, V newClip) {
      return 8.0 * 1.4142 * (u - timesAbsolute(newClip) / 4.0);
    }
    /// Level behind the high-pass `y`.
    template <typename V>
    [[gnu::always_inline]] V output(V y) const {
      return y * 1.4142 * lift * out;
    }

    static constexpr double kClipFlush = 1e-16;
    SectionPair filter;
    Pair clip;

   private:
    template <typename V>
    [[gnu::always_inline]] static V timesAbsolute(V v) {
      return v * absolute(v);
    }

    Pair bias;
    double share, in, meter, lift, out;
  };
  Steps steps() const { return Steps(*this); }
  void store(const Steps& steps) { highPass = steps.filter, clipState = steps.clip; }

 private:
  SectionPair highPass = alike();
  Pair offsetTrim, offset{};
  Pair clipState{};
  double clipShare = 0.0;  ///< per sample, 3 kHz
  double inTrim = 0.0, meterFactor = 0.0, lift = 1.0, outTrim = 0.0;
};

}  // namespace corvane::preamp
