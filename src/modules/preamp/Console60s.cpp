#include "modules/preamp/Console60s.h"

#include <cmath>

#include "core/dsp/FastMath.h"
#include "core/dsp/Staggered.h"
#include "modules/preamp/ConsoleTable.h"

namespace corvane::preamp {

namespace {

constexpr long double kExponent = 1.5157165665103982;  // 8 / 16^0.6
constexpr long double kWeight = 1.0533610359548358L;   // 8th root of the exponent
constexpr long double kRisingScale = 1.22 - kExponent / 8.0;
constexpr long double kFallingScale = 1.1 - kExponent / 8.0;
constexpr double kNormalise = 1.062030662245685;  // brings a half-wave of -3 dB behind the second curve back
constexpr double kFastRadians = 4.4427093;        // 2 pi 0.7071
constexpr double kFastSeconds = 0.001;
constexpr double kMeterFactor = 0.10750000178813934;
constexpr double kOutGain = 20.166514627199998;

/// Envelopes of a block that moved, in the order of time, and for each sample which one is in force.
struct Moves {
  double values[2 * kBlockFrames + 3] = {};  ///< first the gains of both lanes before the block
  int slots[kBlockFrames][2];
  int last[2];
  int count;

  void start(double gainA, double gainB) {
    values[0] = gainA, values[1] = gainB;
    last[0] = 0, last[1] = 1;
    count = 2;
  }
  void take(int lane, int i, double envelope, bool moved) {
    values[count] = envelope;
    last[lane] = moved ? count : last[lane];
    count += moved;
    slots[i][lane] = last[lane];
  }
  /// Gains instead of envelopes.
  void replace(const CurveTable& gain) {
    for (int k = 2; k < count; ++k) values[k] = gain(values[k]);
  }
  Pair at(int i) const { return Pair{values[slots[i][0]], values[slots[i][1]]}; }
};

}  // namespace

const CurveTable& risingGain() {
  static const CurveTable table(
      [](long double envelope) {
        const long double power = std::pow(kRisingScale * envelope, kExponent);
        return std::pow(std::atan(power * kWeight) / kWeight, 1.0L / kExponent) / kRisingScale / envelope;
      },
      1.0);
  return table;
}

const CurveTable& fallingGain() {
  static const CurveTable table(
      [](long double envelope) {
        const long double power = std::pow(kFallingScale * envelope, kExponent);
        return std::pow(std::tanh(power * kWeight) / kWeight, 1.0L / kExponent) / kFallingScale / envelope;
      },
      1.0);
  return table;
}

Console60s::Console60s() : rising(risingGain()), falling(fallingGain()) {}

void Console60s::setSampleRate(double hz) {
  fastShare = 1.0 - std::exp(-kFastRadians / (kFastSeconds * hz));
  up = both(kRest);
  for (Half& half : down) half = {};
}

// Both envelopes run through one loop, the second some frames behind the first one's curve. The envelope of
// the negative half-waves stands still half of the time; its curve is worked out behind the loop, where it
// moved.

CORVANE_WIDE_LOOPS void Console60s::run(Pair* samples, double* levels, int frames) {
  const ConsoleRow& console = consoleOf(Colour::console60s);
  const double outGain = kOutGain * console.outTrim, share = fastShare;
  for (int i = 0; i < frames; ++i) {
    const Pair v = console.inTrim * numbersOrZero(samples[i]) * 0.7071;
    levels[i] = largerLane(kMeterFactor * absolute(v));
    samples[i] = 0.125 * v;
  }
  Pair envelope = up, envelopes[kBlockFrames];
  double a = down[0].envelope, b = down[1].envelope;
  Moves moves;
  moves.start(down[0].gain, down[1].gain);
  staggered(
      frames,
      [&](int i) {
        envelope += (larger(samples[i], both(kRest)) - envelope) * share;
        envelopes[i] = envelope;
      },
      [&](int i) {
        samples[i] = Pair{rising(envelopes[i][0]), rising(envelopes[i][1])} * samples[i];
      },
      [&](int i) {
        const double g = samples[i][0], h = samples[i][1];
        a = g < -kRest ? a - (a + g) * share : a;
        b = h < -kRest ? b - (b + h) * share : b;
        moves.take(0, i, a, g < -kRest);
        moves.take(1, i, b, h < -kRest);
      });
  up = envelope;
  down[0].envelope = a, down[1].envelope = b;
  moves.replace(falling);
  down[0].gain = moves.values[moves.last[0]], down[1].gain = moves.values[moves.last[1]];
  for (int i = 0; i < frames; ++i) samples[i] = outGain * (moves.at(i) * samples[i] * kNormalise);
}

}  // namespace corvane::preamp
