#pragma once

#include <array>
#include <cstdint>
#include <memory>

#include "core/QDXBaseAudioProcessor.h"
#include "core/Rack.h"

namespace corvane {

class QDXMasterAudioProcessor;

/// The audio side of the strip: 57 modules made once, the rack of nine places, the block loop.
///
/// A host block is cut into sub-blocks of at most 64 samples; each runs in place through the modules in order
/// of position. The strip reports no latency and is mono: one channel, written to every output given.
/// Missing channels: input 1 stands for channel 1 and falls back to channel 0; inputs 2 and 3 are the
/// external key and fall back to the main input; a missing second output falls back to the first.
///
/// Construction allocates; everything after it runs on the render thread and neither allocates nor waits.
class CorvaneMonoEffect final : public QDXBaseAudioProcessor {
 public:
  CorvaneMonoEffect();
  ~CorvaneMonoEffect() override;

  void processFloat(const float* const* inputs, float* const* outputs, int frames) override;
  void processDouble(const double* const* inputs, double* const* outputs, int frames) override;
  void processBypassedFloat(const float* const* inputs, float* const* outputs, int frames) override;
  void processBypassedDouble(const double* const* inputs, double* const* outputs, int frames) override;
  int getLatencySamples() override { return 0; }
  int getHalfSecondSamples() override { return static_cast<int>(sampleRate * 0.5); }
  bool setSampleRate(double hz) override;
  void reset() override;
  bool spareOperation1() override { return true; }
  bool spareOperation2() override { return true; }
  void setParameter(int id, double value) override;
  bool getMeter(int id, double* value) override;

  /// Transport record of the adapter; nothing in the strip reads it.
  QDXMasterAudioProcessor* masterProcessor = nullptr;

 private:
  struct Insert {
    std::array<std::unique_ptr<StripEffect>, 256> modulePool;
    std::int32_t index = 0;  ///< insert index in force
    std::array<double, 48>
        parameterCache{};  ///< every value that passed, by offset, whatever stands in the place
    bool hasGainReduction = false;
    double reduction = 0.0;
  };

  void switchInsert(int place, int insertIndex);
  void setPosition(int place, double value);
  void setMonitor(int place, bool on);
  void applyMasks();
  void rebuildChain();
  void runChain(int frames);
  void crossfade(int frames);
  void updateReductions();
  void resetMetersOfPlaces();
  double reductionOf(int place, int meterId);

  template <typename Sample>
  void processNormal(const Sample* const* inputs, Sample* const* outputs, int frames);
  template <typename Sample>
  void processBypassed(const Sample* const* inputs, Sample* const* outputs, int frames);
  template <typename Sample>
  void plainPath(const Sample* const* inputs, Sample* const* outputs, int frames);
  template <typename Sample>
  void fullPath(const Sample* const* inputs, Sample* const* outputs, int frames);

  double sampleRate = kLowestRateHz;
  std::int32_t processOn = 1;
  double totalGainReduction = 0.0;
  double compressorReduction = 0.0, limiterReduction = 0.0;
  alignas(32) double audio[4][kBlockFrames] = {};
  std::array<double*, 8> inputTable{}, outputTable{};
  std::array<std::unique_ptr<StripEffect>, kFixedPlaces> fixedModules;
  std::array<Insert, 2> inserts;
  std::array<StripEffect*, kPlaces> place{};      ///< what stands in each place; inserts may be null
  std::array<StripEffect*, kPlaces> chain{};      ///< by position; derived from `position`
  std::int32_t chainRequest = 0, chainBuilt = 0;  ///< modulo 256; the chain is stale while they differ
  std::array<std::int32_t, kPlaces> position{};
  std::int32_t soloMask = 0, muteMask = 0, monitorMask = 0;  ///< bit k: place k
  bool monitorActive = false;
  StripEffect* monitoredModule = nullptr;  ///< where the chain stops
  bool fadeIn = false, fadeOut = false;
  std::int32_t lastProcessOn = 1;
  std::int32_t wasProcessing = 1;
  alignas(32) double dry[2][kBlockFrames] = {};
  double fadeGain = 1.0;  ///< 0..1, share of the processed signal
  double fadeStep = 0.0;  ///< per sample
};

}  // namespace corvane
