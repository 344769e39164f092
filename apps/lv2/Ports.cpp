#include "lv2/Ports.h"

#include "core/ParameterBank.h"
#include "core/Rack.h"

namespace corvane::lv2 {

namespace {

constexpr int kInLevel = 0, kOutLevel = 1, kReduction = 2;  // offsets within a place's meters
constexpr double kMuchSpan = 4.0;  // highest over lowest value from which a slider should go by ratio

std::string nameOf(int id) {
  char text[kTextBytes];
  parameterName(id, text);
  return text;
}

/// "Comp:Makeup Gain" becomes comp_makeup_gain.
std::string symbolOf(std::string_view name) {
  std::string symbol;
  for (const char c : name) {
    const bool upper = c >= 'A' && c <= 'Z';
    const bool plain = (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9');
    symbol += upper ? static_cast<char>(c - 'A' + 'a') : plain ? c : '_';
  }
  return symbol;
}

/// Whether the low state of a switch says no more than that it is off.
bool readsAsOff(std::string_view word) {
  const std::string lowered = symbolOf(word);
  return word.empty() || word == "-" || lowered == "out" || lowered.ends_with("off");
}

Scale typeScale(int place) {
  std::vector<Choice> choices{{0, 0.0, "Off"}};
  if (place >= kFixedPlaces) {
    for (const ModuleFamily* family : moduleFamilies())
      for (const Variant& variant : family->variants) {
        const int index = family->firstInsertIndex + variant.type - 1;
        choices.push_back({index, index / 255.0, variant.name});
      }
  } else {
    for (const Variant& variant : familyOfKind(kRack[static_cast<std::size_t>(place)].kind).variants)
      choices.push_back({variant.type, variant.type / 15.0, variant.name});
  }
  return choiceScale(std::move(choices), 0.0);
}

Scale positionScale() {
  constexpr const char* kLetters[] = {"A", "B", "C", "D", "E", "F", "G", "H", "I"};
  std::vector<Choice> choices(kPlaces);
  for (int k = 0; k < kPlaces; ++k) choices[static_cast<std::size_t>(k)] = {k + 1, k / 8.0, kLetters[k]};
  return choiceScale(std::move(choices), 0.0);
}

void makeHead(ControlPort& port, int offset) {
  const double standard = parameterDefault(port.id);
  switch (offset) {
    case kTypeOffset:
      port.scale = typeScale(port.place);
      // defaults are stored as sixteenths: the state counts, not the nearest number
      port.scale.standard = static_cast<float>(port.place < kFixedPlaces ? decodeVariant(standard)
                                                                         : decodeInsertIndex(standard));
      break;
    case kPositionOffset:
      port.scale = positionScale();
      port.scale.standard = port.scale.physical(standard);
      break;
    case kSideChainOffset:
      port.scale = choiceScale({{0, 0.0, "Input"}, {1, 1.0, "Ext AUX"}}, standard);
      break;
    default: port.scale = toggleScale(standard);
  }
}

void makeOwn(ControlPort& port, const ModuleFamily& family, const Row& row) {
  port.scale = scaleOf(family, row);
  if (port.scale.form == Scale::Form::choice) {
    if (port.scale.choices.size() == 2 && readsAsOff(port.scale.choices.front().name))
      port.scale = toggleScale(row.defaultValue);
    return;
  }
  for (const auto& [p, value] : {std::pair{0.0, port.scale.lowest}, {1.0, port.scale.highest}}) {
    char shown[kTextBytes];
    valueText(family, row.offset, p, shown);
    const char* end = nullptr;
    readNumber(shown, &end);
    if (end == shown) port.stops.push_back({static_cast<int>(value), p, shown});
  }
  const bool ownLaw = row.taper.curve != Taper::Curve::linear && port.scale.form == Scale::Form::plain;
  port.logarithmic = ownLaw && port.scale.lowest > 0.0f &&
                     static_cast<double>(port.scale.highest / port.scale.lowest) > kMuchSpan;
}

ControlPort controlOf(int id) {
  ControlPort port{
      .id = id, .symbol = symbolOf(nameOf(id)), .name = nameOf(id), .place = placeOfParameter(id)};
  if (id == kProcessId) {
    port.scale = toggleScale(1.0);
    return port;
  }
  const Place& place = kRack[static_cast<std::size_t>(port.place)];
  const int offset = id - place.parameterBase;
  if (offset < kHeadSize) {
    makeHead(port, offset);
  } else if (port.place >= kFixedPlaces) {
    port.scale = bareScale(parameterDefault(id));
  } else {
    const ModuleFamily& family = familyOfKind(place.kind);
    makeOwn(port, family, *findRow(family, offset));
  }
  return port;
}

/// Reduction counts at a place that can hold a module which takes gain away.
bool hasReduction(int place) {
  const ModuleKind kind = kRack[static_cast<std::size_t>(place)].kind;
  return kind == ModuleKind::gate || kind == ModuleKind::compressor || kind == ModuleKind::limiter;
}

std::vector<MeterPort> makeMeters() {
  std::vector<MeterPort> meters;
  for (int k = 0; k < kPlaces; ++k) {
    const Place& place = kRack[static_cast<std::size_t>(k)];
    const std::string prefix = place.prefix;
    const auto add = [&](int offset, const char* what, bool reduction) {
      const std::string name = prefix + ":" + what;
      meters.push_back({place.meterBase + offset, symbolOf(name), name, k, reduction});
    };
    add(kInLevel, "In Level", false);
    add(kOutLevel, "Out Level", false);
    if (hasReduction(k)) add(kReduction, "Reduction", true);
  }
  meters.push_back({kTotalReductionMeterId, "total_reduction", "Total Reduction", kNoPlace, true});
  return meters;
}

Ports makePorts() {
  Ports made;
  made.controls.push_back(
      {.id = kEnabledId, .symbol = "enabled", .name = "Enabled", .scale = toggleScale(1.0)});
  for (int id = 0; id < kParameters; ++id)
    if (parameterKind(id) & kKindAnnounced) made.controls.push_back(controlOf(id));
  made.meters = makeMeters();
  return made;
}

}  // namespace

const Ports& ports() {
  static const Ports made = makePorts();
  return made;
}

std::string_view placeTitle(int place) {
  constexpr std::string_view kTitles[kPlaces] = {"Preamp",  "Filters", "Gate",     "Compressor", "Equaliser",
                                                 "Limiter", "Master",  "Insert X", "Insert Y"};
  return kTitles[place];
}

}  // namespace corvane::lv2
