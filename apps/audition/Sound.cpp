#include "audition/Sound.h"

#include <ebur128.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <numbers>

#include "corvane/AudioFiles.h"
#include "corvane/Failure.h"

namespace corvane::audition {

namespace {

constexpr double kPi = std::numbers::pi;
constexpr double kSilenceLufs = -70.0;

struct Section {
  double b0, b1, b2, a1, a2;
};

/// Bilinear transform of a second-order Butterworth section; `high` mirrors it.
Section designFlat(double hz, bool high) {
  const double w = 2.0 * kPi * hz / kRateHz, alpha = std::sin(w) / std::numbers::sqrt2, c = std::cos(w);
  const double a0 = 1.0 + alpha, side = high ? 1.0 + c : 1.0 - c;
  return {0.5 * side / a0, (high ? -side : side) / a0, 0.5 * side / a0, -2.0 * c / a0, (1.0 - alpha) / a0};
}

Sound filtered(const Sound& sound, const Section& s) {
  Sound out(sound.size());
  double z1 = 0.0, z2 = 0.0;
  for (std::size_t n = 0; n < sound.size(); ++n) {
    const double x = sound[n], y = s.b0 * x + z1;
    z1 = s.b1 * x - s.a1 * y + z2;
    z2 = s.b2 * x - s.a2 * y;
    out[n] = y;
  }
  return out;
}

struct DestroyMeter {
  void operator()(ebur128_state* state) const { ebur128_destroy(&state); }
};

std::unique_ptr<ebur128_state, DestroyMeter> metered(const Sound& sound, int mode) {
  std::unique_ptr<ebur128_state, DestroyMeter> meter(ebur128_init(1, kRateHz, mode));
  if (!meter || ebur128_add_frames_double(meter.get(), sound.data(), sound.size()) != EBUR128_SUCCESS)
    cli::fail("the loudness meter has no memory");
  return meter;
}

}  // namespace

Sound readSound(const std::filesystem::path& path) {
  cli::AudioReader reader(path);
  const auto channels = static_cast<std::size_t>(reader.channels());
  std::vector<float> interleaved(static_cast<std::size_t>(reader.promisedFrames()) * channels);
  const auto read = static_cast<std::size_t>(reader.read(interleaved.data(), reader.promisedFrames()));
  Sound mono(read, 0.0);
  for (std::size_t n = 0; n < read; ++n)
    for (std::size_t c = 0; c < channels; ++c)
      mono[n] += static_cast<double>(interleaved[n * channels + c]) / static_cast<double>(channels);
  return reader.rateHz() == kRateHz ? mono : resampled(mono, static_cast<double>(reader.rateHz()) / kRateHz);
}

void writeSound(const std::filesystem::path& path, const Sound& sound) {
  const auto length = static_cast<std::int64_t>(sound.size());
  cli::AudioWriter writer(path, cli::OutputFormat::floatWav, kRateHz, 1, length);
  const std::vector<float> samples(sound.begin(), sound.end());
  writer.write(samples.data(), length);
  writer.commit();
}

Sound resampled(const Sound& sound, double speed) {
  constexpr int kSide = 24;  // samples to each side; the window takes what lies outside below -70 dB
  const double cutoff = std::min(1.0, 1.0 / speed);
  Sound out(static_cast<std::size_t>(static_cast<double>(sound.size()) / speed));
  for (std::size_t n = 0; n < out.size(); ++n) {
    const double at = static_cast<double>(n) * speed;
    const auto middle = static_cast<std::ptrdiff_t>(at);
    double sum = 0.0;
    for (std::ptrdiff_t k = std::max<std::ptrdiff_t>(middle - kSide + 1, 0);
         k <= std::min(middle + kSide, std::ssize(sound) - 1); ++k) {
      const double x = static_cast<double>(k) - at, turn = kPi * x * cutoff;
      const double sinc = std::abs(turn) < 1e-9 ? 1.0 : std::sin(turn) / turn;
      sum += sound[static_cast<std::size_t>(k)] * cutoff * sinc * (0.5 + 0.5 * std::cos(kPi * x / kSide));
    }
    out[n] = sum;
  }
  return out;
}

void mix(Sound& into, const Sound& sound, double seconds, double gain) {
  const std::size_t first = frames(seconds);
  for (std::size_t n = 0; n < sound.size() && first + n < into.size(); ++n)
    into[first + n] += gain * sound[n];
}

void scale(Sound& sound, double gain) {
  for (double& x : sound) x *= gain;
}

Sound lowPassed(const Sound& sound, double hz) { return filtered(sound, designFlat(hz, false)); }
Sound highPassed(const Sound& sound, double hz) { return filtered(sound, designFlat(hz, true)); }

Sound roomOf(const Sound& sound, double seconds) {
  Sound room(sound.size(), 0.0);
  for (auto [delaySeconds, gain] : {std::pair{0.011, 0.8}, {0.017, 0.6}, {0.023, 0.5}, {0.031, 0.4}})
    mix(room, sound, delaySeconds, gain);
  // Four combs of lengths without a common divisor, damped above 4 kHz, make the decay.
  Sound tail(sound.size(), 0.0);
  for (const std::size_t length : {1557U, 1617U, 1491U, 1422U}) {
    const double keep = std::pow(10.0, -3.0 * static_cast<double>(length) / (seconds * kRateHz));
    Sound line(length, 0.0);
    double damped = 0.0;
    for (std::size_t n = 0; n < room.size(); ++n) {
      double& slot = line[n % length];
      tail[n] += 0.25 * slot;
      damped += 0.4 * (slot - damped);
      slot = room[n] + keep * damped;
    }
  }
  mix(room, tail, 0.0);
  return lowPassed(room, 9000.0);
}

Sound noise(double seconds, std::uint32_t seed) {
  Sound out(frames(seconds));
  Noise draw(seed);
  for (double& x : out) x = draw();
  return out;
}

double loudness(const Sound& sound) {
  double lufs = kSilenceLufs;
  ebur128_loudness_global(metered(sound, EBUR128_MODE_I).get(), &lufs);
  return std::max(lufs, kSilenceLufs);
}

double truePeakDb(const Sound& sound) {
  double peak = 0.0;
  ebur128_true_peak(metered(sound, EBUR128_MODE_TRUE_PEAK).get(), 0, &peak);
  return 20.0 * std::log10(std::max(peak, 1e-6));
}

Sound levelled(Sound sound) {
  const double gainDb = std::min(kLevelLufs - loudness(sound), kHeadroomDb - truePeakDb(sound));
  scale(sound, fromDb(gainDb));
  return sound;
}

}  // namespace corvane::audition
