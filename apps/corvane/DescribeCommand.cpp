#include "corvane/DescribeCommand.h"

#include <fmt/ranges.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <nlohmann/json.hpp>

#include "corvane/Failure.h"
#include "corvane/PluginLibrary.h"

namespace corvane::cli {

namespace {

using aaxhost::Description;
using aaxhost::Field;
using aaxhost::FieldKind;
using aaxhost::Meter;
using aaxhost::Property;
using Json = nlohmann::ordered_json;

/// What a property of the process function means, where that is known; "" for a bare number.
const char* propertyName(std::int32_t id) {
  switch (id) {
    case AAX_eProperty_ManufacturerID: return "manufacturer";
    case AAX_eProperty_ProductID: return "product";
    case AAX_eProperty_PlugInID_Native: return "native plug-in";
    case AAX_eProperty_PlugInID_AudioSuite: return "offline plug-in";
    case AAX_eProperty_InputStemFormat: return "input stem format";
    case AAX_eProperty_OutputStemFormat: return "output stem format";
    default: return "";
  }
}

/// Four letters where the number is made of such, else the number.
Json shownValue(const Property& property) {
  const std::string letters = aaxhost::typeIdText(static_cast<AAX_CTypeID>(property.value));
  const bool isWord = std::ranges::all_of(letters, [](char c) { return c >= ' ' && c <= '~'; });
  return isWord ? Json(letters) : Json(property.value);
}

Json asJson(const std::vector<Property>& properties) {
  auto list = Json::array();
  for (const Property& property : properties) {
    Json entry = {{"id", property.id}, {"value", shownValue(property)}};
    if (*propertyName(property.id)) entry["name"] = propertyName(property.id);
    list.push_back(std::move(entry));
  }
  return list;
}

Json asJson(const Field& field) {
  Json entry = {{"field", field.index}, {"kind", aaxhost::fieldKindText(field.kind)}};
  switch (field.kind) {
    case FieldKind::Meters:
      entry["meters"] = Json::array();
      for (const AAX_CTypeID id : field.meters) entry["meters"].push_back(aaxhost::typeIdText(id));
      break;
    case FieldKind::MidiNode:
      entry["node"] = field.midiType == AAX_eMIDINodeType_Transport ? "transport" : "local input";
      entry["channels"] = field.channelMask;
      entry["name"] = field.midiName;
      break;
    case FieldKind::DataInPort: entry["buffered"] = field.buffered; [[fallthrough]];
    case FieldKind::PrivateData: entry["bytes"] = field.bytes; break;
    default: break;
  }
  return entry;
}

Json asJson(const aaxhost::Library& library) {
  const Description& told = library.description();
  Json whole = {{"library", printable(library.file().string())},
                {"effect", told.effectId},
                {"names", told.names},
                {"manufacturer", told.manufacturer},
                {"packages", told.packageNames},
                {"version", told.packageVersion},
                {"category", told.category},
                {"factories", told.factories},
                {"resources", Json::array()},
                {"properties", asJson(told.properties)},
                {"fields", Json::array()},
                {"meters", Json::array()}};
  for (const auto& resource : told.resources)
    whole["resources"].push_back({{"type", resource.type}, {"file", resource.file}});
  for (const Field& field : told.fields) whole["fields"].push_back(asJson(field));
  for (const Meter& meter : told.meters)
    whole["meters"].push_back({{"id", aaxhost::typeIdText(meter.id)},
                               {"name", meter.name},
                               {"properties", asJson(meter.properties)}});
  return whole;
}

// As a page

bool isLike(const Field& field, const Field& next) {
  return next.kind == FieldKind::DataInPort && field.kind == FieldKind::DataInPort &&
         next.bytes == field.bytes && next.buffered == field.buffered;
}

std::string argumentsOf(const Field& field) {
  switch (field.kind) {
    case FieldKind::Meters: return fmt::format("{} meters, in the order below", field.meters.size());
    case FieldKind::MidiNode: return fmt::format("\"{}\", channels {:#x}", field.midiName, field.channelMask);
    case FieldKind::DataInPort:
      return fmt::format("{} bytes, {}", field.bytes, field.buffered ? "buffered" : "not buffered");
    case FieldKind::PrivateData: return fmt::format("{} bytes", field.bytes);
    default: return "";
  }
}

/// Without the blanks behind an empty last column.
void printRow(std::string row, Console& console) {
  row.resize(row.find_last_not_of(' ') + 1);
  console.print("{}\n", row);
}

/// One line a field; ports of one kind in a row share a line.
void printFields(const std::vector<Field>& fields, Console& console) {
  console.print("\nFields of the algorithm, in order\n");
  for (std::size_t k = 0; k < fields.size(); ++k) {
    const Field& first = fields[k];
    while (k + 1 < fields.size() && isLike(first, fields[k + 1]) &&
           fields[k + 1].index == fields[k].index + 1)
      ++k;
    const std::string numbers = first.index == fields[k].index
                                    ? std::to_string(first.index)
                                    : fmt::format("{} to {}", first.index, fields[k].index);
    printRow(
        fmt::format("  {:<9}  {:<13}  {}", numbers, aaxhost::fieldKindText(first.kind), argumentsOf(first)),
        console);
  }
}

std::string propertyWords(const Property& property) {
  const Json value = shownValue(property);
  return fmt::format("{} = {}", property.id, value.is_string() ? value.get<std::string>() : value.dump());
}

void printPage(const aaxhost::Library& library, Console& console) {
  const Description& told = library.description();
  console.print("{:<14}{}\n", "library", printable(library.file().string()));
  console.print("{:<14}{}\n", "effect", told.effectId);
  console.print("{:<14}{}\n", "name", fmt::join(told.names, ", "));
  console.print("{:<14}{}\n", "manufacturer", told.manufacturer);
  for (const std::string& name : told.packageNames) console.print("{:<14}{}\n", "package", name);
  console.print("{:<14}{}\n", "version", told.packageVersion);
  console.print("{:<14}{}\n", "category", told.category);
  console.print("{:<14}{}\n", "factories", fmt::join(told.factories, ", "));
  for (const auto& resource : told.resources)
    console.print("{:<14}type {}, {}\n", "resource", resource.type, resource.file);
  console.print("\nProperties of the process function, in order\n");
  for (const Property& property : told.properties)
    printRow(fmt::format("  {:<12}  {}", propertyWords(property), propertyName(property.id)), console);
  printFields(told.fields, console);
  console.print("\nMeters, in order, with their properties\n");
  for (const Meter& meter : told.meters) {
    std::vector<std::string> words;
    for (const Property& property : meter.properties) words.push_back(propertyWords(property));
    console.print("  {}  {:<13}  {}\n", aaxhost::typeIdText(meter.id), meter.name, fmt::join(words, ", "));
  }
}

}  // namespace

void addDescribeCommand(CLI::App& app, DescribeOptions& o) {
  CLI::App* describe = app.add_subcommand("describe", "Prints what the plug-in tells a host about itself");
  describe->add_flag("--json", o.json, "For machines, every field on its own");
  describe->footer(
      "Examples:\n  corvane describe\n  corvane describe --json | jq '.meters | length'\n"
      "  CORVANE_PLUGIN=/other/place.aaxplugin corvane describe");
}

int runDescribe(const DescribeOptions& options, Console& console) {
  const auto& library = pluginLibrary();
  if (options.json)
    console.print("{}\n", asJson(*library).dump(2));
  else
    printPage(*library, console);
  return kDone;
}

}  // namespace corvane::cli
