#pragma once

namespace corvane {

/// What a host adapter sees of an audio processor. [render] throughout.
class QDXBaseAudioProcessor {
 public:
  virtual ~QDXBaseAudioProcessor() = default;
  /// Channel tables; `inputs` up to four channels (main pair, key pair), `outputs` two. See CorvaneMonoEffect
  /// for what missing channels stand for.
  virtual void processFloat(const float* const* inputs, float* const* outputs, int frames) = 0;
  virtual void processDouble(const double* const* inputs, double* const* outputs, int frames) = 0;
  /// The host's bypass is on.
  virtual void processBypassedFloat(const float* const* inputs, float* const* outputs, int frames) = 0;
  virtual void processBypassedDouble(const double* const* inputs, double* const* outputs, int frames) = 0;
  virtual int getLatencySamples() = 0;
  virtual int getHalfSecondSamples() = 0;
  /// False if the rate had to be clamped.
  virtual bool setSampleRate(double hz) = 0;
  virtual void reset() = 0;
  /// Two places of the interface that this strip has no use for; both answer true.
  virtual bool spareOperation1() = 0;
  virtual bool spareOperation2() = 0;
  virtual void setParameter(int id, double value) = 0;
  /// Whether `id` is a meter; if so, its value 0..1.
  virtual bool getMeter(int id, double* value) = 0;
};

}  // namespace corvane
