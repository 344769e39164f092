#pragma once

#include <array>
#include <memory>
#include <optional>

#include "core/Rack.h"

namespace corvane {
class CorvaneMonoEffect;
}

namespace corvane::cli {

/// One strip, driven the way a host drives it: values as floats, taken by the strip at the start of a block
/// in rising order of id and only where they changed; audio as blocks of 32-bit floats; a bypass of the
/// host's.
///
/// Everything else of the program knows the strip through this class alone. Construction allocates and draws
/// the unit numbers of the preamps from a counter of the process: the order of construction is audible.
class StripRunner {
 public:
  explicit StripRunner(double rateHz);
  ~StripRunner();
  StripRunner(StripRunner&&) noexcept;
  StripRunner& operator=(StripRunner&&) noexcept;

  /// Normalised value of a host parameter; the strip hears of it at the next block.
  void setParameter(int id, double value);
  /// `key` may be null, then the strip keys on its input. `output` may be `input`. Linear, full scale 1.0.
  void processBlock(const float* input, const float* key, float* output, int frames, bool bypassed);
  /// Reading 0..1 after the last block; none for an id without a meter.
  std::optional<double> meter(int id);

 private:
  void deliverParameters();

  std::unique_ptr<CorvaneMonoEffect> strip;
  std::array<float, kParameters> values{};
  std::array<float, kParameters> seen{};  ///< what the strip was last given
};

}  // namespace corvane::cli
