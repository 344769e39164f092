#pragma once

#include "core/ParameterBank.h"
#include "core/Rack.h"
#include "host/Fields.h"

namespace corvane {

/// Transport as the host last told it.
struct TransportRecord {
  static constexpr std::uint32_t kChanged = 0x1, kPlaying = 0x2, kPositionValid = 0x200, kTempoValid = 0x400;
  double positionQuarters = 0.0;  ///< quarter notes
  double tempo = 0.0;             ///< beats per minute
  std::uint32_t flags = 0;
};

/// Where a processor finds the transport. Nothing in the strip reads it.
class QDXMasterAudioProcessor {
 public:
  virtual ~QDXMasterAudioProcessor() = default;
  virtual const TransportRecord* getTransport() const = 0;
};

namespace host {

/// The adapter of an instance, living in the shared block. [render]
class QDX_AAX_MasterAudioEffectWrapper final : public QDXMasterAudioProcessor {
 public:
  const TransportRecord* getTransport() const override { return &record; }
  TransportRecord record;
};

inline constexpr int kFirstCommandId = kParameters;
inline constexpr int kCommands = kIdentifiers - kParameters;  // ids 360 .. 818

/// What the render thread has taken, and what waits for it. The host's accessor copies `commandValues` in
/// between two renders; everything else is the render thread's own.
struct SharedValues {
  float seenValues[kParameters];   ///< last given to the processor, by id
  float commandValues[kCommands];  ///< to hand over, by id - 360; negative for none
};

/// Private field of an instance.
struct SharedBlock : SharedValues {
  QDX_AAX_MasterAudioEffectWrapper adapter;
};

}  // namespace host

}  // namespace corvane
