#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/aax/AAX_IEffect.h"

namespace corvane::aaxhost {

// What a library told about itself, kept in the order in which it was told.

struct Property {
  std::int32_t id = 0;
  std::int64_t value = 0;
};

enum class FieldKind {
  AudioIn,
  AudioOut,
  BufferLength,
  SampleRate,
  SideChain,
  Meters,
  MidiNode,
  DataInPort,
  PrivateData,
};

/// Word for a kind, as a person reads it: "audio in", "data in port".
const char* fieldKindText(FieldKind kind);

/// One field of the algorithm.
struct Field {
  FieldKind kind = FieldKind::AudioIn;
  AAX_CFieldIndex index = 0;          ///< in the render context
  std::uint32_t bytes = 0;            ///< of a data port or private field
  bool buffered = false;              ///< data ports
  std::vector<AAX_CTypeID> meters{};  ///< of the meters field, in order
  AAX_EMIDINodeType midiType = AAX_eMIDINodeType_LocalInput;
  std::string midiName{};
  std::uint32_t channelMask = 0;
};

struct Meter {
  AAX_CTypeID id = 0;
  std::string name{};
  std::vector<Property> properties{};
  /// Holds the largest value since it was last read: the plain input and output meters.
  bool isPeak() const;
};

struct Resource {
  std::int32_t type = 0;
  std::string file{};
};

struct Description {
  std::string effectId{};  ///< reverse-domain identifier
  std::string manufacturer{};
  std::vector<std::string> packageNames{};  ///< long to short
  std::uint32_t packageVersion = 0;
  std::vector<std::string> names{};
  std::uint32_t category = 0;          ///< bit mask
  std::vector<Field> fields{};         ///< in order of declaration
  std::vector<Property> properties{};  ///< of the process function
  AAX_CProcessProc process = nullptr;
  AAX_CreateEffectParameters createParameters = nullptr;
  AAX_CreateEffectDirectData createDirectData = nullptr;  ///< may be missing
  AAX_CreateEffectGUI createGui = nullptr;                ///< may be missing
  std::vector<std::int32_t> factories{};                  ///< their ids, in order
  std::vector<Resource> resources{};
  std::vector<Meter> meters{};

  /// Value of a property of the process function, `otherwise` where it was not given.
  std::int64_t property(AAX_EProperty id, std::int64_t otherwise = 0) const;
};

/// Four characters of a type id.
std::string typeIdText(AAX_CTypeID id);
/// Type id of four characters; shorter texts are filled with blanks, longer ones give 0.
AAX_CTypeID typeIdOf(const std::string& text);

}  // namespace corvane::aaxhost
