#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "platform/aax/AAX_IHost.h"
#include "platform/aaxhost/HostSide.h"
#include "platform/aaxhost/Instance.h"
#include "platform/aaxhost/PrivateFields.h"

namespace corvane::aaxhost {

/// The record of an instance that its process function gets: a pointer for each field, and what stands behind
/// it. Everything here is the render thread's. [render]
class RenderContext {
 public:
  RenderContext(const Description& description, HostSide& host, PrivateFields& privateFields, Mode mode);

  /// Takes what control sent and points the fields to the block.
  void begin(const Block& block);
  void* const* record() const { return table.data(); }
  /// Publishes meters and private fields.
  void end();

 private:
  void takeValues(std::span<const PortWrite> writes);

  class Node final : public AAX_IMIDINode, public AAX_ITransport {
   public:
    const Transport* song = nullptr;
    AAX_ITransport* GetTransport() override { return song ? this : nullptr; }
    AAX_Result GetCurrentTempo(AAX_CTransportTempo* beatsPerMinute) const override;
    AAX_Result GetCurrentTickPosition(std::int64_t* ticks) const override;
    AAX_Result IsTransportPlaying(bool* playing) const override;
  };

  HostSide& host;
  PrivateFields& fields;
  const Mode mode;
  std::vector<void*> table;            ///< by field index
  std::vector<std::uint64_t> packets;  ///< by port, the last that came
  std::vector<int> portOfField;        ///< by field index, -1 where it is no data port
  std::vector<char> isOurs;            ///< by port: the render thread has written it, and does from then on
  float* inputs[2] = {};               ///< main, side chain
  float* outputs[1] = {};
  std::int32_t frames = 0, sideChainIndex = 0;
  float rate = 0.0f;
  Node transportNode, otherNode;
};

}  // namespace corvane::aaxhost
