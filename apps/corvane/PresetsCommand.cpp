#include "corvane/PresetsCommand.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <nlohmann/json.hpp>

#include "control/FactoryBank.h"
#include "core/ParameterBank.h"
#include "corvane/Failure.h"
#include "corvane/ParameterWords.h"
#include "corvane/Presets.h"
#include "corvane/Words.h"

namespace corvane::cli {

namespace {

constexpr std::size_t kShownColumns = 2;
constexpr auto kAnyBytes = nlohmann::ordered_json::error_handler_t::replace;

nlohmann::ordered_json asJson(const ListedPreset& preset) {
  nlohmann::ordered_json entry;
  if (preset.index >= 0) entry["index"] = preset.index;
  entry["name"] = preset.name;
  entry["category"] = preset.category;
  if (preset.index >= 0)
    entry["designer"] = preset.designer;
  else
    entry["file"] = preset.file.string();
  return entry;
}

/// The known group that a person means, or a refusal that lists them.
template <typename Names>
std::string groupNamed(const char* option, const std::string& words, const Names& names) {
  std::string all;
  for (const std::string_view known : names) {
    const std::string name(known);
    if (lowerCase(name) == lowerCase(words)) return name;
    if (!name.empty()) all += (all.empty() ? "" : ", ") + name;
  }
  refuse("{} {}: must be one of {}", option, words, all);
}

// What stands in the rack

struct ShownParameter {
  int id;
  std::string name, text, unit;
};

struct ShownModule {
  std::string position, place, module;
  std::vector<std::string> switches;  ///< those of the head that are on
  std::vector<ShownParameter> parameters;
};

ShownModule shownModule(int place, const Setting& setting) {
  const Place& group = kRack[static_cast<std::size_t>(place)];
  const auto shown = [&](int offset) {
    const int id = group.parameterBase + offset;
    return shownValue(id, setting.value(id), setting);
  };
  ShownModule module{.position = shown(kPositionOffset),
                     .place = group.prefix,
                     .module = shown(kTypeOffset),
                     .switches = {},
                     .parameters = {}};
  for (const int offset : {kMuteOffset, kSoloOffset, kSideChainOffset, kMonitorOffset})
    if (decodeSwitch(setting.value(group.parameterBase + offset)) != 0)
      module.switches.push_back(shown(offset));
  const ModuleFamily* family = familyInPlace(place, setting);
  for (const Row& row : family ? family->rows : std::span<const Row>{}) {
    if (row.offset < kFirstOwnOffset) continue;
    const int id = group.parameterBase + row.offset;
    const std::string name = row.name, text = shown(row.offset);
    const bool speaks = !text.empty();
    module.parameters.push_back({id, name.substr(name.find(':') + 1),
                                 speaks                            ? text
                                 : decodeSwitch(setting.value(id)) ? "on"
                                                                   : "off",
                                 text.ends_with(unitOf(id, setting)) ? "" : unitOf(id, setting)});
  }
  return module;
}

/// The modules that stand in the rack, in the order of the sound.
std::vector<ShownModule> chainOf(const Setting& setting) {
  std::vector<ShownModule> chain;
  for (int place = 0; place < kPlaces; ++place) {
    ShownModule module = shownModule(place, setting);
    if (module.module != "-") chain.push_back(std::move(module));
  }
  std::ranges::stable_sort(chain, {}, &ShownModule::position);
  return chain;
}

nlohmann::ordered_json asJson(const ShownModule& module, const Setting& setting) {
  auto parameters = nlohmann::ordered_json::array();
  for (const auto& parameter : module.parameters)
    parameters.push_back({{"id", parameter.id},
                          {"name", parameter.name},
                          {"text", parameter.text},
                          {"unit", parameter.unit},
                          {"value", setting.value(parameter.id)}});
  return {{"position", module.position},
          {"place", module.place},
          {"module", module.module},
          {"switches", module.switches},
          {"parameters", parameters}};
}

void print(const ShownModule& module, Console& console) {
  std::string switches;
  for (const auto& word : module.switches) switches += "  [" + word + "]";
  console.print("\n{}  {:<4}  {}{}\n", module.position, module.place, module.module, switches);
  const std::size_t rows = (module.parameters.size() + kShownColumns - 1) / kShownColumns;
  for (std::size_t row = 0; row < rows; ++row) {
    std::string line = "       ";
    for (std::size_t k = row; k < module.parameters.size(); k += rows) {
      const auto& parameter = module.parameters[k];
      line += fmt::format("{:<18} {:>10} {:<8}", parameter.name, parameter.text, parameter.unit);
    }
    line.erase(line.find_last_not_of(' ') + 1);
    console.print("{}\n", line);
  }
}

}  // namespace

void addPresetsCommand(CLI::App& app, PresetsOptions& o) {
  CLI::App* presets = app.add_subcommand("presets", "Lists the factory presets, or the user's");
  auto* category = presets->add_option("--category", o.category, "Those of one category")->type_name("C");
  auto* designer = presets->add_option("--designer", o.designer, "Those of one designer")->type_name("D");
  category->excludes(designer);
  presets->add_flag("--user", o.user, "The files in the user's preset folders");
  presets->add_flag("--json", o.json, "For machines");
  presets->footer("Examples:\n  corvane presets --category Vocals\n  corvane presets --user --json");
}

void addShowCommand(CLI::App& app, ShowOptions& o) {
  CLI::App* show = app.add_subcommand("show", "Shows a preset: modules in order, values in their units");
  show->add_option("PRESET", o.preset, "A name, an index of the factory bank, or a file.qdx")->required();
  show->add_flag("--json", o.json, "For machines");
  show->footer("Examples:\n  corvane show \"HiFi Vocal\"\n  corvane show 0\n  corvane show my-voice.qdx");
}

int runPresets(const PresetsOptions& options, Console& console) {
  std::vector<std::string> designers;
  for (const Designer& designer : factoryDesigners()) designers.push_back(designer.name);
  const std::string category = options.category.empty() || options.user
                                   ? options.category
                                   : groupNamed("--category", options.category, factoryCategories());
  const std::string designer =
      options.designer.empty() ? "" : groupNamed("--designer", options.designer, designers);
  std::vector<ListedPreset> presets = options.user ? userPresets() : factoryPresets();
  std::erase_if(presets, [&](const ListedPreset& preset) {
    return (!category.empty() && lowerCase(preset.category) != lowerCase(category)) ||
           (!designer.empty() && preset.designer != designer);
  });
  if (options.json) {
    auto list = nlohmann::ordered_json::array();
    for (const auto& preset : presets) list.push_back(asJson(preset));
    console.print("{}\n", list.dump(2, ' ', false, kAnyBytes));
    return kDone;
  }
  if (presets.empty()) console.note("no presets here");
  for (const auto& preset : presets)
    if (preset.index >= 0)
      console.print("{:>3}  {:<24}{:<16}{}\n", preset.index, preset.name, preset.category, preset.designer);
    else
      console.print("{:<40} {}\n", printable(preset.name), printable(preset.file));
  return kDone;
}

int runShow(const ShowOptions& options, Console& console) {
  const auto [preset, setting] = loadPreset(options.preset);
  const auto chain = chainOf(setting);
  const bool on = decodeSwitch(setting.value(kProcessId)) != 0;
  if (options.json) {
    nlohmann::ordered_json whole = asJson(preset);
    whole["process"] = on;
    whole["chain"] = nlohmann::ordered_json::array();
    for (const auto& module : chain) whole["chain"].push_back(asJson(module, setting));
    console.print("{}\n", whole.dump(2, ' ', false, kAnyBytes));
    return kDone;
  }
  std::string origin = preset.index >= 0 ? fmt::format("factory {}", preset.index) : printable(preset.file);
  for (const auto& word : {preset.category, preset.designer})
    if (!word.empty()) origin += ", " + printable(word);
  console.print("{}   ({}){}\n", printable(preset.name), origin, on ? "" : "   the strip is off");
  if (chain.empty()) console.print("\nThe rack is empty.\n");
  for (const auto& module : chain) print(module, console);
  return kDone;
}

}  // namespace corvane::cli
