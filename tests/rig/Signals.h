#pragma once

#include <cmath>
#include <complex>
#include <cstdint>
#include <numbers>
#include <random>
#include <vector>

// Test signals and what a measuring desk reads off them. Amplitudes linear, full scale 1.0.

namespace corvane::rig {

using Samples = std::vector<double>;

inline std::size_t count(double seconds, double rateHz) {
  return static_cast<std::size_t>(seconds * rateHz + 0.5);
}
inline double db(double gain) { return 20.0 * std::log10(gain); }
inline double fromDb(double decibels) { return std::pow(10.0, decibels / 20.0); }

inline Samples silence(double seconds, double rateHz) { return Samples(count(seconds, rateHz), 0.0); }

inline Samples constant(double level, double seconds, double rateHz) {
  return Samples(count(seconds, rateHz), level);
}

inline Samples sine(double hz, double amplitude, double seconds, double rateHz) {
  Samples x(count(seconds, rateHz));
  for (std::size_t n = 0; n < x.size(); ++n)
    x[n] = amplitude * std::sin(2.0 * std::numbers::pi * hz * static_cast<double>(n) / rateHz);
  return x;
}

/// Evenly spread white noise in -amplitude .. amplitude; the same for the same seed.
inline Samples noise(double amplitude, double seconds, double rateHz, std::uint32_t seed = 1) {
  std::mt19937 engine(seed);
  std::uniform_real_distribution<double> draw(-amplitude, amplitude);
  Samples x(count(seconds, rateHz));
  for (double& sample : x) sample = draw(engine);
  return x;
}

inline Samples impulse(double amplitude, double seconds, double rateHz) {
  Samples x = silence(seconds, rateHz);
  x.front() = amplitude;
  return x;
}

inline Samples joined(Samples a, const Samples& b) {
  a.insert(a.end(), b.begin(), b.end());
  return a;
}

inline double peak(const Samples& x, std::size_t from = 0) {
  double top = 0.0;
  for (std::size_t n = from; n < x.size(); ++n) top = std::max(top, std::abs(x[n]));
  return top;
}

inline double rms(const Samples& x, std::size_t from = 0) {
  double sum = 0.0;
  for (std::size_t n = from; n < x.size(); ++n) sum += x[n] * x[n];
  return std::sqrt(sum / static_cast<double>(x.size() - from));
}

/// Fourier sum at `hz` over x[from ..]: of an impulse response, the response there; of a tone that fits a
/// whole number of periods, amplitude times half the number of samples.
inline std::complex<double> fourierSum(const Samples& x, double hz, double rateHz, std::size_t from = 0) {
  std::complex<double> sum = 0.0;
  for (std::size_t n = from; n < x.size(); ++n)
    sum += x[n] * std::polar(1.0, -2.0 * std::numbers::pi * hz * static_cast<double>(n) / rateHz);
  return sum;
}

/// Amplitude of the partial at `hz` over x[from ..], which should hold whole periods.
inline double partial(const Samples& x, double hz, double rateHz, std::size_t from = 0) {
  return 2.0 * std::abs(fourierSum(x, hz, rateHz, from)) / static_cast<double>(x.size() - from);
}

}  // namespace corvane::rig
