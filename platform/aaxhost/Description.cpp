#include "platform/aaxhost/Description.h"

#include <algorithm>

namespace corvane::aaxhost {

namespace {

std::int64_t valueOf(const std::vector<Property>& properties, AAX_EProperty id, std::int64_t otherwise) {
  const auto at =
      std::find_if(properties.begin(), properties.end(), [id](const Property& p) { return p.id == id; });
  return at == properties.end() ? otherwise : at->value;
}

}  // namespace

const char* fieldKindText(FieldKind kind) {
  switch (kind) {
    case FieldKind::AudioIn: return "audio in";
    case FieldKind::AudioOut: return "audio out";
    case FieldKind::BufferLength: return "buffer length";
    case FieldKind::SampleRate: return "sample rate";
    case FieldKind::SideChain: return "side-chain in";
    case FieldKind::Meters: return "meters";
    case FieldKind::MidiNode: return "MIDI node";
    case FieldKind::DataInPort: return "data in port";
    case FieldKind::PrivateData: return "private data";
  }
  return "";
}

bool Meter::isPeak() const {
  constexpr std::int64_t kInput = 0, kOutput = 1, kNone = -1;
  const std::int64_t type = valueOf(properties, AAX_eProperty_Meter_Type, kNone);
  return (type == kInput || type == kOutput) && valueOf(properties, AAX_eProperty_Meter_Custom, 0) == 0;
}

std::int64_t Description::property(AAX_EProperty id, std::int64_t otherwise) const {
  return valueOf(properties, id, otherwise);
}

std::string typeIdText(AAX_CTypeID id) {
  std::string text;
  for (int shift = 24; shift >= 0; shift -= 8) text += static_cast<char>(id >> shift & 0xFF);
  return text;
}

AAX_CTypeID typeIdOf(const std::string& text) {
  if (text.size() > 4) return 0;
  AAX_CTypeID id = 0;
  for (std::size_t k = 0; k < 4; ++k)
    id = id << 8 | static_cast<unsigned char>(k < text.size() ? text[k] : ' ');
  return id;
}

}  // namespace corvane::aaxhost
