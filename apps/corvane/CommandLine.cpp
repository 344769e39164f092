#include "corvane/CommandLine.h"

#include <fmt/ranges.h>

#include <CLI/CLI.hpp>
#include <algorithm>

#include "corvane/DemoCommand.h"
#include "corvane/DescribeCommand.h"
#include "corvane/Failure.h"
#include "corvane/Interrupt.h"
#include "corvane/ParamsCommand.h"
#include "corvane/PlotCommand.h"
#include "corvane/PresetsCommand.h"
#include "corvane/RenderCommand.h"
#include "corvane/Words.h"
#include "corvane/session/SessionCommand.h"

namespace corvane::cli {

namespace {

/// The commands on the line, each below the one before: `plot`, `response`.
std::vector<const CLI::App*> chosenCommands(const CLI::App& app) {
  std::vector<const CLI::App*> chain;
  const CLI::App* last = &app;
  while (!last->get_subcommands().empty()) chain.push_back(last = last->get_subcommands().front());
  return chain;
}

/// CLI11 speaks in sentences over several lines; ours is one line in lower case and names the way to the
/// help.
std::string usageText(const CLI::ParseError& error, const CLI::App& app) {
  std::string text = error.what();
  if (const auto lineEnd = text.find('\n'); lineEnd != text.npos) text.resize(lineEnd);
  if (text.size() > 1 && !(text[1] >= 'A' && text[1] <= 'Z')) text.front() = lowerCase(text).front();
  std::string command = "corvane";
  for (const CLI::App* chosen : chosenCommands(app)) command += " " + chosen->get_name();
  return fmt::format("{}; see `{} --help`", text, command);
}

std::vector<std::string> commandNames(const CLI::App& app) {
  std::vector<std::string> names;
  for (const CLI::App* command : app.get_subcommands([](const CLI::App*) { return true; }))
    names.push_back(command->get_name());
  return names;
}

/// Whether the first word is meant as a command and is none.
bool isUnknownCommand(const CLI::App& app, int argc, const char* const* argv) {
  if (argc < 2 || argv[1][0] == '-') return false;
  const auto names = commandNames(app);
  return std::ranges::find(names, argv[1]) == names.end();
}

}  // namespace

int runCommandLine(int argc, const char* const* argv, Console& console) {
  CLI::App app("Corvane, a mono channel strip, on files", "corvane");
  app.require_subcommand(1);
  app.set_version_flag("--version", "corvane " CORVANE_VERSION);
  app.footer(
      "`corvane COMMAND --help` tells more, with examples.\nExit codes: 0 done, 1 failed, 2 wrong usage.");
  RenderOptions render;
  ParamsOptions params;
  PresetsOptions presets;
  ShowOptions show;
  DescribeOptions describe;
  DemoOptions demo;
  PlotOptions plot;
  SessionOptions session;
  addRenderCommand(app, render);
  addParamsCommand(app, params);
  addPresetsCommand(app, presets);
  addShowCommand(app, show);
  addDescribeCommand(app, describe);
  addSessionCommand(app, session);
  addPlotCommand(app, plot);
  addDemoCommand(app, demo);
  if (isUnknownCommand(app, argc, argv)) {
    console.error(
        fmt::format("no command \"{}\"; there are {}", argv[1], fmt::join(commandNames(app), ", ")));
    return kWrongUsage;
  }
  try {
    app.parse(argc, argv);
  } catch (const CLI::CallForVersion&) {
    console.print("corvane {}\n", CORVANE_VERSION);
    return kDone;
  } catch (const CLI::Success&) {  // a call for help
    const auto chosen = chosenCommands(app);
    std::string above = "corvane";
    for (std::size_t k = 0; k + 1 < chosen.size(); ++k) above += " " + chosen[k]->get_name();
    console.print("{}", chosen.empty() ? app.help() : chosen.back()->help(above));
    return kDone;
  } catch (const CLI::ParseError& error) {
    console.error(usageText(error, app));
    return kWrongUsage;
  }
  try {
    if (app.got_subcommand("render")) return runRender(render, console);
    if (app.got_subcommand("presets")) return runPresets(presets, console);
    if (app.got_subcommand("show")) return runShow(show, console);
    if (app.got_subcommand("describe")) return runDescribe(describe, console);
    if (app.got_subcommand("session")) return runSession(session, console);
    if (app.got_subcommand("plot")) return runPlot(plot, console);
    if (app.got_subcommand("demo")) return runDemo(demo, console);
    return runParams(params, console);
  } catch (const Failure& failure) {
    console.error(failure.what());
    return failure.exitCode;
  } catch (const Interrupted& interrupted) {
    return 128 + interrupted.signal;
  } catch (const std::exception& problem) {
    console.error(problem.what());
    return kFailed;
  }
}

}  // namespace corvane::cli
