#include "corvane/StartOptions.h"

#include <CLI/CLI.hpp>
#include <string_view>

#include "corvane/ParameterNames.h"
#include "corvane/ParameterWords.h"
#include "corvane/Presets.h"
#include "corvane/StateFile.h"
#include "corvane/Words.h"

namespace corvane::cli {

namespace {

struct Assignment {
  std::string_view name, text;
};

Assignment splitAssignment(const std::string& argument, const char* form) {
  const auto equals = argument.find('=');
  if (equals == argument.npos || equals == 0) refuse("must be {}", form);
  const std::string_view whole = argument;
  return {trimmed(whole.substr(0, equals)), trimmed(whole.substr(equals + 1))};
}

}  // namespace

void addStartOptions(CLI::App& command, StartOptions& options) {
  CLI::Option* preset = command
                            .add_option("--preset", options.preset,
                                        "Starts from a preset: a name, an index of the factory bank, a file")
                            ->type_name("PRESET");
  command.add_option("--state", options.state, "Starts from a stored state")
      ->type_name("FILE")
      ->excludes(preset);
  command
      .add_option("--set", options.sets,
                  "A person's edit, as often as wanted: Comp:Threshold=-20, EQ:HI Freq=2k5")
      ->type_name("NAME=TEXT")
      ->expected(1)
      ->take_all();
  command.add_option("--raw", options.raws, "A bare normalised value 0..1, after all --set, no rule applied")
      ->type_name("NAME=VALUE")
      ->expected(1)
      ->take_all();
}

StripRunner startFrom(const StartOptions& options) {
  StripRunner strip;  // whoever plays it tells the rate
  if (!options.preset.empty())
    withArgument("--preset", options.preset, [&] {
      const LoadedPreset preset = loadPreset(options.preset);
      strip.load(preset.setting, preset.listed.name);
    });
  if (!options.state.empty())
    withArgument("--state", options.state, [&] { strip.restore(readState(options.state)); });
  applyArguments(strip, options.sets, options.raws);
  return strip;
}

void applyArguments(StripRunner& strip, const std::vector<std::string>& sets,
                    const std::vector<std::string>& raws) {
  for (const auto& argument : sets)
    withArgument("--set", argument, [&] {
      const auto [name, text] = splitAssignment(argument, "NAME=TEXT");
      const Setting setting = strip.setting();  // what stands in an insert decides on its words
      const int id = parameterFromName(name, setting);
      strip.edit(id, valueFromWords(id, text, setting));
    });
  if (raws.empty()) return;
  Setting setting = strip.setting();
  for (const auto& argument : raws)
    withArgument("--raw", argument, [&] {
      const auto [name, text] = splitAssignment(argument, "NAME=VALUE");
      const int id = parameterFromName(name, setting);
      const auto value = numberOf(text);
      if (!value) refuse("\"{}\" is not a number", text);
      if (*value < 0.0 || *value > 1.0) refuse("outside 0 to 1");
      setting.store(id, *value);
    });
  strip.load(setting);
}

}  // namespace corvane::cli
