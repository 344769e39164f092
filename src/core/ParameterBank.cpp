#include "core/ParameterBank.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>
#include <string>

#include "core/Rack.h"

namespace corvane {

namespace {

constexpr std::array kHeadNames{"Type", "Position", "Mute", "Solo", "Side Chain", "Monitor"};

const Place& placeAt(int place) { return kRack[static_cast<std::size_t>(place)]; }

bool isFixed(int place) { return place >= 0 && place < kFixedPlaces; }

/// Row of an own parameter of a fixed place; null for any other id.
const Row* ownRow(int id) {
  const int place = placeOfParameter(id);
  if (!isFixed(place)) return nullptr;
  const int offset = id - placeAt(place).parameterBase;
  return offset >= kFirstOwnOffset ? findRow(familyOfKind(placeAt(place).kind), offset) : nullptr;
}

void format(char* text, const char* pattern, int number) { std::snprintf(text, kTextBytes, pattern, number); }

void meterName(int id, char* text) {
  const int place = placeOfMeter(id);
  const int index = id - placeAt(place).meterBase;
  if (isFixed(place))
    std::strcpy(text, familyOfKind(placeAt(place).kind).meters[static_cast<std::size_t>(index)]);
  else
    std::snprintf(text, kTextBytes, "%s:Mtr%d", placeAt(place).prefix, index);
}

void groupName(int place, int offset, int id, char* text) {
  const char* prefix = placeAt(place).prefix;
  if (offset < kHeadSize)
    std::snprintf(text, kTextBytes, "%s:%s", prefix, kHeadNames[static_cast<std::size_t>(offset)]);
  else if (offset < kFirstOwnOffset)
    format(text, "- [%d]", id);
  else if (!isFixed(place))
    std::snprintf(text, kTextBytes, "%s:Prm%02d", prefix, offset - kFirstOwnOffset + 1);
  else if (const Row* row = ownRow(id))
    std::strcpy(text, row->name);
  else
    std::snprintf(text, kTextBytes, "%s:-[%d]", prefix, offset);
}

constexpr std::size_t kIdentifierLength = 31;  // what hosts keep
using Identifiers = std::array<std::array<char, kIdentifierLength + 1>, kIdentifiers>;

const Identifiers& identifiers() {
  static const Identifiers table = [] {
    Identifiers made;
    for (int id = 0; id < kIdentifiers; ++id) {
      char name[kTextBytes];
      parameterName(id, name);
      std::string text = std::to_string(id) + ": " + name;
      text.resize(std::min(text.size(), kIdentifierLength));
      std::strcpy(made[static_cast<std::size_t>(id)].data(), text.c_str());
    }
    return made;
  }();
  return table;
}

}  // namespace

int parameterKind(int id) {
  if (id == kProcessId) return kKindAnnounced | kKindStored;
  if (id == kTotalReductionMeterId || placeOfMeter(id) >= 0) return kKindMeter;
  const int place = placeOfParameter(id);
  if (place < 0) return 0;
  const int offset = id - placeAt(place).parameterBase;
  const bool used =
      offset < kHeadSize || (isFixed(place) ? ownRow(id) != nullptr : offset >= kFirstOwnOffset);
  return used ? kKindAnnounced | kKindStored : 0;
}

void parameterName(int id, char* text) {
  if (id == kProcessId)
    std::strcpy(text, "Process");
  else if (id == kTotalReductionMeterId)
    std::strcpy(text, "Gain-Reduction Meter");
  else if (placeOfMeter(id) >= 0)
    meterName(id, text);
  else if (const int place = placeOfParameter(id); place >= 0)
    groupName(place, id - placeAt(place).parameterBase, id, text);
  else
    format(text, (id >= 1 && id <= 15) || (id >= 352 && id <= 359) ? "- [%d]" : "_dev_ %d", id);
}

int parameterSteps(int id) {
  if (id == kProcessId) return 1;
  const int place = placeOfParameter(id);
  if (place < 0) return 0;
  const int offset = id - placeAt(place).parameterBase;
  if (offset == kTypeOffset) return isFixed(place) ? 15 : 256;
  if (offset == kPositionOffset) return 8;
  if (offset < kHeadSize) return 1;
  const Row* row = ownRow(id);
  return row ? row->steps : 0;
}

double parameterDefault(int id) {
  if (id == kProcessId) return 1.0;
  const int place = placeOfParameter(id);
  if (place < 0) return 0.0;
  const int offset = id - placeAt(place).parameterBase;
  if (offset == kTypeOffset) return placeAt(place).typeDefault;
  if (offset == kPositionOffset) return place / 8.0;
  const Row* row = ownRow(id);
  return row ? row->defaultValue : 0.0;
}

const char* parameterIdentifier(int id) { return identifiers()[static_cast<std::size_t>(id)].data(); }

int parameterIdOf(const char* identifier) {
  const auto& table = identifiers();
  for (int id = 0; id < kIdentifiers; ++id)
    if (std::strcmp(table[static_cast<std::size_t>(id)].data(), identifier) == 0) return id;
  return -1;
}

}  // namespace corvane
