#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <span>
#include <vector>

#include "corvane/AudioFiles.h"
#include "corvane/Automation.h"
#include "corvane/StripRunner.h"

namespace corvane::cli {

/// The host's bypass, on from one block boundary to another.
struct BypassSpan {
  double fromSeconds;
  double toSeconds;  ///< infinite: to the end
};

inline constexpr int kDefaultBlockFrames = 512;
inline constexpr int kLargestBlockFrames = 65536;

/// How to render, the same for every file.
struct RenderPlan {
  std::vector<AutomationPoint> automation;  ///< in rising order of time
  std::vector<BypassSpan> bypasses;
  std::optional<std::filesystem::path> key;
  OutputFormat format = OutputFormat::floatWav;
  int blockFrames = kDefaultBlockFrames;
  double tailSeconds = 0.0;  ///< of silence behind the end, so that a release can close
};

/// Peak and mean square of one side of a channel, linear, full scale 1.0.
struct LevelSum {
  double peak = 0.0;
  double squares = 0.0;
  std::int64_t samples = 0;
  void add(std::span<const float> block);
  double rms() const;
};

/// One channel's part of a block, before and behind the strip.
struct ChannelBlock {
  int channel;
  std::int64_t firstFrame;
  int rateHz;
  std::span<const float> input, output;
  StripRunner& strip;
};
using BlockListener = std::function<void(const ChannelBlock&)>;

struct RenderReport {
  int rateHz = 0, channels = 0;
  std::int64_t frames = 0;
  LevelSum input{}, output{};
  double largestReduction = 0.0;  ///< 0..1, of the whole strip at the end of a block
  std::int64_t clippedSamples = 0;
};

/// One file on its way through the strips, one for each channel.
class FileRender {
 public:
  /// Opens the input and the key and makes the strips. Files that are rendered at the same time are
  /// constructed in order, since strips differ by the order in which they are made. Throws Failure.
  FileRender(const RenderPlan& plan, StripMaker& maker, const std::filesystem::path& input);

  int rateHz() const { return input.rateHz(); }
  int channels() const { return input.channels(); }
  /// Frames that the header promises, tail included.
  std::int64_t promisedFrames() const { return input.promisedFrames() + tailFrames; }
  std::vector<StripRunner>& strips() { return channelStrips; }

  /// Renders to `output`, which exists only when all went well. `onBlock` may be empty; `onFrames` is told
  /// how many frames were done. Throws Failure and Interrupted.
  RenderReport run(const std::filesystem::path& output, const BlockListener& onBlock,
                   const std::function<void(std::int64_t)>& onFrames);

 private:
  bool readBlock();
  void readKey(int frames);
  void applyAutomation(double boundaryFrame);
  bool bypassedAt(double boundaryFrame) const;
  void runChannel(int channel, int frames, bool bypassed);

  const RenderPlan& plan;
  AudioReader input;
  std::optional<AudioReader> key;
  std::vector<StripRunner> channelStrips;
  std::int64_t tailFrames = 0, tailLeft = 0;
  std::size_t nextAutomation = 0;
  int blockFrames = 0;  ///< of the block at hand
  std::vector<float> interleaved, interleavedKey;
  std::vector<std::vector<float>> inputs, keys, outputs;
};

}  // namespace corvane::cli
