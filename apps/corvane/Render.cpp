#include "corvane/Render.h"

#include <algorithm>
#include <cmath>

#include "core/ParameterBank.h"
#include "corvane/Failure.h"
#include "corvane/Interrupt.h"

namespace corvane::cli {

namespace {

constexpr int kMostChannels = 64;  // each is a strip of 57 modules

void separate(const std::vector<float>& interleaved, std::vector<std::vector<float>>& channels, int frames) {
  const std::size_t count = channels.size();
  for (std::size_t c = 0; c < count; ++c)
    for (std::size_t i = 0; i < static_cast<std::size_t>(frames); ++i)
      channels[c][i] = interleaved[i * count + c];
}

void interleave(const std::vector<std::vector<float>>& channels, std::vector<float>& interleaved,
                int frames) {
  const std::size_t count = channels.size();
  for (std::size_t c = 0; c < count; ++c)
    for (std::size_t i = 0; i < static_cast<std::size_t>(frames); ++i)
      interleaved[i * count + c] = channels[c][i];
}

}  // namespace

void LevelSum::add(std::span<const float> block) {
  for (const float sample : block) {
    const double x = static_cast<double>(sample);
    if (!std::isfinite(x)) continue;
    peak = std::max(peak, std::abs(x));
    squares += x * x;
  }
  samples += std::ssize(block);
}

double LevelSum::rms() const { return samples > 0 ? std::sqrt(squares / static_cast<double>(samples)) : 0.0; }

FileRender::FileRender(const RenderPlan& renderPlan, StripMaker& maker, const std::filesystem::path& path)
    : plan(renderPlan), input(path) {
  if (channels() > kMostChannels)
    fail("cannot render {}: {} channels, at most {} are possible", printable(path), channels(),
         kMostChannels);
  if (plan.key) {
    key.emplace(*plan.key);
    if (key->rateHz() != rateHz())
      fail("--key {}: {} Hz, must be the {} Hz of {}", printable(*plan.key), key->rateHz(), rateHz(),
           printable(path));
    if (key->channels() != 1 && key->channels() != channels())
      fail("--key {}: {} channels, must be 1 or the {} of {}", printable(*plan.key), key->channels(),
           channels(), printable(path));
  }
  const auto count = static_cast<std::size_t>(channels()),
             frames = static_cast<std::size_t>(plan.blockFrames);
  interleaved.resize(frames * count);
  inputs.assign(count, std::vector<float>(frames));
  outputs = inputs;
  if (key) {
    const auto keyCount = static_cast<std::size_t>(key->channels());
    interleavedKey.resize(frames * keyCount);
    keys.assign(keyCount, std::vector<float>(frames));
  }
  tailFrames = tailLeft = std::llround(plan.tailSeconds * rateHz());
  for (int c = 0; c < channels(); ++c) channelStrips.push_back(maker.make(rateHz()));
}

/// Fills the block from the file, then from the tail; the file's end is told by the file, not by its header.
bool FileRender::readBlock() {
  const auto got = static_cast<int>(input.read(interleaved.data(), plan.blockFrames));
  const auto silent = static_cast<int>(std::min<std::int64_t>(plan.blockFrames - got, tailLeft));
  tailLeft -= silent;
  blockFrames = got + silent;
  std::fill(interleaved.begin() + std::ptrdiff_t{got} * channels(), interleaved.end(), 0.0F);
  separate(interleaved, inputs, blockFrames);
  if (key) readKey(blockFrames);
  return blockFrames > 0;
}

/// A key that is shorter than the input goes on as silence.
void FileRender::readKey(int frames) {
  const auto got = static_cast<std::ptrdiff_t>(key->read(interleavedKey.data(), frames));
  std::fill(interleavedKey.begin() + got * key->channels(), interleavedKey.end(), 0.0F);
  separate(interleavedKey, keys, frames);
}

void FileRender::applyAutomation(double boundaryFrame) {
  for (; nextAutomation < plan.automation.size(); ++nextAutomation) {
    const AutomationPoint& point = plan.automation[nextAutomation];
    if (point.seconds * rateHz() > boundaryFrame) return;
    for (StripRunner& strip : channelStrips) strip.automate(point.id, point.value);
  }
}

bool FileRender::bypassedAt(double boundaryFrame) const {
  return std::ranges::any_of(plan.bypasses, [&](const BypassSpan& span) {
    return span.fromSeconds * rateHz() <= boundaryFrame && boundaryFrame < span.toSeconds * rateHz();
  });
}

void FileRender::runChannel(int channel, int frames, bool bypassed) {
  const auto c = static_cast<std::size_t>(channel);
  const float* keySignal = keys.empty() ? nullptr : keys[keys.size() == 1 ? 0 : c].data();
  channelStrips[c].processBlock(inputs[c].data(), keySignal, outputs[c].data(), frames, bypassed);
}

RenderReport FileRender::run(const std::filesystem::path& output, const BlockListener& onBlock,
                             const std::function<void(std::int64_t)>& onFrames) {
  RenderReport report{.rateHz = rateHz(), .channels = channels()};
  AudioWriter writer(output, plan.format, rateHz(), channels(), promisedFrames());
  std::int64_t position = 0;
  while (readBlock()) {
    stopIfInterrupted();
    applyAutomation(static_cast<double>(position));
    const bool bypassed = bypassedAt(static_cast<double>(position));
    for (int channel = 0; channel < channels(); ++channel) {
      runChannel(channel, blockFrames, bypassed);
      const auto c = static_cast<std::size_t>(channel);
      const auto frames = static_cast<std::size_t>(blockFrames);
      const std::span<const float> before(inputs[c].data(), frames), after(outputs[c].data(), frames);
      report.input.add(before), report.output.add(after);
      StripRunner& strip = channelStrips[c];
      report.largestReduction =
          std::max(report.largestReduction, strip.meter(kTotalReductionMeterId).value_or(0.0));
      if (onBlock) onBlock({channel, position, rateHz(), before, after, strip});
    }
    interleave(outputs, interleaved, blockFrames);
    writer.write(interleaved.data(), blockFrames);
    position += blockFrames;
    if (onFrames) onFrames(blockFrames);
  }
  stopIfInterrupted();
  writer.commit();
  report.frames = position;
  report.clippedSamples = writer.clipped();
  return report;
}

}  // namespace corvane::cli
