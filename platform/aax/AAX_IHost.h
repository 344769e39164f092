#pragma once

#include "platform/aax/AAX.h"

// What a host offers to a living instance. The host implements these.

/// Touch, set, release; answers come back later, through the parameters object's update. [control]
class AAX_IAutomationDelegate {
 public:
  virtual ~AAX_IAutomationDelegate() = default;
  virtual AAX_Result RegisterParameter(AAX_CParamID id) = 0;
  virtual AAX_Result PostTouchRequest(AAX_CParamID id) = 0;
  /// Takes the place of an earlier request for the same parameter that is still to be answered; one for the
  /// value that the host holds ends there.
  virtual AAX_Result PostSetValueRequest(AAX_CParamID id, double normalised) = 0;
  virtual AAX_Result PostReleaseRequest(AAX_CParamID id) = 0;
  /// Whether an update under way carries a touch.
  virtual AAX_Result GetTouchState(AAX_CParamID id, AAX_CBoolean* touched) = 0;
};

/// [control]
class AAX_IController {
 public:
  virtual ~AAX_IController() = default;
  virtual AAX_Result GetSampleRate(float* hz) const = 0;
  virtual AAX_Result GetSignalLatency(std::int32_t* samples) const = 0;
  virtual AAX_Result SetSignalLatency(std::int32_t samples) = 0;
  /// A packet for a data port, to be held by the next render.
  virtual AAX_Result PostPacket(AAX_CFieldIndex field, const void* payload, std::uint32_t size) = 0;
  /// Last published value of a meter; peak meters start again after it.
  virtual AAX_Result GetCurrentMeterValue(AAX_CTypeID meter, float* value) const = 0;
};

/// Copies of private fields while audio runs; a whole field never tears. [control]
class AAX_IPrivateDataAccess {
 public:
  virtual ~AAX_IPrivateDataAccess() = default;
  virtual AAX_Result ReadPortDirect(AAX_CFieldIndex field, std::uint32_t offset, std::uint32_t size,
                                    void* buffer) = 0;
  virtual AAX_Result WritePortDirect(AAX_CFieldIndex field, std::uint32_t offset, std::uint32_t size,
                                     const void* buffer) = 0;
};

/// [render]
class AAX_ITransport {
 public:
  virtual ~AAX_ITransport() = default;
  virtual AAX_Result GetCurrentTempo(AAX_CTransportTempo* beatsPerMinute) const = 0;
  /// 960000 to the quarter note.
  virtual AAX_Result GetCurrentTickPosition(std::int64_t* ticks) const = 0;
  virtual AAX_Result IsTransportPlaying(bool* playing) const = 0;
};

/// What stands in a MIDI field of the render context.
class AAX_IMIDINode {
 public:
  virtual ~AAX_IMIDINode() = default;
  virtual AAX_ITransport* GetTransport() = 0;
};
