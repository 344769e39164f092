#include "audition/Spectrum.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <numbers>

namespace corvane::audition {

namespace {

constexpr std::size_t kWindow = 8192;  // bins of 5.9 Hz: the lowest band, 9 Hz wide, has more than one
constexpr double kLowestHz = 40.0, kAudibleRangeDb = 40.0, kNothingDb = -200.0;

/// Fourier transform in place, radix 2.
void transform(std::vector<std::complex<double>>& x) {
  for (std::size_t i = 1, j = 0; i < x.size(); ++i) {
    std::size_t bit = x.size() / 2;
    for (; j & bit; bit /= 2) j ^= bit;
    j ^= bit;
    if (i < j) std::swap(x[i], x[j]);
  }
  for (std::size_t length = 2; length <= x.size(); length *= 2) {
    const auto step = std::polar(1.0, -2.0 * std::numbers::pi / static_cast<double>(length));
    for (std::size_t first = 0; first < x.size(); first += length) {
      std::complex<double> turn = 1.0;
      for (std::size_t k = 0; k < length / 2; ++k, turn *= step) {
        const auto even = x[first + k], odd = turn * x[first + k + length / 2];
        x[first + k] = even + odd;
        x[first + k + length / 2] = even - odd;
      }
    }
  }
}

/// Power of each bin, mean over windows that overlap by half.
std::vector<double> powers(const Sound& sound) {
  std::vector<double> sums(kWindow / 2 + 1, 0.0);
  std::vector<std::complex<double>> x(kWindow);
  int windows = 0;
  for (std::size_t first = 0; first + kWindow <= sound.size(); first += kWindow / 2, ++windows) {
    for (std::size_t n = 0; n < kWindow; ++n)
      x[n] = sound[first + n] *
             (0.5 - 0.5 * std::cos(2.0 * std::numbers::pi * static_cast<double>(n) / kWindow));
    transform(x);
    for (std::size_t k = 0; k < sums.size(); ++k) sums[k] += std::norm(x[k]);
  }
  for (double& sum : sums)
    sum /= std::max(windows, 1) * 0.09375 * kWindow * kWindow;  // a sine of 1 reads -3 dB
  return sums;
}

}  // namespace

BandLevels thirdOctaves(const Sound& sound) {
  const auto bins = powers(sound);
  BandLevels levels{};
  const double hzPerBin = static_cast<double>(kRateHz) / kWindow;
  for (int band = 0; band < kBands; ++band) {
    const double low = kLowestHz * std::exp2((band - 0.5) / 3.0) / hzPerBin;
    const double high = kLowestHz * std::exp2((band + 0.5) / 3.0) / hzPerBin;
    double sum = 0.0;  // a bin that an edge cuts counts by its share
    for (auto k = static_cast<std::size_t>(low); k < bins.size() && static_cast<double>(k) - 0.5 < high;
         ++k) {
      const double bin = static_cast<double>(k);
      sum += bins[k] * std::clamp(std::min(high, bin + 0.5) - std::max(low, bin - 0.5), 0.0, 1.0);
    }
    levels[static_cast<std::size_t>(band)] = sum > 1e-20 ? 10.0 * std::log10(sum) : kNothingDb;
  }
  return levels;
}

double tiltChange(const BandLevels& in, const BandLevels& out) {
  const double loudest = *std::ranges::max_element(in);
  double count = 0.0, sumX = 0.0, sumY = 0.0, sumXX = 0.0, sumXY = 0.0;
  for (std::size_t band = 0; band < in.size(); ++band) {
    if (in[band] < loudest - kAudibleRangeDb) continue;
    const double octaves = static_cast<double>(band) / 3.0, change = std::max(out[band], -120.0) - in[band];
    count += 1.0, sumX += octaves, sumY += change, sumXX += octaves * octaves, sumXY += octaves * change;
  }
  const double spread = count * sumXX - sumX * sumX;
  return spread > 0.0 ? (count * sumXY - sumX * sumY) / spread : 0.0;
}

}  // namespace corvane::audition
