// Programme: the tone and noise of a block that makes every default module work; 48 kHz, blocks of 64,
// floats. Unit: the biquad of the same run. Question: what does the road through the LV2 plug-in cost over
// driving the strip directly, with all ports connected?

#include <benchmark/benchmark.h>
#include <dlfcn.h>
#include <lv2/core/lv2.h>

#include <array>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <vector>

#include "core/CorvaneMonoEffect.h"
#include "lv2/Ports.h"

namespace corvane {
namespace {

constexpr double kRateHz = 48000.0;
constexpr std::size_t kFrames = 64, kBlocks = 750;

const std::vector<float>& programme() {
  static const std::vector<float> made = [] {
    std::vector<float> x(kFrames * kBlocks);
    std::uint32_t seed = 1;
    for (std::size_t n = 0; n < x.size(); ++n) {
      seed = seed * 1664525u + 1013904223u;
      const double noise = static_cast<double>(seed >> 8) / 8388608.0 - 1.0;
      x[n] = static_cast<float>(0.5 * noise * std::exp(-static_cast<double>(n % 12000) / 3000.0));
    }
    return x;
  }();
  return made;
}

template <typename Process>
void runProgramme(benchmark::State& state, Process process) {
  std::array<float, kFrames> block{};
  std::size_t at = 0;
  for (auto _ : state) {
    std::copy_n(programme().begin() + static_cast<long>(at), kFrames, block.begin());
    process(block.data());
    benchmark::DoNotOptimize(block.data());
    benchmark::ClobberMemory();
    at = (at + kFrames) % programme().size();
  }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(kFrames));
}

void direct(benchmark::State& state) {
  CorvaneMonoEffect effect;
  effect.setSampleRate(kRateHz);
  runProgramme(state, [&](float* block) {
    const float* in[4] = {block, nullptr, nullptr, nullptr};
    float* out[2] = {block, nullptr};
    effect.processFloat(in, out, kFrames);
  });
}

/// The plug-in as a host holds it: no feature, every port connected.
class Plugin {
 public:
  Plugin() {
    handle = dlopen(LV2_BUNDLE "/corvane.so", RTLD_NOW | RTLD_LOCAL);
    if (!handle) throw std::runtime_error(dlerror());
    descriptor = reinterpret_cast<LV2_Descriptor_Function>(dlsym(handle, "lv2_descriptor"))(0);
    const LV2_Feature* none[] = {nullptr};
    instance = descriptor->instantiate(descriptor, kRateHz, LV2_BUNDLE "/", none);
    if (!instance) throw std::runtime_error("no instance of the LV2 plug-in");
    for (const lv2::ControlPort& port : lv2::ports().controls) controls.push_back(port.scale.standard);
    meters.resize(lv2::ports().meters.size());
    std::uint32_t port = lv2::kFirstControlPort;
    for (float& value : controls) descriptor->connect_port(instance, port++, &value);
    for (float& value : meters) descriptor->connect_port(instance, port++, &value);
    descriptor->activate(instance);
  }
  ~Plugin() {
    descriptor->cleanup(instance);
    dlclose(handle);
  }
  Plugin(const Plugin&) = delete;
  Plugin& operator=(const Plugin&) = delete;
  void run(float* block) {
    descriptor->connect_port(instance, lv2::kInputPort, block);
    descriptor->connect_port(instance, lv2::kOutputPort, block);
    descriptor->run(instance, kFrames);
  }

 private:
  void* handle = nullptr;
  const LV2_Descriptor* descriptor = nullptr;
  LV2_Handle instance = nullptr;
  std::vector<float> controls, meters;
};

void plugin(benchmark::State& state) {
  Plugin strip;
  runProgramme(state, [&](float* block) { strip.run(block); });
}

[[maybe_unused]] const bool registered = [] {
  benchmark::RegisterBenchmark("default strip, blocks of 64, alone", direct);
  benchmark::RegisterBenchmark("the same blocks, through LV2", plugin);
  return true;
}();

}  // namespace
}  // namespace corvane
