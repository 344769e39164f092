#include "corvane/ParamsCommand.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <nlohmann/json.hpp>

#include "core/ParameterBank.h"
#include "corvane/Failure.h"
#include "corvane/ParameterNames.h"
#include "corvane/ParameterReference.h"
#include "corvane/ParameterWords.h"
#include "corvane/StartOptions.h"
#include "corvane/Words.h"

namespace corvane::cli {

namespace {

struct Listed {
  int id;
  std::string name;
  std::string words;  ///< of the module in the insert, for its generic parameters
  double defaultValue;
  int steps;
  std::string shown, unit, range;
};

Listed listed(const NamedParameter& parameter, const std::string& words, const Setting& setting) {
  const int id = parameter.id;
  return {.id = id,
          .name = parameter.name,
          .words = words,
          .defaultValue = words.empty() ? parameterDefault(id) : setting.value(id),
          .steps = parameterSteps(id),
          .shown = shownValue(id, words.empty() ? parameterDefault(id) : setting.value(id), setting),
          .unit = unitOf(id, setting),
          .range = rangeOf(id, setting)};
}

bool contains(const std::string& text, const std::string& lowerPart) {
  return lowerCase(text).find(lowerPart) != std::string::npos;
}

std::vector<Listed> parametersMatching(const std::string& filter, const Setting& setting) {
  const auto ofInserts = insertParameters(setting);
  const std::string wanted = lowerCase(filter);
  std::vector<Listed> rows;
  for (const auto& parameter : hostParameters()) {
    const auto own = std::ranges::find(ofInserts, parameter.id, &NamedParameter::id);
    const std::string words = own == ofInserts.end() ? "" : own->name;
    if (contains(parameter.name, wanted) || contains(words, wanted) || std::to_string(parameter.id) == wanted)
      rows.push_back(listed(parameter, words, setting));
  }
  return rows;
}

nlohmann::ordered_json asJson(const Listed& row) {
  nlohmann::ordered_json entry = {{"id", row.id}, {"name", row.name}};
  if (!row.words.empty()) entry["words"] = row.words;
  entry.update({{"default", row.defaultValue},
                {"default_text", row.shown},
                {"steps", row.steps},
                {"unit", row.unit},
                {"range", row.range}});
  return entry;
}

void printTable(const std::vector<Listed>& rows, Console& console) {
  std::size_t nameWidth = 4, shownWidth = 4, unitWidth = 4;
  const auto nameOf = [](const Listed& row) {
    return row.words.empty() ? row.name : row.name + "  " + row.words;
  };
  for (const Listed& row : rows) {
    nameWidth = std::max(nameWidth, nameOf(row).size());
    shownWidth = std::max(shownWidth, row.shown.size());
    unitWidth = std::max(unitWidth, row.unit.size());
  }
  console.print("{:>3}  {:<{}}  {:>7}  {:<{}}  {:>5}  {:<{}}  {}\n", "id", "name", nameWidth, "default",
                "text", shownWidth, "steps", "unit", unitWidth, "range");
  for (const Listed& row : rows)
    console.print("{:>3}  {:<{}}  {:>7}  {:<{}}  {:>5}  {:<{}}  {}\n", row.id, nameOf(row), nameWidth,
                  shortest(row.defaultValue), row.shown, shownWidth,
                  row.steps == 0 ? "-" : std::to_string(row.steps), row.unit, unitWidth, row.range);
}

constexpr const char* kExamples = R"(Examples:
  corvane params comp                             all whose name holds "comp"
  corvane params InsX --insert "De-esser"         what a module offers in an insert
  corvane params --text Comp:Threshold=0.4        how 0.4 is shown
  corvane params --parse "EQ:HI Freq=2k5"         what 2k5 is from 0 to 1)";

/// NAME=... of a translation, and the parameter that it names.
template <typename Translate>
void translate(const char* option, const std::string& argument, const Setting& setting, Translate apply) {
  const auto equals = argument.find('=');
  try {
    if (equals == argument.npos || equals == 0)
      refuse("must be ID={}", std::string_view(option) == "--text" ? "VALUE" : "TEXT");
    const std::string_view whole = argument;
    apply(parameterFromName(trimmed(whole.substr(0, equals)), setting), trimmed(whole.substr(equals + 1)));
  } catch (const Failure& failure) {
    refuse("{} {}: {}", option, argument, failure.what());
  }
}

}  // namespace

void addParamsCommand(CLI::App& app, ParamsOptions& o) {
  CLI::App* params = app.add_subcommand("params", "Lists parameters, translates their values");
  params->add_option("FILTER", o.filter, "Part of a name, or an id");
  params->add_option("--text", o.texts, "Prints how a normalised value is shown")
      ->type_name("ID=VALUE")
      ->expected(1)
      ->take_all();
  params->add_option("--parse", o.parses, "Prints the normalised value of a person's text")
      ->type_name("ID=TEXT")
      ->expected(1)
      ->take_all();
  params->add_option("--insert", o.insert, "Shows InsX and InsY with this module in them")
      ->type_name("MODULE");
  params->add_flag("--json", o.json, "For machines");
  params->add_flag("--markdown", o.markdown, "Prints the reference of all parameters as a page")
      ->excludes("--json");
  params->footer(kExamples);
}

int runParams(const ParamsOptions& options, Console& console) {
  if (options.markdown) {
    console.print("{}", parameterReference());
    return kDone;
  }
  Setting setting;
  if (!options.insert.empty()) {
    StripRunner strip;
    applyArguments(strip, {"InsX:Type=" + options.insert, "InsY:Type=" + options.insert}, {});
    setting = strip.setting();
  }
  auto answers = nlohmann::ordered_json::array();
  const auto answer = [&](int id, const char* key, const nlohmann::ordered_json& value,
                          const std::string& line) {
    answers.push_back({{"id", id}, {key, value}});
    if (!options.json) console.print("{}\n", line);
  };
  for (const auto& argument : options.texts)
    translate("--text", argument, setting, [&](int id, std::string_view text) {
      const auto value = numberOf(text);
      if (!value) refuse("\"{}\" is not a number", text);
      if (*value < 0.0 || *value > 1.0) refuse("outside 0 to 1");
      const std::string shown = shownValue(id, *value, setting);
      answer(id, "text", shown, shown);
    });
  for (const auto& argument : options.parses)
    translate("--parse", argument, setting, [&](int id, std::string_view text) {
      const double value = valueFromWords(id, text, setting);
      answer(id, "value", value, shortest(value));
    });
  if (answers.empty()) {
    const auto rows = parametersMatching(options.filter, setting);
    if (rows.empty())
      fail("no parameter with \"{}\" in its name; `corvane params` lists all", options.filter);
    for (const Listed& row : rows) answers.push_back(asJson(row));
    if (!options.json) printTable(rows, console);
  }
  if (options.json) console.print("{}\n", answers.dump(2));
  return kDone;
}

}  // namespace corvane::cli
