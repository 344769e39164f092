#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <vector>

#include "control/EditorDesk.h"
#include "corvane/AudioFiles.h"
#include "corvane/Render.h"
#include "corvane/StripRunner.h"

namespace corvane::cli::session {

/// What a run of sound was.
struct RunReport {
  std::int64_t frames = 0;
  LevelSum output{};
  std::uint64_t checksum = 0;  ///< of the output's bits; equal sums, equal sound
};

/// One strip, driven as its host and its window drive it. Time passes only when told: the clock of the undo
/// steps stands still but for `run` and `desk().advanceClock`, so a script always answers the same.
class Session {
 public:
  /// `input` is what `run` renders, its first channel, and gives the rate; without one `run` renders silence.
  /// Throws Failure.
  Session(const std::optional<std::filesystem::path>& input, double rateHz, int blockFrames);

  StripRunner& strip() { return runner; }
  aaxhost::Instance& instance() { return runner.instance(); }
  EditorDesk& desk() { return *window; }
  /// Value that the host holds for a parameter of the bank; it is the one that sounds.
  double held(int id);

  /// Something is done at the window, and the host answers what it was asked.
  void atWindow(const std::function<void(EditorDesk&)>& operation);
  /// Renders and lets the clock go on. Throws Interrupted.
  RunReport run(double seconds);

  bool bypassed = false;  ///< by the host

 private:
  void readInput(std::vector<float>& block);
  std::int64_t millisecondsAt(std::int64_t frame) const;

  std::optional<AudioReader> input;
  const double rate;
  StripRunner runner;
  EditorDesk* const window;
  const int blockFrames;
  std::vector<float> interleaved;
  std::int64_t framesRun = 0;
};

}  // namespace corvane::cli::session
