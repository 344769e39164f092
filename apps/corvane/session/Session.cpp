#include "corvane/session/Session.h"

#include <algorithm>
#include <bit>
#include <cmath>

#include "core/ParameterBank.h"
#include "corvane/Failure.h"
#include "corvane/Interrupt.h"
#include "platform/aaxhost/AaxHost.h"

namespace corvane::cli::session {

namespace {

/// Fowler, Noll, Vo, 64 bits: order and every bit count.
class Checksum {
 public:
  void add(float sample) {
    const auto bits = std::bit_cast<std::uint32_t>(sample);
    for (int shift = 0; shift < 32; shift += 8) sum = (sum ^ (bits >> shift & 0xff)) * 0x100000001b3;
  }
  std::uint64_t value() const { return sum; }

 private:
  std::uint64_t sum = 0xcbf29ce484222325;
};

/// The window's desk of the instance, its clock held.
EditorDesk* deskOf(const aaxhost::Instance& instance) {
  EditorDesk* desk = nullptr;
  std::uint32_t written = 0;
  const AAX_Result result =
      instance.effectParameters().GetCustomData(EditorDesk::kCustomDataId, sizeof desk, &desk, &written);
  if (result != AAX_SUCCESS || written != sizeof desk || !desk)
    fail("{} has no window's desk for a session: it is of another version",
         printable(instance.library().file()));
  desk->holdClock();
  return desk;
}

std::optional<AudioReader> opened(const std::optional<std::filesystem::path>& path) {
  if (!path) return std::nullopt;
  return std::optional<AudioReader>(std::in_place, *path);
}

}  // namespace

Session::Session(const std::optional<std::filesystem::path>& inputFile, double rateHz, int block)
    : input(opened(inputFile)),
      rate(input ? input->rateHz() : rateHz),
      runner(rate),
      window(deskOf(runner.instance())),
      blockFrames(block) {}

double Session::held(int id) {
  double value = 0.0;
  instance().value(parameterIdentifier(id), &value);
  return value;
}

void Session::atWindow(const std::function<void(EditorDesk&)>& operation) {
  const aaxhost::Instance::ControlScope turn(instance());
  operation(*window);
  if (!instance().settle()) fail("the strip's rules never come to rest");
}

RunReport Session::run(double seconds) {
  RunReport report;
  Checksum checksum;
  const auto frames = static_cast<std::int64_t>(std::llround(seconds * rate));
  std::vector<float> block;
  while (report.frames < frames) {
    stopIfInterrupted();
    block.assign(static_cast<std::size_t>(std::min<std::int64_t>(blockFrames, frames - report.frames)), 0.0f);
    readInput(block);
    runner.processBlock(block.data(), nullptr, block.data(), static_cast<int>(block.size()), bypassed);
    report.output.add(block);
    for (const float sample : block) checksum.add(sample);
    report.frames += std::ssize(block);
  }
  report.checksum = checksum.value();
  window->advanceClock(
      static_cast<std::uint32_t>(millisecondsAt(framesRun + frames) - millisecondsAt(framesRun)));
  framesRun += frames;
  return report;
}

std::int64_t Session::millisecondsAt(std::int64_t frame) const {
  return static_cast<std::int64_t>(static_cast<double>(frame) * 1000.0 / rate);
}

/// The first channel of the file; behind its end the block stays silent.
void Session::readInput(std::vector<float>& block) {
  if (!input) return;
  const auto channels = static_cast<std::size_t>(input->channels());
  interleaved.resize(block.size() * channels);
  const auto read = static_cast<std::size_t>(input->read(interleaved.data(), std::ssize(block)));
  for (std::size_t i = 0; i < read; ++i) block[i] = interleaved[i * channels];
}

}  // namespace corvane::cli::session
