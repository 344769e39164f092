#include "audition/Spectrum.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace corvane::audition {

namespace {

constexpr std::size_t kWindow = 8192;  // bins of 5.9 Hz: the lowest band, 9 Hz wide, has more than one
constexpr double kLowestHz = 40.0, kAudibleRangeDb = 40.0, kNothingDb = -200.0;

/// What a transform of kWindow samples reads again and again.
struct Tables {
  std::vector<double> window;        ///< raised cosine
  std::vector<double> cosine, sine;  ///< of -2 pi k / kWindow, half a turn
  Tables() {
    for (std::size_t n = 0; n < kWindow; ++n) {
      const double angle = 2.0 * std::numbers::pi * static_cast<double>(n) / kWindow;
      window.push_back(0.5 - 0.5 * std::cos(angle));
      if (n < kWindow / 2) cosine.push_back(std::cos(angle)), sine.push_back(-std::sin(angle));
    }
  }
};
const Tables& tables() {
  static const Tables made;
  return made;
}

/// Fourier transform of kWindow values in place, radix 2. Parts apart, which is several times as fast as
/// complex numbers.
void transform(Sound& real, Sound& imaginary) {
  for (std::size_t i = 1, j = 0; i < kWindow; ++i) {
    std::size_t bit = kWindow / 2;
    for (; j & bit; bit /= 2) j ^= bit;
    j ^= bit;
    if (i < j) std::swap(real[i], real[j]), std::swap(imaginary[i], imaginary[j]);
  }
  const double *cosine = tables().cosine.data(), *sine = tables().sine.data();
  for (std::size_t length = 2; length <= kWindow; length *= 2) {
    const std::size_t half = length / 2, stride = kWindow / length;
    for (std::size_t first = 0; first < kWindow; first += length) {
      double *ar = &real[first], *ai = &imaginary[first], *br = ar + half, *bi = ai + half;
      for (std::size_t k = 0; k < half; ++k) {
        const double c = cosine[k * stride], s = sine[k * stride];
        const double r = c * br[k] - s * bi[k], i = c * bi[k] + s * br[k];
        br[k] = ar[k] - r, bi[k] = ai[k] - i;
        ar[k] += r, ai[k] += i;
      }
    }
  }
}

/// Power of each bin, mean over windows that overlap by half.
std::vector<double> powers(const Sound& sound) {
  std::vector<double> sums(kWindow / 2 + 1, 0.0);
  Sound real(kWindow), imaginary(kWindow);
  int windows = 0;
  for (std::size_t first = 0; first + kWindow <= sound.size(); first += kWindow / 2, ++windows) {
    for (std::size_t n = 0; n < kWindow; ++n) real[n] = sound[first + n] * tables().window[n];
    std::ranges::fill(imaginary, 0.0);
    transform(real, imaginary);
    for (std::size_t k = 0; k < sums.size(); ++k) sums[k] += real[k] * real[k] + imaginary[k] * imaginary[k];
  }
  // a sine of amplitude 1 reads -3 dB: the squared window has 3/8 of the power, half a spectrum has half
  for (double& sum : sums) sum *= 2.0 / (0.375 * kWindow * kWindow * std::max(windows, 1));
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
