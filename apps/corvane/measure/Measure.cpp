#include "corvane/measure/Measure.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <numbers>

#include "corvane/Interrupt.h"

namespace corvane::cli {

namespace {

using Complex = std::complex<double>;

constexpr double kTurn = 2.0 * std::numbers::pi;
constexpr int kBlockFrames = 64;  // as small as the strip's own
constexpr double kNothingDb = -200.0;

double gainOf(double db) { return std::pow(10.0, db / 20.0); }
double dbOf(double gain) { return gain > 1e-10 ? 20.0 * std::log10(gain) : kNothingDb; }

std::vector<float> played(StripRunner& strip, const std::vector<float>& input) {
  std::vector<float> output(input.size());
  for (std::size_t at = 0; at < input.size(); at += kBlockFrames) {
    stopIfInterrupted();
    const auto frames = static_cast<int>(std::min<std::size_t>(kBlockFrames, input.size() - at));
    strip.processBlock(&input[at], nullptr, &output[at], frames, false);
  }
  return output;
}

/// A tone that goes on from call to call. Phases are counted from the first sample, so nothing drifts.
class Tone {
 public:
  Tone(double rate, double toneHz) : perSample(kTurn * toneHz / rate) {}
  std::vector<float> next(std::size_t frames, double levelDb) {
    std::vector<float> samples(frames);
    for (float& sample : samples)
      sample = static_cast<float>(gainOf(levelDb) * std::sin(perSample * static_cast<double>(count++)));
    return samples;
  }

 private:
  const double perSample;
  std::int64_t count = 0;
};

/// Amplitude and phase at `cyclesPerSample`, over all samples alike.
Complex binOf(std::span<const float> samples, double cyclesPerSample) {
  const Complex step = std::polar(1.0, -kTurn * cyclesPerSample);
  Complex turn = 1.0, sum = 0.0;
  for (const float sample : samples) {
    sum += static_cast<double>(sample) * turn;
    turn *= step;
  }
  return 2.0 * sum / static_cast<double>(samples.size());
}

// ---- response

// The second harmonic passes a frequency 0.7 s before the tone does: outside the window.
constexpr double kSweepSeconds = 8.0, kSweepLowestHz = 8.0, kSweepHighestShare = 0.49;
constexpr double kWindowSeconds = 0.9;  // a raised cosine round the moment of passing
constexpr double kFadeSeconds = 0.05;
constexpr double kHighestShare = 0.45;  // of the rate
constexpr int kPointsPerOctave = 48;

/// amplitude sin(phase), whose frequency rises by equal ratios in equal times.
struct Sweep {
  explicit Sweep(double rate)
      : rateHz(rate), octavesTime(kSweepSeconds / std::log(rate * kSweepHighestShare / kSweepLowestHz)) {}
  double secondsAt(double hz) const { return octavesTime * std::log(hz / kSweepLowestHz); }
  std::vector<float> samples(double levelDb) const {
    std::vector<float> made(static_cast<std::size_t>((kSweepSeconds + kWindowSeconds) * rateHz));
    for (std::size_t n = 0; n < made.size(); ++n) {
      const double seconds = static_cast<double>(n) / rateHz;
      if (seconds >= kSweepSeconds) break;  // silence, in which the end rings out
      const double phase = kTurn * kSweepLowestHz * octavesTime * std::expm1(seconds / octavesTime);
      const double fade = std::min({1.0, seconds / kFadeSeconds, (kSweepSeconds - seconds) / kFadeSeconds});
      made[n] = static_cast<float>(gainOf(levelDb) * fade * std::sin(phase));
    }
    return made;
  }

  double rateHz;
  double octavesTime;  ///< seconds in which the frequency grows by e
};

/// Spectrum at one frequency under the window round `centre`, in seconds.
Complex windowedBin(const std::vector<float>& samples, double rateHz, double centre, double hz) {
  const double half = kWindowSeconds * 0.5 * rateHz, middle = centre * rateHz;
  const auto first = static_cast<std::size_t>(std::max(std::ceil(middle - half), 0.0));
  const auto end = std::min(static_cast<std::size_t>(middle + half), samples.size());
  const Complex step = std::polar(1.0, -kTurn * hz / rateHz),
                windowStep = std::polar(1.0, std::numbers::pi / half);
  Complex turn = 1.0,
          window = std::polar(1.0, std::numbers::pi * (static_cast<double>(first) - middle) / half),
          sum = 0.0;
  for (std::size_t n = first; n < end; ++n) {
    sum += (0.5 + 0.5 * window.real()) * static_cast<double>(samples[n]) * turn;
    turn *= step;
    window *= windowStep;
  }
  return sum;
}

// ---- dynamics

constexpr double kWindowsPerSecond = 20.0;  // a tone has whole periods in each: no leak from harmonics
constexpr int kFewestWindows = 4, kMostWindows = 60;
constexpr double kAtRestDb = 0.002;  // from one window to the next

std::size_t windowFrames(double rateHz) {
  return static_cast<std::size_t>(std::lround(rateHz / kWindowsPerSecond));
}

// ---- burst

constexpr double kBurstLeadMs = 100.0, kBurstTailMs = 600.0, kBurstSettleMs = 1500.0;
constexpr double kRingingMs = 6.0;  // behind the step down, while the loud tone still sounds in the filters

}  // namespace

std::vector<ResponsePoint> measureResponse(StripRunner& strip, double rateHz, double levelDb) {
  const Sweep sweep(rateHz);
  const std::vector<float> input = sweep.samples(levelDb), output = played(strip, input);
  std::vector<ResponsePoint> points;
  const double highestHz = std::min(kHighestShownHz, rateHz * kHighestShare);
  const int steps = static_cast<int>(std::ceil(std::log2(highestHz / kLowestShownHz) * kPointsPerOctave));
  for (int k = 0; k <= steps; ++k) {
    const double hz = kLowestShownHz * std::pow(highestHz / kLowestShownHz, static_cast<double>(k) / steps);
    const double centre = sweep.secondsAt(hz);
    const Complex ratio = windowedBin(output, rateHz, centre, hz) / windowedBin(input, rateHz, centre, hz);
    points.push_back({hz, dbOf(std::abs(ratio)), std::arg(ratio) * 360.0 / kTurn});
  }
  return points;
}

double measuredToneHz(double rateHz, double toneHz) {
  const auto frames = static_cast<double>(windowFrames(rateHz));
  return std::max(std::round(toneHz * frames / rateHz), 1.0) * rateHz / frames;
}

std::vector<DynamicsPoint> measureDynamics(StripRunner& strip, double rateHz, double toneHz) {
  const double hz = measuredToneHz(rateHz, toneHz);
  Tone tone(rateHz, hz);
  std::vector<DynamicsPoint> points;
  for (double inputDb = kQuietestDb; inputDb <= kLoudestDb; inputDb += 1.0) {
    double outputDb = kNothingDb;
    for (int window = 0; window < kMostWindows; ++window) {
      const auto output = played(strip, tone.next(windowFrames(rateHz), inputDb));
      const double now = dbOf(std::abs(binOf(output, hz / rateHz)));
      const bool atRest = window >= kFewestWindows && std::abs(now - outputDb) < kAtRestDb;
      outputDb = now;
      if (atRest) break;
    }
    points.push_back({inputDb, outputDb});
  }
  return points;
}

std::vector<GainPoint> measureBurst(StripRunner& strip, double rateHz, double toneHz) {
  // a point each period: as fine as the tone can tell
  const auto period = static_cast<std::size_t>(std::max(std::lround(rateHz / toneHz), 8L));
  const double hz = rateHz / static_cast<double>(period), periodMs = 1000.0 / hz;
  Tone tone(rateHz, hz);
  const auto periods = [&](double milliseconds) { return std::lround(milliseconds / periodMs); };
  std::vector<GainPoint> points;
  const long settle = periods(kBurstSettleMs), lead = periods(kBurstLeadMs), burst = periods(kBurstMs),
             tail = periods(kBurstTailMs);
  for (long k = -settle; k < burst + tail; ++k) {
    const double inputDb = k >= 0 && k < burst ? kBurstLoudDb : kBurstQuietDb;
    const auto input = tone.next(period, inputDb);
    const auto output = played(strip, input);
    const double change = dbOf(std::abs(binOf(output, hz / rateHz))) - inputDb;
    const bool ringing = k >= burst && k < burst + periods(kRingingMs);
    if (k >= -lead && !ringing) points.push_back({static_cast<double>(k) * periodMs, inputDb, change});
  }
  return points;
}

std::vector<Harmonic> measureHarmonics(StripRunner& strip, double rateHz, double toneHz, double levelDb) {
  const auto frames = static_cast<std::size_t>(std::lround(rateHz));
  const double hz = std::max(std::round(toneHz * static_cast<double>(frames) / rateHz), 1.0) * rateHz /
                    static_cast<double>(frames);
  Tone tone(rateHz, hz);
  played(strip, tone.next(frames, levelDb));
  const auto output = played(strip, tone.next(frames, levelDb));
  std::vector<Harmonic> harmonics;
  for (int order = 1; order <= kHarmonics && order * hz < rateHz / 2.0; ++order)
    harmonics.push_back({order, order * hz, dbOf(std::abs(binOf(output, order * hz / rateHz)))});
  return harmonics;
}

double totalDistortion(std::span<const Harmonic> harmonics) {
  double power = 0.0;
  for (const Harmonic& harmonic : harmonics.subspan(1))
    power += std::pow(10.0, (harmonic.levelDb - harmonics.front().levelDb) / 10.0);
  return std::sqrt(power);
}

}  // namespace corvane::cli
