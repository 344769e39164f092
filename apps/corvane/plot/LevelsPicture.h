#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "corvane/Render.h"
#include "corvane/plot/Sheet.h"

namespace corvane::plot {

/// What a rendering did over time, gathered block by block, coarse enough for hours of sound: lowest and
/// highest sample of each bin of all channels, and the strip's reduction.
class LevelTrace {
 public:
  struct Bin {
    float inputLow = 0.0F, inputHigh = 0.0F, outputLow = 0.0F, outputHigh = 0.0F;
    float reductionDb = 0.0F;  ///< the deepest
    void widen(const Bin& other);
  };

  void add(const cli::ChannelBlock& block);
  double seconds() const { return rateHz > 0 ? static_cast<double>(frames) / rateHz : 0.0; }
  /// Everything between two points of the whole, 0..1.
  Bin between(double from, double to) const;

 private:
  std::vector<Bin> bins;
  std::int64_t frames = 0;
  int rateHz = 0;
};

/// Draws waveform in, waveform out and gain reduction over time. Throws Failure.
void drawLevels(const LevelTrace& trace, const cli::RenderReport& report, const Caption& caption,
                const std::filesystem::path& path, std::optional<PictureSize> size = {});

}  // namespace corvane::plot
