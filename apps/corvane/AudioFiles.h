#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "corvane/PendingFile.h"

struct sf_private_tag;

namespace corvane::cli {

struct CloseSound {
  void operator()(sf_private_tag* file) const;
};
using SoundHandle = std::unique_ptr<sf_private_tag, CloseSound>;

/// An audio file read front to back as 32-bit floats, full scale 1.0. Any format that libsndfile knows.
class AudioReader {
 public:
  /// Throws Failure for what cannot be read.
  explicit AudioReader(const std::filesystem::path& path);

  int channels() const { return channelCount; }
  int rateHz() const { return rate; }
  /// What the header promises. The file may end earlier: the end is where `read` gives less than asked.
  std::int64_t promisedFrames() const { return promised; }
  /// Interleaved frames into `samples`; the number read.
  std::int64_t read(float* samples, std::int64_t frames);

 private:
  std::filesystem::path path;
  SoundHandle file;
  int channelCount = 0, rate = 0;
  std::int64_t promised = 0;
};

enum class OutputFormat { floatWav, pcm16Wav, pcm24Wav, flac };

/// "float", "pcm16", "pcm24", "flac".
std::optional<OutputFormat> outputFormatOf(std::string_view word);
/// With the point.
const char* extensionOf(OutputFormat format);

/// An audio file that exists under its name only when it is whole. WAV turns into RF64 past 4 GB.
/// Whole-number formats are rounded, not dithered, and hold at full scale; FLAC is 24 bits.
class AudioWriter {
 public:
  /// `expectedFrames` picks the container alone. Throws Failure.
  AudioWriter(const std::filesystem::path& path, OutputFormat format, int rateHz, int channels,
              std::int64_t expectedFrames);

  void write(const float* samples, std::int64_t frames);
  /// Header, flush, rename. Nothing is there before this.
  void commit();
  /// Samples that a whole-number format had to hold at full scale.
  std::int64_t clipped() const { return clippedSamples; }

 private:
  [[noreturn]] void failWriting(int error) const;

  std::filesystem::path path;
  PendingFile pending;
  SoundHandle file;
  int bits = 0;  ///< of a whole-number format, 0 for float
  bool isFlac = false;
  int channelCount = 0;
  std::int64_t writtenFrames = 0, clippedSamples = 0;
};

}  // namespace corvane::cli
