#include "corvane/AudioFiles.h"

#include <fcntl.h>
#include <sndfile.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <limits>
#include <vector>

#include "corvane/Failure.h"

namespace corvane::cli {

namespace {

struct FormatEntry {
  const char* word;
  OutputFormat format;
  int container, encoding;
  int bits;  ///< 0 for float
  const char* extension;
};

constexpr std::array kFormats{
    FormatEntry{"float", OutputFormat::floatWav, SF_FORMAT_WAV, SF_FORMAT_FLOAT, 0, ".wav"},
    FormatEntry{"pcm16", OutputFormat::pcm16Wav, SF_FORMAT_WAV, SF_FORMAT_PCM_16, 16, ".wav"},
    FormatEntry{"pcm24", OutputFormat::pcm24Wav, SF_FORMAT_WAV, SF_FORMAT_PCM_24, 24, ".wav"},
    FormatEntry{"flac", OutputFormat::flac, SF_FORMAT_FLAC, SF_FORMAT_PCM_24, 24, ".flac"},
};

const FormatEntry& entryOf(OutputFormat format) {
  return *std::ranges::find(kFormats, format, &FormatEntry::format);
}

constexpr std::int64_t kLargestWavBytes = 4'000'000'000;  // a WAV header counts to 2^32; some room for chunks

int openForReading(const std::filesystem::path& path) {
  const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0) fail("cannot read {}: {}", printable(path), std::strerror(errno));
  struct stat status {};
  if (::fstat(fd, &status) == 0 && S_ISDIR(status.st_mode)) {
    ::close(fd);
    fail("cannot read {}: it is a folder", printable(path));
  }
  return fd;
}

/// The library's words as part of a line of ours.
std::string reason(const char* text) {
  std::string words = text;
  while (!words.empty() && (words.back() == '.' || words.back() == '\n' || words.back() == ' '))
    words.pop_back();
  return words;
}

}  // namespace

void CloseSound::operator()(sf_private_tag* file) const { sf_close(file); }

AudioReader::AudioReader(const std::filesystem::path& asked) : path(asked) {
  SF_INFO info{};
  file.reset(sf_open_fd(openForReading(path), SFM_READ, &info, SF_TRUE));
  if (!file)
    fail("cannot read {}: not a readable audio file ({})", printable(path), reason(sf_strerror(nullptr)));
  channelCount = info.channels;
  rate = info.samplerate;
  promised = std::max<std::int64_t>(info.frames, 0);
}

std::int64_t AudioReader::read(float* samples, std::int64_t frames) {
  const std::int64_t got = sf_readf_float(file.get(), samples, frames);
  if (got < frames && sf_error(file.get()) != SF_ERR_NO_ERROR)
    fail("cannot read {}: {}", printable(path), reason(sf_strerror(file.get())));
  return std::max<std::int64_t>(got, 0);
}

std::optional<OutputFormat> outputFormatOf(std::string_view word) {
  const auto at =
      std::ranges::find_if(kFormats, [&](const FormatEntry& entry) { return word == entry.word; });
  if (at == kFormats.end()) return std::nullopt;
  return at->format;
}

const char* extensionOf(OutputFormat format) { return entryOf(format).extension; }

AudioWriter::AudioWriter(const std::filesystem::path& asked, OutputFormat format, int rateHz, int channels,
                         std::int64_t expectedFrames)
    : path(asked),
      pending(asked),
      bits(entryOf(format).bits),
      isFlac(format == OutputFormat::flac),
      channelCount(channels) {
  const FormatEntry& entry = entryOf(format);
  const std::int64_t frameBytes = std::int64_t{channels} * (bits == 0 ? 4 : bits / 8);
  const bool large = entry.container == SF_FORMAT_WAV && expectedFrames > kLargestWavBytes / frameBytes;
  SF_INFO info{};
  info.samplerate = rateHz;
  info.channels = channels;
  info.format = (large ? SF_FORMAT_RF64 : entry.container) | entry.encoding;
  if (!sf_format_check(&info))
    fail("cannot write {}: {} does not hold {} channels at {} Hz; try --format float", printable(path),
         entry.word, channels, rateHz);
  file.reset(sf_open_fd(pending.descriptor(), SFM_WRITE, &info, SF_FALSE));
  if (!file) fail("cannot write {}: {}", printable(path), reason(sf_strerror(nullptr)));
  // The peak chunk carries the time of day: without it the same sound gives the same file.
  sf_command(file.get(), SFC_SET_ADD_PEAK_CHUNK, nullptr, SF_FALSE);
  if (large) sf_command(file.get(), SFC_RF64_AUTO_DOWNGRADE, nullptr, SF_TRUE);
}

void AudioWriter::failWriting(int error) const {
  const std::string why = error != 0 ? std::strerror(error) : reason(sf_strerror(file.get()));
  fail("cannot write {}: {}", printable(path), why);
}

void AudioWriter::write(const float* samples, std::int64_t frames) {
  errno = 0;
  writtenFrames += frames;
  if (bits == 0) {
    if (sf_writef_float(file.get(), samples, frames) != frames) failWriting(errno);
    return;
  }
  // Rounded here to the last bit of the format, then moved to the top of 32 bits, where the library only
  // cuts.
  const double scale = std::ldexp(1.0, bits - 1);
  std::vector<int> whole(static_cast<std::size_t>(frames * channelCount));
  for (std::size_t i = 0; i < whole.size(); ++i) {
    const double exact = static_cast<double>(samples[i]) * scale;
    const double held = exact == exact ? std::clamp(std::nearbyint(exact), -scale, scale - 1.0) : 0.0;
    if (std::abs(exact - held) > 0.5) ++clippedSamples;
    whole[i] = static_cast<int>(held) * (1 << (32 - bits));
  }
  if (sf_writef_int(file.get(), whole.data(), frames) != frames) failWriting(errno);
}

void AudioWriter::commit() {
  if (isFlac && writtenFrames == 0)  // the library leaves a file without even a header
    fail("cannot write {}: a FLAC file of no frames cannot be made; try --format float", printable(path));
  errno = 0;
  sf_write_sync(file.get());
  if (sf_error(file.get()) != SF_ERR_NO_ERROR) failWriting(errno);
  errno = 0;
  if (sf_close(file.release()) != 0)
    fail("cannot write {}: {}", printable(path),
         errno != 0 ? std::strerror(errno) : "the file could not be closed");
  pending.commit();
}

}  // namespace corvane::cli
