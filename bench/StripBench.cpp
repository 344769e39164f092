// Programme: drum-like noise bursts at -6 dBFS, so that attack and release both run; 48 kHz, blocks of 64.
// Unit: one plain double-precision biquad in the same binary. Question: what does a variant cost in the rack?

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <random>
#include <vector>

#include "core/CorvaneMonoEffect.h"
#include "core/Rack.h"

namespace corvane {
namespace {

constexpr double kRateHz = 48000.0;
constexpr std::size_t kProgrammeFrames = 48000 / kBlockFrames * kBlockFrames;  // a second

/// Bursts of noise, four in a second, each dying away within its quarter.
const std::vector<double>& programme() {
  static const std::vector<double> made = [] {
    std::mt19937 engine(3);
    std::uniform_real_distribution<double> draw(-0.5, 0.5);
    std::vector<double> x(kProgrammeFrames);
    for (std::size_t n = 0; n < x.size(); ++n)
      x[n] = draw(engine) * std::exp(-static_cast<double>(n % 12000) / 3000.0);
    return x;
  }();
  return made;
}

/// Runs `process` over the programme, block by block, in place.
template <typename Process>
void runProgramme(benchmark::State& state, Process process) {
  alignas(32) double audio[4][kBlockFrames] = {};
  double* table[8] = {audio[0], audio[1], audio[2], audio[3]};
  const auto& source = programme();
  std::size_t at = 0;
  for (auto _ : state) {
    std::copy_n(source.begin() + static_cast<long>(at), kBlockFrames, audio[0]);
    process(table);
    benchmark::DoNotOptimize(audio[0]);
    benchmark::ClobberMemory();
    at = (at + kBlockFrames) % kProgrammeFrames;
  }
  state.SetItemsProcessed(state.iterations() * kBlockFrames);
}

void unit(benchmark::State& state) {
  double x1 = 0.0, x2 = 0.0, y1 = 0.0, y2 = 0.0;
  runProgramme(state, [&](double** table) {
    constexpr double b0 = 0.2, b1 = 0.3, b2 = 0.2, a1 = -0.5, a2 = 0.25;
    double* x = table[0];
    for (int i = 0; i < kBlockFrames; ++i) {
      const double x0 = x[i];
      const double y = b0 * x0 + b1 * x1 + b2 * x2 - a1 * y1 - a2 * y2;
      x2 = x1, x1 = x0, y2 = y1, y1 = y;
      x[i] = y;
    }
  });
}

/// Settings that make a module work on the programme, by offset; what is not named keeps its default.
struct Work {
  ModuleKind kind;
  int offset;
  double p;
};
constexpr Work kWork[] = {
    {ModuleKind::limiter, 18, 0.5},  // ceiling -15 dB
    {ModuleKind::eq, 17, 0.7},      {ModuleKind::eq, 21, 0.3},      {ModuleKind::eq, 25, 0.6},
    {ModuleKind::eq, 29, 0.65},     {ModuleKind::filters, 20, 0.6},
};

std::unique_ptr<StripEffect> workingModule(const ModuleFamily& family, int type) {
  const Place& place = kRack[kInsertX];
  auto made = family.make(place.parameterBase, place.meterBase, place.tagBase);
  if (family.kind != ModuleKind::special) made->setParameter(place.parameterBase, type / 15.0);
  made->setSampleRate(kRateHz);
  made->enable();
  made->setDefaults();
  for (const Work& work : kWork)
    if (work.kind == family.kind) made->setParameter(place.parameterBase + work.offset, work.p);
  made->reset();
  return made;
}

void module(benchmark::State& state, const ModuleFamily* family, int type) {
  const auto made = workingModule(*family, type);
  runProgramme(state, [&](double** table) { made->processBlockMono(table, table, kBlockFrames); });
}

/// One parameter of the module moves every block, as automation does.
void moving(benchmark::State& state, const ModuleFamily* family, int offset) {
  const auto made = workingModule(*family, 1);
  const int id = kRack[kInsertX].parameterBase + offset;
  double p = 0.0;
  runProgramme(state, [&](double** table) {
    p = p >= 1.0 ? 0.0 : p + 0.01;
    made->setParameter(id, p);
    made->processBlockMono(table, table, kBlockFrames);
  });
}

void strip(benchmark::State& state, bool empty) {
  CorvaneMonoEffect effect;
  effect.setSampleRate(kRateHz);
  if (empty)
    for (std::size_t k = 0; k < kFixedPlaces; ++k) effect.setParameter(kRack[k].parameterBase, 0.0);
  runProgramme(state, [&](double** table) {
    const double* in[4] = {table[0], nullptr, nullptr, nullptr};
    double* out[2] = {table[0], nullptr};
    effect.processDouble(in, out, kBlockFrames);
  });
}

[[maybe_unused]] const bool registered = [] {
  benchmark::RegisterBenchmark("plain double biquad", unit);
  benchmark::RegisterBenchmark("rack with nothing in it", strip, true);
  benchmark::RegisterBenchmark("default strip", strip, false);
  for (const ModuleFamily* family : moduleFamilies())
    for (const Variant& variant : family->variants)
      benchmark::RegisterBenchmark(variant.name, module, family, variant.type);
  benchmark::RegisterBenchmark("Tidalform, frequency moving", moving, familyOfInsertIndex(115), 18);
  return true;
}();

}  // namespace
}  // namespace corvane
