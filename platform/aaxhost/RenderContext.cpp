#include "platform/aaxhost/RenderContext.h"

#include <algorithm>

namespace corvane::aaxhost {

namespace {
constexpr std::int32_t kSideChainPlace = 1;  // behind the one main channel
}

AAX_Result RenderContext::Node::GetCurrentTempo(AAX_CTransportTempo* beatsPerMinute) const {
  *beatsPerMinute = song->tempo;
  return AAX_SUCCESS;
}
AAX_Result RenderContext::Node::GetCurrentTickPosition(std::int64_t* ticks) const {
  *ticks = song->ticks;
  return AAX_SUCCESS;
}
AAX_Result RenderContext::Node::IsTransportPlaying(bool* playing) const {
  *playing = song->playing;
  return AAX_SUCCESS;
}

RenderContext::RenderContext(const Description& description, HostSide& hostSide, PrivateFields& privateFields,
                             Mode hostMode)
    : host(hostSide), fields(privateFields), mode(hostMode) {
  AAX_CFieldIndex last = 0;
  std::size_t ports = 0;
  for (const Field& field : description.fields) {
    last = std::max(last, field.index);
    if (field.kind == FieldKind::DataInPort) ++ports;
  }
  table.assign(static_cast<std::size_t>(last) + 1, nullptr);
  packets.assign(ports, 0);
  isOurs.assign(ports, 0);
  portOfField.assign(table.size(), -1);
  std::size_t port = 0;
  for (const Field& field : description.fields) {
    void*& at = table[static_cast<std::size_t>(field.index)];
    switch (field.kind) {
      case FieldKind::AudioIn: at = inputs; break;
      case FieldKind::AudioOut: at = outputs; break;
      case FieldKind::BufferLength: at = &frames; break;
      case FieldKind::SampleRate: at = &rate; break;
      case FieldKind::SideChain: at = &sideChainIndex; break;
      case FieldKind::Meters: at = host.meters().memory(); break;
      case FieldKind::MidiNode:
        at = static_cast<AAX_IMIDINode*>(field.midiType == AAX_eMIDINodeType_Transport ? &transportNode
                                                                                       : &otherNode);
        break;
      case FieldKind::DataInPort:
        portOfField[static_cast<std::size_t>(field.index)] = static_cast<int>(port);
        at = &packets[port++];
        break;
      case FieldKind::PrivateData: at = fields.memory(field.index); break;
    }
  }
}

void RenderContext::begin(const Block& block) {
  // The process function takes channels that it may write, and leaves its inputs alone.
  inputs[0] = const_cast<float*>(block.input);
  inputs[1] = const_cast<float*>(block.sideChain);
  outputs[0] = block.output;
  sideChainIndex = block.sideChain ? kSideChainPlace : 0;
  frames = std::max(block.frames, 0);
  rate = host.sampleRate();
  transportNode.song = block.transport;
  takeValues(block.writes);
  fields.beforeRender();
}

void RenderContext::takeValues(std::span<const PortWrite> writes) {
  for (const PortWrite& write : writes) {
    const auto field = static_cast<std::size_t>(write.field);
    if (field >= portOfField.size() || portOfField[field] < 0) continue;
    const auto port = static_cast<std::size_t>(portOfField[field]);
    packets[port] = write.bytes;
    isOurs[port] = 1;
  }
  const auto arrive = [this](std::uint32_t port, std::uint64_t bytes) {
    if (!isOurs[port]) packets[port] = bytes;
  };
  host.packets().take(arrive);
  if (mode == Mode::Offline) {  // control and render are one thread: what found no room can go now
    host.packets().flush();
    host.packets().take(arrive);
  }
}

void RenderContext::end() {
  transportNode.song = nullptr;
  host.meters().publish();
  fields.afterRender();
}

}  // namespace corvane::aaxhost
