#include "corvane/session/SessionCommand.h"

#include <CLI/CLI.hpp>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <iostream>

#include "core/StripEffect.h"
#include "corvane/Failure.h"
#include "corvane/Interrupt.h"
#include "corvane/NumberRange.h"
#include "corvane/Render.h"
#include "corvane/Words.h"
#include "corvane/session/Commands.h"
#include "corvane/session/Line.h"

namespace corvane::cli {

namespace {

using session::Command;
using session::commands;
using session::Session;

constexpr std::size_t kUsageWidth = 22;

std::string helpText() {
  std::string text = "Commands, one a line; # starts a comment, \"quotes\" keep blanks:\n";
  for (const Command& command : commands()) {
    const std::string help = command.help;
    text +=
        fmt::format("  {:<{}} {}\n", command.usage(), kUsageWidth, help.substr(0, help.find_first_of(".:")));
  }
  return text + R"(
Examples:
  corvane session script.txt                      the answers of a script
  corvane session --input voice.wav script.txt    with sound for `run`
  echo 'edit Comp:Threshold -20' | corvane session -)";
}

/// A cell of a table in Markdown: a bar would end it.
std::string cell(std::string text) {
  for (std::size_t at = 0; (at = text.find('|', at)) != text.npos; at += 2) text.insert(at, 1, '\\');
  return text;
}

}  // namespace

void addSessionCommand(CLI::App& app, SessionOptions& o) {
  CLI::App* command =
      app.add_subcommand("session", "Drives one strip line by line, as a host and a window do");
  command->add_option("SCRIPT", o.script, "File with commands, - for what comes in");
  command->add_option("--input", o.input, "Audio for `run`: its first channel, at its rate")
      ->type_name("FILE");
  addNumber(*command, "--rate", o.rateHz, kLowestRateHz, kHighestRateHz, "Sample rate in Hz without --input")
      ->type_name("HZ");
  command->add_option("--block", o.blockFrames, "Frames of a block")
      ->type_name("N")
      ->capture_default_str()
      ->check(within(1, kLargestBlockFrames));
  command->add_flag("--echo", o.echo, "Prints each command before its answer, behind \"> \"");
  command->add_flag("--markdown", o.markdown, "Prints the table of commands for docs/session.md");
  command->footer(helpText());
}

int answerLines(std::istream& lines, Session& session, bool echo, Console& console) {
  int refused = 0;
  std::string line;
  for (int number = 1; std::getline(lines, line); ++number) {
    stopIfInterrupted();
    const std::string_view text = trimmed(line);
    if (text.empty() || text.starts_with('#')) continue;
    if (echo) console.print("> {}\n", printable(std::string(text)));
    std::string answer;
    try {
      answer = session::answerTo(session, session::wordsOf(text));
    } catch (const Failure& failure) {
      ++refused;
      answer = fmt::format("error: line {}: {}", number, printable(failure.what()));
    }
    console.print("{}\n", answer);
    console.flush();  // whoever drives the session waits for it
  }
  stopIfInterrupted();
  return refused;
}

int runSession(const SessionOptions& options, Console& console) {
  if (options.markdown) {
    console.print("{}", sessionReference());
    return kDone;
  }
  std::ifstream file;
  const bool fromFile = options.script != "-";
  if (fromFile) {
    file.open(options.script);
    if (!file || file.peek() == std::ifstream::traits_type::eof())
      if (!file.eof()) fail("cannot read {}: {}", printable(options.script), std::strerror(errno));
    file.clear();
  }
  Session session(options.input.empty() ? std::nullopt : std::optional<std::filesystem::path>(options.input),
                  options.rateHz, options.blockFrames);
  return answerLines(fromFile ? file : std::cin, session, options.echo, console) == 0 ? kDone : kFailed;
}

std::string sessionReference() {
  std::string table =
      "| command | what it does | answer | refused |\n"
      "|---|---|---|---|\n";
  for (const Command& command : commands())
    table += fmt::format("| `{}` | {} | {} | {} |\n", cell(command.usage()), cell(command.help),
                         cell(command.answer), *command.refused ? cell(command.refused) : "never");
  return table;
}

}  // namespace corvane::cli
