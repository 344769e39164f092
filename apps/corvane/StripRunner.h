#pragma once

#include <memory>
#include <optional>
#include <string_view>

#include "corvane/Setting.h"
#include "platform/aaxhost/Instance.h"

namespace corvane::cli {

/// One strip: an instance of the plug-in, driven by this program as its host, offline.
///
/// Construction allocates and draws the unit numbers of the preamps from a counter of the process: the order
/// of construction is audible. Values are normalised, 0 to 1. A strip belongs to one thread at a time.
class StripRunner {
 public:
  /// Starts with the default setting. Throws Failure.
  explicit StripRunner(double rateHz = 48000.0);
  ~StripRunner();
  StripRunner(StripRunner&&) noexcept;
  StripRunner& operator=(StripRunner&&) noexcept;

  /// A person's edit in the window, answered by the strip's rules: a new module in an insert gets its
  /// defaults, a moved place shifts those between, at most one monitor is on.
  void edit(int id, double value);
  /// Takes a whole setting as a stored session would: no rule answers. An empty name leaves the name of the
  /// setting as it is.
  void load(const Setting& setting, std::string_view name = {});
  /// The whole state, to store or to give to another strip.
  aaxhost::Chunk state() const;
  /// Throws Failure, and nothing is changed, for a state that the plug-in does not take.
  void restore(const aaxhost::Chunk& state);
  /// What the host's parameters hold, automation included.
  Setting setting() const;
  /// For what only a whole host does.
  aaxhost::Instance& instance();

  /// A host's automation, without touch: heard by the next block, not part of the state.
  void automate(int id, double value);
  void setRate(double rateHz);
  /// `key` may be null, then the strip keys on its input. `output` may be `input`. Linear, full scale 1.0.
  void processBlock(const float* input, const float* key, float* output, int frames, bool bypassed);
  /// Reading 0..1 after the last block; none for an id without a meter.
  std::optional<double> meter(int id) const;

 private:
  struct Host;
  std::unique_ptr<Host> host;
};

/// Makes strips that all start alike. The first that it gives is the one on which the start was made, so that
/// making the start draws no unit numbers of its own.
class StripMaker {
 public:
  explicit StripMaker(StripRunner first);
  StripRunner make(double rateHz);
  /// What every strip starts with.
  const aaxhost::Chunk& start() const { return state; }

 private:
  const aaxhost::Chunk state;
  std::optional<StripRunner> ready;
};

}  // namespace corvane::cli
