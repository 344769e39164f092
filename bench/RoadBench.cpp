// Programme: noise at -8 dBFS, 48 kHz, in a host's blocks of 512 floats. Question: what does the way through
// the plug-in and its host cost beside the processor alone?

#include <benchmark/benchmark.h>

#include <algorithm>
#include <random>
#include <vector>

#include "core/CorvaneMonoEffect.h"
#include "corvane/StripRunner.h"

namespace corvane {
namespace {

constexpr int kFrames = 512;

std::vector<float> noise() {
  std::mt19937 engine(3);
  std::uniform_real_distribution<float> draw(-0.4F, 0.4F);
  std::vector<float> samples(kFrames);
  for (float& sample : samples) sample = draw(engine);
  return samples;
}

template <typename Process>
void runBlocks(benchmark::State& state, Process process) {
  const std::vector<float> input = noise();
  std::vector<float> output(kFrames);
  for (auto _ : state) {
    process(input.data(), output.data());
    benchmark::DoNotOptimize(output.data());
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations() * kFrames);
}

void alone(benchmark::State& state) {
  CorvaneMonoEffect effect;
  effect.setSampleRate(48000.0);
  runBlocks(state, [&](const float* input, float* output) {
    const float* const in[4] = {input, nullptr, nullptr, nullptr};
    float* const out[2] = {output, nullptr};
    effect.processFloat(in, out, kFrames);
  });
}

void throughHost(benchmark::State& state) {
  cli::StripRunner strip;
  runBlocks(state, [&](const float* input, float* output) {
    strip.processBlock(input, nullptr, output, kFrames, false);
  });
}

[[maybe_unused]] const bool registered = [] {
  benchmark::RegisterBenchmark("default strip, processor alone", alone);
  benchmark::RegisterBenchmark("default strip, through the host", throughHost);
  return true;
}();

}  // namespace
}  // namespace corvane
