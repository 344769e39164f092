#pragma once

#include <cmath>
#include <cstdint>
#include <filesystem>
#include <random>
#include <vector>

namespace corvane::audition {

/// Mono, at kRateHz, full scale 1.0.
using Sound = std::vector<double>;

inline constexpr int kRateHz = 48000;

inline std::size_t frames(double seconds) { return static_cast<std::size_t>(std::lround(seconds * kRateHz)); }
inline double fromDb(double db) { return std::pow(10.0, 0.05 * db); }

/// A file of any rate and number of channels. Throws cli::Failure.
Sound readSound(const std::filesystem::path& path);
/// Writes 32-bit floats. Throws cli::Failure.
void writeSound(const std::filesystem::path& path, const Sound& sound);

/// `sound` played `speed` times as fast: pitch and formants rise with it.
Sound resampled(const Sound& sound, double speed);
/// Adds `sound` from `seconds` on; what lies behind the end of `into` is cut.
void mix(Sound& into, const Sound& sound, double seconds, double gain = 1.0);
void scale(Sound& sound, double gain);
/// 12 dB per octave, maximally flat.
Sound lowPassed(const Sound& sound, double hz);
Sound highPassed(const Sound& sound, double hz);
/// The sound in a room, without its direct part: early echoes and a decay of `seconds` to -60 dB.
Sound roomOf(const Sound& sound, double seconds);

/// Evenly spread noise in -1 .. 1, the same for a seed on every machine.
class Noise {
 public:
  explicit Noise(std::uint32_t seed) : engine(seed) {}
  double operator()() { return 2.0 * static_cast<double>(engine()) / 4294967295.0 - 1.0; }

 private:
  std::mt19937 engine;
};

Sound noise(double seconds, std::uint32_t seed);

/// ITU-R BS.1770 integrated, LUFS. -70 for silence, which the gate of the measurement leaves.
double loudness(const Sound& sound);
/// Four times oversampled, dBTP.
double truePeakDb(const Sound& sound);

/// At kLevel, or as near to it as a true peak of kHeadroom allows: a lone drum hit stays a drum hit.
Sound levelled(Sound sound);
inline constexpr double kLevelLufs = -18.0, kHeadroomDb = -3.5;

}  // namespace corvane::audition
