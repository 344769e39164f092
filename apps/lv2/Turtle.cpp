#include "lv2/Turtle.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <iterator>

#include "control/FactoryBank.h"
#include "core/ParameterBank.h"
#include "core/Rack.h"
#include "lv2/Ports.h"

namespace corvane::lv2 {

namespace {

constexpr const char* kPrefixes = R"(@prefix atom: <http://lv2plug.in/ns/ext/atom#> .
@prefix doap: <http://usefulinc.com/ns/doap#> .
@prefix foaf: <http://xmlns.com/foaf/0.1/> .
@prefix log: <http://lv2plug.in/ns/ext/log#> .
@prefix lv2: <http://lv2plug.in/ns/lv2core#> .
@prefix pg: <http://lv2plug.in/ns/ext/port-groups#> .
@prefix pprops: <http://lv2plug.in/ns/ext/port-props#> .
@prefix pset: <http://lv2plug.in/ns/ext/presets#> .
@prefix rdf: <http://www.w3.org/1999/02/22-rdf-syntax-ns#> .
@prefix rdfs: <http://www.w3.org/2000/01/rdf-schema#> .
@prefix state: <http://lv2plug.in/ns/ext/state#> .
@prefix units: <http://lv2plug.in/ns/extensions/units#> .
@prefix urid: <http://lv2plug.in/ns/ext/urid#> .

)";

constexpr int kMinorVersion = CORVANE_MINOR_VERSION, kMicroVersion = CORVANE_PATCH_VERSION;
constexpr std::array kPluginUris{kPluginUri, kSideChainPluginUri};

template <typename... Args>
void add(std::string& text, fmt::format_string<Args...> pattern, Args&&... args) {
  fmt::format_to(std::back_inserter(text), pattern, std::forward<Args>(args)...);
}

/// A decimal that reads back as the same float; Turtle tells decimals from integers by their point.
std::string decimal(float value) {
  std::string text = fmt::format("{}", value);
  if (text.find('e') != text.npos) text = fmt::format("{:.9f}", value);
  return text.find('.') == text.npos ? text + ".0" : text;
}

std::string quoted(std::string_view text) {
  std::string out = "\"";
  for (const char c : text) {
    if (c == '"' || c == '\\') out += '\\';
    out += c;
  }
  return out + '"';
}

/// "Drums" becomes drums: part of a name of a file or a node.
std::string slug(std::string_view text) {
  std::string out;
  for (const char c : text) {
    const bool upper = c >= 'A' && c <= 'Z';
    const bool plain = (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9');
    out += upper ? static_cast<char>(c - 'A' + 'a') : plain ? c : '-';
  }
  return out;
}

// Groups

std::string groupUri(std::string_view name) { return fmt::format("<{}#{}-group>", kPluginUri, name); }

std::string placeGroup(int place) { return groupUri(slug(kRack[static_cast<std::size_t>(place)].prefix)); }

void addGroups(std::string& text) {
  add(text, "{}\n\ta pg:MonoGroup , pg:InputGroup ;\n\tlv2:symbol \"main_in\" ;\n\tlv2:name \"Input\" .\n\n",
      groupUri("main-in"));
  add(text,
      "{}\n\ta pg:MonoGroup , pg:OutputGroup ;\n\tlv2:symbol \"main_out\" ;\n\tlv2:name \"Output\" ;\n"
      "\tpg:source {} .\n\n",
      groupUri("main-out"), groupUri("main-in"));
  add(text,
      "{}\n\ta pg:MonoGroup , pg:InputGroup ;\n\tlv2:symbol \"key\" ;\n\tlv2:name \"Side Chain\" ;\n"
      "\tpg:sideChainOf {} .\n\n",
      groupUri("key"), groupUri("main-in"));
  for (int place = 0; place < kPlaces; ++place)
    add(text, "{}\n\ta pg:Group ;\n\tlv2:symbol \"{}\" ;\n\tlv2:name \"{}\" .\n\n", placeGroup(place),
        slug(kRack[static_cast<std::size_t>(place)].prefix), placeTitle(place));
}

// Ports

std::string unitOf(std::string_view unit) {
  if (unit == "dB") return "units:db";
  if (unit == "Hz") return "units:hz";
  if (unit == "ms") return "units:ms";
  if (unit == "%") return "units:pc";
  return fmt::format("[ a units:Unit ; rdfs:label {0} ; units:symbol {0} ; units:render {1} ]", quoted(unit),
                     quoted(fmt::format("%f{}", unit)));
}

void addAudioPort(std::string& text, const char* direction, std::uint32_t index, const char* symbol,
                  const char* name, const char* group, const char* more = "") {
  add(text,
      "\t\ta lv2:AudioPort , lv2:{} ;\n\t\tlv2:index {} ;\n\t\tlv2:symbol \"{}\" ;\n\t\tlv2:name \"{}\" ;\n{}"
      "\t\tpg:group {}\n",
      direction, index, symbol, name, more, groupUri(group));
}

void addRange(std::string& text, float standard, float lowest, float highest) {
  add(text, " ;\n\t\tlv2:default {} ;\n\t\tlv2:minimum {} ;\n\t\tlv2:maximum {}", decimal(standard),
      decimal(lowest), decimal(highest));
}

void addPoint(std::string& text, const Choice& choice) {
  add(text, " ;\n\t\tlv2:scalePoint [ rdfs:label {} ; rdf:value {} ]", quoted(choice.name), choice.value);
}

void addControl(std::string& text, const ControlPort& port, std::uint32_t index) {
  add(text,
      "\t\ta lv2:ControlPort , lv2:InputPort ;\n\t\tlv2:index {} ;\n\t\tlv2:symbol \"{}\" ;\n"
      "\t\tlv2:name {}",
      index, port.symbol, quoted(port.name));
  addRange(text, port.scale.standard, port.scale.lowest, port.scale.highest);
  if (port.id == kEnabledId) text += " ;\n\t\tlv2:designation lv2:enabled";
  if (port.place != kNoPlace) add(text, " ;\n\t\tpg:group {}", placeGroup(port.place));
  if (!port.scale.unit.empty()) add(text, " ;\n\t\tunits:unit {}", unitOf(port.scale.unit));
  const bool isChoice = port.scale.form == Scale::Form::choice;
  if (port.scale.form == Scale::Form::toggle) text += " ;\n\t\tlv2:portProperty lv2:toggled";
  if (isChoice) text += " ;\n\t\tlv2:portProperty lv2:integer , lv2:enumeration";
  if (port.logarithmic) text += " ;\n\t\tlv2:portProperty pprops:logarithmic";
  if (isChoice)
    for (const Choice& choice : port.scale.choices) addPoint(text, choice);
  for (const Choice& stop : port.stops) addPoint(text, stop);
  text += "\n";
}

void addMeter(std::string& text, const MeterPort& meter, std::uint32_t index) {
  add(text,
      "\t\ta lv2:ControlPort , lv2:OutputPort ;\n\t\tlv2:index {} ;\n\t\tlv2:symbol \"{}\" ;\n"
      "\t\tlv2:name {}",
      index, meter.symbol, quoted(meter.name));
  if (meter.reduction)
    addRange(text, 0.0f, 0.0f, kMostReductionDb);
  else
    addRange(text, kLowestLevelDb, kLowestLevelDb, 0.0f);
  if (meter.place != kNoPlace) add(text, " ;\n\t\tpg:group {}", placeGroup(meter.place));
  text += " ;\n\t\tunits:unit units:db\n";
}

void addPorts(std::string& text, bool withKey) {
  const Ports& all = ports();
  const auto next = [&text] { text += "\t] , [\n"; };
  text += "\tlv2:port [\n";
  addAudioPort(text, "InputPort", kInputPort, "in", "Input", "main-in");
  next();
  addAudioPort(text, "OutputPort", kOutputPort, "out", "Output", "main-out");
  next();
  add(text,
      "\t\ta lv2:ControlPort , lv2:OutputPort ;\n\t\tlv2:index {} ;\n\t\tlv2:symbol \"latency\" ;\n"
      "\t\tlv2:name \"Latency\" ;\n\t\tlv2:designation lv2:latency ;\n"
      "\t\tlv2:portProperty lv2:reportsLatency , lv2:integer , lv2:connectionOptional ;\n"
      "\t\tlv2:default 0 ;\n\t\tlv2:minimum 0 ;\n\t\tlv2:maximum 0 ;\n\t\tunits:unit units:frame\n",
      kLatencyPort);
  std::uint32_t index = kFirstControlPort;
  for (const ControlPort& port : all.controls) next(), addControl(text, port, index++);
  for (const MeterPort& meter : all.meters) next(), addMeter(text, meter, index++);
  if (withKey) {
    next();
    addAudioPort(text, "InputPort", index, "sidechain", "Side Chain", "key",
                 "\t\tlv2:portProperty lv2:isSideChain , lv2:connectionOptional ;\n");
  }
  text += "\t] .\n\n";
}

void addPlugin(std::string& text, const char* uri, const char* name, bool withKey) {
  add(text, R"(<{}>
	a lv2:Plugin , lv2:DynamicsPlugin , doap:Project ;
	doap:name "{}" ;
	doap:license <https://spdx.org/licenses/MIT> ;
	doap:maintainer [ a foaf:Person ; foaf:name "Quadrexa" ; foaf:homepage <https://quadrexa.example/> ] ;
	rdfs:comment "A mono channel strip: preamp, filters, gate, compressor, equaliser, limiter, master and two free inserts, in any order." ;
	lv2:minorVersion {} ;
	lv2:microVersion {} ;
	lv2:optionalFeature lv2:hardRTCapable , urid:map , log:log , state:threadSafeRestore ;
	lv2:extensionData state:interface ;
	pg:mainInput {} ;
	pg:mainOutput {} ;
)",
      uri, name, kMinorVersion, kMicroVersion, groupUri("main-in"), groupUri("main-out"));
  addPorts(text, withKey);
}

// Presets

/// Stands behind the categories: the starting points, which belong to none.
constexpr const char* kNoCategory = "Init";

std::vector<const char*> banks() {
  std::vector<const char*> titles(factoryCategories().begin(), factoryCategories().end());
  titles.push_back(kNoCategory);
  return titles;
}

struct Preset {
  int index;  ///< in the factory bank
  std::string name;
  std::array<double, kParameters> values;
};

std::vector<Preset> presetsOf(std::size_t bank) {
  const int category = bank < factoryCategories().size() ? static_cast<int>(bank) : -1;
  std::vector<Preset> presets;
  for (int index = 0; index < kFactoryPlaces; ++index) {
    Preset preset{.index = index, .name = {}, .values = {}};
    char name[kPresetNameBytes];
    std::int32_t group[2] = {-1, 0};
    factoryPreset(index, preset.values.data(), name, group);
    preset.name = name;
    if (group[0] == category) presets.push_back(std::move(preset));
  }
  return presets;
}

std::string presetUri(int index) { return fmt::format("<{}#preset-{:03}>", kPluginUri, index); }
std::string bankUri(std::string_view category) {
  return fmt::format("<{}#bank-{}>", kPluginUri, slug(category));
}
std::string presetFile(std::string_view category) { return fmt::format("presets-{}.ttl", slug(category)); }

std::string appliesTo() {
  std::string text;
  for (const char* uri : kPluginUris) text += fmt::format("{}<{}>", text.empty() ? "" : " , ", uri);
  return text;
}

/// Every port but those that say whether the strip is on: a preset leaves them to the user. An empty insert
/// has no values of its own.
bool isOfPreset(const ControlPort& port, const Preset& preset) {
  if (port.id == kEnabledId || port.id == kProcessId) return false;
  if (port.place < kFixedPlaces) return true;
  const int base = kRack[static_cast<std::size_t>(port.place)].parameterBase;
  const ModuleFamily* family =
      familyOfInsertIndex(decodeInsertIndex(preset.values[static_cast<std::size_t>(base)]));
  return port.id - base < kHeadSize || (family && findRow(*family, port.id - base));
}

/// Types are stored as shares in more than one form: the state counts, not the number. One without a module
/// passes its input, as a place that is off does.
float typeValue(const ControlPort& port, double p) {
  const int type = port.place < kFixedPlaces ? decodeVariant(p) : decodeInsertIndex(p);
  const bool exists =
      std::ranges::any_of(port.scale.choices, [type](const Choice& c) { return c.value == type; });
  return exists ? static_cast<float>(type) : 0.0f;
}

float portValue(const ControlPort& port, double p) {
  const int offset = port.id - kRack[static_cast<std::size_t>(port.place)].parameterBase;
  return offset == kTypeOffset ? typeValue(port, p) : port.scale.physical(p);
}

std::string presetText(const Preset& preset, std::string_view category) {
  std::string text;
  add(text, "{}\n\ta pset:Preset ;\n\tlv2:appliesTo {} ;\n\trdfs:label {} ;\n\tpset:bank {} ;\n\tlv2:port\n",
      presetUri(preset.index), appliesTo(), quoted(preset.name), bankUri(category));
  const char* between = "";
  for (const ControlPort& port : ports().controls) {
    if (!isOfPreset(port, preset)) continue;
    add(text, "{}\t\t[ lv2:symbol \"{}\" ; pset:value {} ]", between, port.symbol,
        decimal(portValue(port, preset.values[static_cast<std::size_t>(port.id)])));
    between = " ,\n";
  }
  return text + " .\n\n";
}

BundleFile presetsFile(std::size_t bank) {
  const char* title = banks()[bank];
  std::string text = kPrefixes;
  add(text, "{}\n\ta pset:Bank ;\n\tlv2:appliesTo {} ;\n\trdfs:label {} .\n\n", bankUri(title), appliesTo(),
      quoted(title));
  for (const Preset& preset : presetsOf(bank)) text += presetText(preset, title);
  return {presetFile(title), std::move(text)};
}

BundleFile manifest() {
  std::string text = kPrefixes;
  for (const char* uri : kPluginUris)
    add(text, "<{}>\n\ta lv2:Plugin ;\n\tlv2:binary <corvane.so> ;\n\trdfs:seeAlso <corvane.ttl> .\n\n", uri);
  for (std::size_t bank = 0; bank < banks().size(); ++bank)
    for (const Preset& preset : presetsOf(bank))
      add(text, "{}\n\ta pset:Preset ;\n\tlv2:appliesTo {} ;\n\trdfs:seeAlso <{}> .\n\n",
          presetUri(preset.index), appliesTo(), presetFile(banks()[bank]));
  return {"manifest.ttl", std::move(text)};
}

BundleFile description() {
  std::string text = kPrefixes;
  addGroups(text);
  addPlugin(text, kPluginUri, "QDX Corvane Mono", false);
  addPlugin(text, kSideChainPluginUri, "QDX Corvane Mono (side chain)", true);
  return {"corvane.ttl", std::move(text)};
}

}  // namespace

std::vector<BundleFile> bundleFiles() {
  std::vector<BundleFile> files{manifest(), description()};
  for (std::size_t bank = 0; bank < banks().size(); ++bank) files.push_back(presetsFile(bank));
  return files;
}

}  // namespace corvane::lv2
