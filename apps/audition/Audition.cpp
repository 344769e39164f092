#include "audition/Audition.h"

#include <algorithm>
#include <atomic>
#include <limits>
#include <thread>

#include "control/FactoryBank.h"
#include "core/ParameterBank.h"
#include "corvane/Presets.h"

namespace corvane::audition {

namespace {

// Preamps come in sixteen units that differ as hardware does, and a strip draws the next ones when it is
// made. With sixteen strips at a time, a preset meets the same units whichever presets are heard beside it.
constexpr int kStripsAtOnce = 16;

cli::Setting settingOf(int index) {
  double values[kParameters] = {};
  factoryPreset(index, values, nullptr, nullptr);
  cli::Setting setting;
  for (int id = 0; id < kParameters; ++id)
    if (parameterKind(id) & kKindStored) setting.store(id, values[id]);
  return setting;
}

std::vector<cli::StripRunner> makeStrips() {
  std::vector<cli::StripRunner> strips;
  strips.reserve(kStripsAtOnce);
  for (int n = 0; n < kStripsAtOnce; ++n) strips.emplace_back(kRateHz);
  return strips;
}

/// Runs `work` for 0 .. count - 1 on all processors.
void spread(std::size_t count, const std::function<void(std::size_t)>& work) {
  std::atomic<std::size_t> next = 0;
  const auto run = [&] {
    for (std::size_t n = next++; n < count; n = next++) work(n);
  };
  std::vector<std::jthread> threads;
  for (unsigned n = 1; n < std::thread::hardware_concurrency(); ++n) threads.emplace_back(run);
  run();
}

/// Places `first` to `first + kStripsAtOnce - 1`.
void hearBatch(int first, std::vector<Auditioned*>& presets, MaterialShelf& shelf) {
  std::vector<std::pair<const Sound*, const Sound*>> materials;
  materials.reserve(presets.size());
  for (const Auditioned* preset : presets)
    materials.emplace_back(&shelf.get(preset->material), &shelf.get(commonMaterial(preset->category)));
  auto strips = makeStrips(), commonStrips = makeStrips();
  spread(presets.size(), [&](std::size_t n) {
    Auditioned& preset = *presets[n];
    const auto strip = static_cast<std::size_t>(preset.index - first);
    const cli::Setting setting = settingOf(preset.index);
    const auto [own, common] = materials[n];
    preset.hearing = hear(strips[strip], setting, *own);
    preset.character = characterOf(own == common ? preset.hearing.output
                                                 : hear(commonStrips[strip], setting, *common).output);
  });
}

void findNearest(std::vector<Auditioned>& presets) {
  for (Auditioned& preset : presets) {
    if (preset.category.empty()) continue;
    preset.nearestDb = std::numeric_limits<double>::infinity();
    for (const Auditioned& other : presets) {
      if (&other == &preset || other.category != preset.category) continue;
      const double db = distance(preset.character, other.character);
      if (db < preset.nearestDb) preset.nearestDb = db, preset.nearest = other.index;
    }
  }
}

}  // namespace

std::vector<Auditioned> audition(const std::function<bool(const Auditioned&)>& wanted, MaterialShelf& shelf) {
  std::vector<Auditioned> presets;
  for (const auto& listed : cli::factoryPresets()) {
    Auditioned preset;
    preset.index = listed.index;
    preset.name = listed.name;
    preset.category = listed.category;
    preset.material = materialFor(preset.category, preset.name);
    if (wanted(preset)) presets.push_back(std::move(preset));
  }
  for (int first = 0; first < kFactoryPlaces; first += kStripsAtOnce) {
    std::vector<Auditioned*> batch;
    for (Auditioned& preset : presets)
      if (preset.index >= first && preset.index < first + kStripsAtOnce) batch.push_back(&preset);
    if (!batch.empty()) hearBatch(first, batch, shelf);
  }
  findNearest(presets);
  return presets;
}

}  // namespace corvane::audition
