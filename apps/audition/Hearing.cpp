#include "audition/Hearing.h"

#include <algorithm>
#include <cmath>
#include <string_view>

#include "core/Rack.h"
#include "corvane/MeterFiles.h"

namespace corvane::audition {

namespace {

constexpr int kReductionMeter = 2;  // from the first meter of a place
constexpr std::size_t kRunUpFrames =
    std::size_t{2} * kRateHz;        // longer than any release and than automated gain learns
constexpr double kSoundsDb = -40.0;  // below the material's peak: what counts into means
constexpr double kHeardDb = 50.0;    // below the loudest band or step: what counts into a comparison
constexpr double kStepSeconds = 0.02, kRmsSeconds = 0.3;

/// A module with a reduction to read, while the strip plays.
struct Watched {
  Reduction result;
  int position, meterId;
  double sumDb = 0.0;
  int blocks = 0;
};

bool reduces(ModuleKind kind, const ModuleFamily& family) {
  // De-essers and de-hummers are the special modules whose third meter is a reduction.
  return kind == ModuleKind::gate || kind == ModuleKind::compressor || kind == ModuleKind::limiter ||
         std::string_view(family.meters[kReductionMeter]) == "Reduction";
}

std::string moduleName(const ModuleFamily& family, int type) {
  const auto at = std::ranges::find(family.variants, type, &Variant::type);
  return at == family.variants.end() ? "" : at->name;
}

std::vector<Watched> watchedModules(const cli::Setting& setting) {
  std::vector<Watched> found;
  for (int place = 0; place < kPlaces; ++place) {
    const Place& group = kRack[static_cast<std::size_t>(place)];
    const ModuleFamily* family = cli::familyInPlace(place, setting);
    if (!family || decodeSwitch(setting.value(group.parameterBase + kMuteOffset)) != 0) continue;
    const double typeValue = setting.value(group.parameterBase);
    const int type = place < kFixedPlaces ? decodeVariant(typeValue)
                                          : decodeInsertIndex(typeValue) - family->firstInsertIndex + 1;
    const std::string name = moduleName(*family, type);
    if (name.empty() || !reduces(family->kind, *family)) continue;
    const std::string label = place < kFixedPlaces ? name : std::string(group.prefix) + " " + name;
    found.push_back({{label, family->kind, 0.0, 0.0, 1e9},
                     decodePosition(setting.value(group.parameterBase + kPositionOffset)),
                     group.meterBase + kReductionMeter});
  }
  std::ranges::stable_sort(found, {}, &Watched::position);
  return found;
}

double peakOf(const float* samples, std::size_t count) {
  double peak = 0.0;
  for (std::size_t n = 0; n < count; ++n) peak = std::max(peak, std::abs(static_cast<double>(samples[n])));
  return peak;
}

void read(Watched& watched, cli::StripRunner& strip, bool sounds) {
  const double reading = std::min(strip.meter(watched.meterId).value_or(0.0), 0.9999);  // 80 dB is shut
  const double db = cli::reductionDb(reading);
  watched.result.largestDb = std::max(watched.result.largestDb, db);
  watched.result.smallestDb = std::min(watched.result.smallestDb, db);
  if (sounds) watched.sumDb += db, ++watched.blocks;
}

/// RMS of consecutive steps, dBFS.
std::vector<double> stepLevels(const Sound& sound, double seconds) {
  std::vector<double> levels;
  const std::size_t step = frames(seconds);
  for (std::size_t first = 0; first + step <= sound.size(); first += step) {
    double squares = 1e-20;
    for (std::size_t n = first; n < first + step; ++n) squares += sound[n] * sound[n];
    levels.push_back(10.0 * std::log10(squares / static_cast<double>(step)));
  }
  return levels;
}

/// Levels against the loudness, with all that is too low to be heard at one floor.
template <typename Levels>
std::vector<double> heard(const Levels& levels, double lufs) {
  const double floor = *std::ranges::max_element(levels) - kHeardDb;
  std::vector<double> out;
  out.reserve(levels.size());
  for (const double level : levels) out.push_back(std::max(level, floor) - lufs);
  return out;
}

double meanSquareDifference(const std::vector<double>& a, const std::vector<double>& b) {
  double sum = 0.0;
  for (std::size_t n = 0; n < a.size(); ++n) sum += (a[n] - b[n]) * (a[n] - b[n]);
  return sum / static_cast<double>(a.size());
}

}  // namespace

Hearing hear(cli::StripRunner& strip, const cli::Setting& setting, const Sound& material) {
  strip.load(setting);
  std::vector<float> samples(material.begin(), material.begin() + kRunUpFrames);
  samples.insert(samples.end(), material.begin(), material.end());
  const double sounding = peakOf(samples.data(), samples.size()) * fromDb(kSoundsDb);
  auto watched = watchedModules(setting);
  for (std::size_t first = 0; first < samples.size(); first += kBlockFrames) {
    const std::size_t count = std::min<std::size_t>(kBlockFrames, samples.size() - first);
    const bool sounds = peakOf(&samples[first], count) > sounding;
    strip.processBlock(&samples[first], nullptr, &samples[first], static_cast<int>(count), false);
    if (first >= kRunUpFrames)
      for (Watched& module : watched) read(module, strip, sounds);
  }
  Hearing hearing{};
  hearing.output.assign(samples.begin() + kRunUpFrames, samples.end());
  hearing.loudnessIn = loudness(material);
  hearing.loudnessOut = loudness(hearing.output);
  hearing.truePeakDb = truePeakDb(hearing.output);
  hearing.loudestRmsDb = std::ranges::max(stepLevels(hearing.output, kRmsSeconds));
  hearing.tilt = tiltChange(thirdOctaves(material), thirdOctaves(hearing.output));
  for (Watched& module : watched) {
    module.result.meanDb = module.sumDb / std::max(module.blocks, 1);
    hearing.reductions.push_back(std::move(module.result));
  }
  return hearing;
}

Character characterOf(const Sound& output) {
  const double lufs = loudness(output);
  return {heard(thirdOctaves(output), lufs), heard(stepLevels(output, kStepSeconds), lufs)};
}

double distance(const Character& a, const Character& b) {
  return std::sqrt(meanSquareDifference(a.bandsDb, b.bandsDb) + meanSquareDifference(a.levelsDb, b.levelsDb));
}

}  // namespace corvane::audition
