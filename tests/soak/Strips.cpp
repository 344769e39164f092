#include "tests/soak/Strips.h"

#include <time.h>

#include <algorithm>
#include <cmath>
#include <random>

#include "core/ParameterBank.h"
#include "tests/rig/RenderGuard.h"
#include "tests/rig/SystemCallGuard.h"

namespace corvane::soak {

namespace {

constexpr std::size_t kBlocksOfProgramme = 375;  // one second
constexpr int kPreType = 16, kPreGain = 32;
constexpr std::size_t kKeyedStrip = 3;  // this one has a side chain

std::int64_t nanoseconds(clockid_t clock) {
  timespec now{};
  clock_gettime(clock, &now);
  return now.tv_sec * 1'000'000'000LL + now.tv_nsec;
}

/// Noise at -6 dBFS that comes and goes four times, so that attack and release both run, then rest.
std::vector<float> bursts(unsigned seed) {
  std::mt19937 random(seed);
  std::uniform_real_distribution<float> noise(-0.5f, 0.5f);
  std::vector<float> samples(kBlocksOfProgramme * kFrames);
  for (std::size_t n = 0; n < samples.size(); ++n) {
    const bool loud = n * 8 / samples.size() % 2 == 0;
    samples[n] = loud ? noise(random) : 0.0f;
  }
  return samples;
}

}  // namespace

Strips::Strips(const std::shared_ptr<aaxhost::Library>& library, unsigned seed) : programme(bursts(seed)) {
  for (std::size_t k = 0; k < kCount; ++k) {
    instances.push_back(std::make_unique<aaxhost::Instance>(library, kRateHz, aaxhost::Mode::Live));
    outputs.emplace_back(kFrames);
    seats.push_back({instances[k].get(), {.output = outputs[k].data(), .frames = kFrames}});
  }
  song.playing = true;
}

std::vector<aaxhost::Instance*> Strips::pointers() const {
  std::vector<aaxhost::Instance*> list;
  for (const auto& instance : instances) list.push_back(instance.get());
  return list;
}

/// Strips get the same sound at different places of it; half of them work in place.
void Strips::nextInput() {
  at = (at + 1) % kBlocksOfProgramme;
  song.ticks += 1000;
  for (std::size_t k = 0; k < kCount; ++k) {
    const float* const source = &programme[(at + 37 * k) % kBlocksOfProgramme * kFrames];
    aaxhost::Block& block = seats[k].block;
    block.input = source;
    if (k % 2 == 0) {
      std::copy_n(source, kFrames, outputs[k].begin());
      block.input = outputs[k].data();
    }
    block.sideChain = k == kKeyedStrip ? programme.data() : nullptr;
    block.transport = k % 3 == 0 ? &song : nullptr;
  }
}

void Strips::renderBlock() {
  nextInput();
  const std::int64_t wallStart = nanoseconds(CLOCK_MONOTONIC),
                     threadStart = nanoseconds(CLOCK_THREAD_CPUTIME_ID);
  int guarded = 0, call = -1;
  {
    const rig::RenderGuard calls;
    const rig::SystemCallGuard system;
    aaxhost::render(seats);
    guarded = calls.violations();
    call = system.caught();
  }
  processor.add(nanoseconds(CLOCK_THREAD_CPUTIME_ID) - threadStart);
  wall.add(nanoseconds(CLOCK_MONOTONIC) - wallStart);
  seen.guarded += guarded;
  if (call >= 0 && seen.systemCalls++ == 0) seen.firstCall = call;
  for (const auto& output : outputs)
    if (!std::ranges::all_of(output, [](float sample) { return std::isfinite(sample); })) ++seen.notFinite;
  ++blocks;
}

double differenceFromNew(Strips& strips, const std::shared_ptr<aaxhost::Library>& library) {
  constexpr AAX_CTypeID kState = AAX_TypeID("All ");
  constexpr int kRestBlocks = 10 * static_cast<int>(kBlocksOfProgramme), kBlocksPerTimer = 10;
  aaxhost::Instance fresh(library, kRateHz, aaxhost::Mode::Live);
  fresh.edit(parameterIdentifier(kPreType), 1 / 15.0);  // the plain gain: colours differ from unit to unit
  fresh.settle();
  aaxhost::Chunk state;
  fresh.getChunk(kState, &state);

  const std::vector<float> sound = bursts(1), silence(kFrames);
  const auto rendered = [&](aaxhost::Instance& instance) {
    std::vector<float> heard(sound.size()), rest(kFrames);
    instance.setBypass(false);
    instance.settle();
    // automatic gain leaves the gain where it stood until somebody moves it
    for (const double gain : {0.5, 0.25, 0.5}) {
      instance.automate(parameterIdentifier(kPreGain), gain);
      instance.render({silence.data(), rest.data(), kFrames});
    }
    for (int k = 0; k < kRestBlocks; ++k) {
      if (k % kBlocksPerTimer == 0) {  // also sends on what found no room before
        instance.settle();
        instance.timer();
      }
      instance.render({silence.data(), rest.data(), kFrames});
    }
    for (std::size_t n = 0; n < sound.size(); n += kFrames) instance.render({&sound[n], &heard[n], kFrames});
    return heard;
  };
  const std::vector<float> expected = rendered(fresh);
  double largest = 0.0;
  for (const auto& instance : strips.all()) {
    instance->setChunk(state);
    const std::vector<float> heard = rendered(*instance);
    for (std::size_t n = 0; n < heard.size(); ++n)
      largest = std::max(largest, std::abs(static_cast<double>(heard[n]) - static_cast<double>(expected[n])));
  }
  return largest;
}

}  // namespace corvane::soak
