#include "corvane/session/Commands.h"

#include <algorithm>
#include <array>

#include "corvane/Failure.h"
#include "corvane/Words.h"
#include "corvane/session/Answers.h"
#include "corvane/session/Line.h"

namespace corvane::cli::session {

namespace {

constexpr const char* kUnknownId = "no such parameter";

// clang-format off
constexpr Command kCommands[] = {
    // name          arguments        what it does
    //   what it answers
    //   when it is refused
    {"set",          "ID VALUE",      "Moves a parameter as the host's automation does: no touch, heard at the next block, unknown to the plug-in's store, its rules and undo. VALUE is normalised.",
     "the value that the host now holds", "no such parameter; VALUE is no number from 0 to 1", setValue},
    {"edit",         "ID TEXT...",    "Turns a knob as a person does in the window: the host is asked with touch, set and release, and its answer reaches the store, its rules and undo. TEXT is what one would type (`-20`, `2k5`, `Opto Clamper`).",
     "the normalised value that the host now holds", "no such parameter; TEXT fits no value", editValue},
    {"get",          "ID",            "Reads the value that the host holds, which is the one that sounds.",
     "a normalised value", kUnknownId, getValue},
    {"stored",       "ID",            "Reads the value in the plug-in's own store, which automation leaves alone.",
     "a normalised value", kUnknownId, storedValue},
    {"text",         "ID",            "Shows the held value as hosts do.",
     "the text with its unit, `\"\"` for none", kUnknownId, textOfValue},
    {"bypass",       "on|off",        "Switches the host's bypass.",
     "`ok`", "another word", setBypass},
    {"preset",       "LIST INDEX...", "Selects a preset, one step of undo. LIST is a number or a name, of a category unless `designer:` or `user:` stands before it; INDEX is a number from 0 or a preset's name.",
     "the name of the setting", "no such list or preset; a name that several presets have; a file that cannot be read", selectPreset},
    {"next",         "",              "Selects the next preset of the list, stopping at the last.",
     "the name of the setting", "", nextPreset},
    {"previous",     "",              "Selects the preset before, stopping at the first.",
     "the name of the setting", "", previousPreset},
    {"selection",    "",              "Tells which preset is selected.",
     "list and index as `preset` takes them; index -1 for a setting from outside the lists", "", selection},
    {"name",         "",              "Tells the name of the setting.",
     "the name", "", settingName},
    {"modified",     "",              "Tells whether the setting differs from the preset that was loaded.",
     "`yes` or `no`", "", isModified},
    {"memory",       "[A|B]",         "Switches to memory A or B; without an argument tells which is in use.",
     "`A` or `B`", "another word", memory},
    {"copy-memory",  "",              "Copies the memory in use over the other one.",
     "`ok`", "", copyMemory},
    {"undo",         "",              "Takes back the last step: edits less than 51 ms apart, or the choice of a preset.",
     "the name of the setting", "nothing to take back", undo},
    {"redo",         "",              "Makes the step again that was taken back last.",
     "the name of the setting", "nothing to make again", redo},
    {"can-undo",     "",              "Tells whether there is a step to take back.",
     "`yes` or `no`", "", canUndo},
    {"can-redo",     "",              "Tells whether there is a step to make again.",
     "`yes` or `no`", "", canRedo},
    {"copy",         "",              "Puts the setting into the user's clipboard of settings, which all instances share.",
     "`ok`", "the settings store cannot be written", copySetting},
    {"paste",        "",              "Takes the setting of the clipboard.",
     "the name of the setting", "nothing to paste", pasteSetting},
    {"save",         "FILE",          "Writes the setting as a preset file; `.qdx` is added where it is missing.",
     "the file's name", "the file cannot be written", savePreset},
    {"load",         "FILE",          "Takes the setting of a preset file.",
     "the name of the setting", "the file cannot be read or is no preset", loadPreset},
    {"state-save",   "FILE",          "Writes the whole state, as hosts store it in their sessions.",
     "its number of bytes", "the file cannot be written", saveState},
    {"state-load",   "FILE",          "Restores a state that was written so.",
     "the name of the setting", "the file cannot be read or is no state of this strip", loadState},
    {"run",          "SECONDS",       "Renders the input file from where the last run ended, silence behind its end or without one.",
     "frames, peak and rms of the output in dBFS, and a checksum of its bits", "SECONDS is no number from 0 to 3600", runSound},
    {"wait",         "MS",            "Lets time pass without sound, for the steps of undo.",
     "`ok`", "MS is no whole number from 0 to 86400000", waitTime},
    {"positions",    "",              "Tells the order of the rack.",
     "the nine places from first to last", "", positions},
    {"meters",       "[PART]",        "Reads the meters that have a reading, or those whose name holds PART. The peaks `Input` and `Output` start again at 0.",
     "`NAME=READING` for each, 0 to 1; peaks linear", "no meter's name holds PART", meters},
    {"help",         "[COMMAND]",     "Tells the commands, or one of them.",
     "their names, or its form and what it does", "no such command", help},
};
// clang-format on

struct Arity {
  std::size_t fewest = 0, most = 0;
};

Arity arityOf(std::string_view arguments) {
  Arity arity;
  for (const std::string& word : wordsOf(arguments)) {
    if (word.front() != '[') ++arity.fewest;
    ++arity.most;
    if (word.ends_with("...")) arity.most = static_cast<std::size_t>(-1);
  }
  return arity;
}

}  // namespace

std::string Command::usage() const { return *arguments ? fmt::format("{} {}", name, arguments) : name; }

std::span<const Command> commands() { return kCommands; }

const Command& commandNamed(const std::string& name) {
  for (const Command& command : kCommands)
    if (command.name == name) return command;
  const Command* const nearest = std::ranges::min_element(
      kCommands, {}, [&](const Command& command) { return editDistance(name, command.name); });
  if (editDistance(name, nearest->name) <= std::max<std::size_t>(1, name.size() / 3))
    refuse("no command \"{}\"; nearest: {}", printable(name), nearest->name);
  refuse("no command \"{}\"; `help` tells all", printable(name));
}

std::string answerTo(Session& session, const std::vector<std::string>& words) {
  const Command& command = commandNamed(words.front());
  const Arguments arguments(words.begin() + 1, words.end());
  const auto [fewest, most] = arityOf(command.arguments);
  if (arguments.size() < fewest || arguments.size() > most)
    refuse("{} takes {}", command.name, *command.arguments ? command.arguments : "no argument");
  return command.run(session, arguments);
}

}  // namespace corvane::cli::session
