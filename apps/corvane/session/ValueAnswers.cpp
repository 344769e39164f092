#include <algorithm>
#include <cmath>

#include "core/ParameterBank.h"
#include "corvane/Failure.h"
#include "corvane/ParameterNames.h"
#include "corvane/ParameterWords.h"
#include "corvane/Words.h"
#include "corvane/session/Answers.h"
#include "corvane/session/Line.h"

namespace corvane::cli::session {

namespace {

constexpr int kFirstMeterId = 361;
constexpr double kHighestSeconds = 3600.0, kLongestWaitMs = 86'400'000.0;

int idOf(Session& session, const std::string& name) {
  return parameterFromName(name, session.strip().setting());
}

/// Hosts hold values as 32-bit floats.
std::string shown(double normalised) { return fmt::format("{}", static_cast<float>(normalised)); }

double numberWithin(const std::string& text, double low, double high) {
  const auto number = numberOf(text);
  if (!number || *number < low || *number > high)
    refuse("\"{}\" is no number from {} to {}", printable(text), low, high);
  return *number;
}

}  // namespace

std::string setValue(Session& session, const Arguments& arguments) {
  const int id = idOf(session, arguments[0]);
  session.strip().automate(id, numberWithin(arguments[1], 0.0, 1.0));
  return shown(session.held(id));
}

std::string editValue(Session& session, const Arguments& arguments) {
  const int id = idOf(session, arguments[0]);
  const std::string text = joined({arguments.begin() + 1, arguments.end()});
  const double value = valueFromWords(id, text, session.strip().setting());
  session.atWindow([&](EditorDesk& desk) { desk.edit(id, value); });
  return shown(session.held(id));
}

std::string getValue(Session& session, const Arguments& arguments) {
  return shown(session.held(idOf(session, arguments[0])));
}

std::string storedValue(Session& session, const Arguments& arguments) {
  return shown(session.desk().stored(idOf(session, arguments[0])));
}

std::string textOfValue(Session& session, const Arguments& arguments) {
  const int id = idOf(session, arguments[0]);
  std::string text;
  session.instance().text(parameterIdentifier(id), session.held(id), &text);
  text = trimmed(text);
  std::ranges::replace(text, '\n', ' ');  // small displays show the unit on a line of its own
  return text.empty() ? asWord(text) : text;
}

std::string setBypass(Session& session, const Arguments& arguments) {
  if (arguments[0] != "on" && arguments[0] != "off")
    refuse("\"{}\" must be on or off", printable(arguments[0]));
  session.bypassed = arguments[0] == "on";
  return "ok";
}

std::string runSound(Session& session, const Arguments& arguments) {
  const RunReport report = session.run(numberWithin(arguments[0], 0.0, kHighestSeconds));
  return fmt::format("{} frames, peak {}, rms {}, checksum {:016x}", report.frames,
                     decibels(report.output.peak, 2), decibels(report.output.rms(), 2), report.checksum);
}

std::string waitTime(Session& session, const Arguments& arguments) {
  const double ms = numberWithin(arguments[0], 0.0, kLongestWaitMs);
  if (ms != std::floor(ms)) refuse("\"{}\" is no whole number", arguments[0]);
  session.desk().advanceClock(static_cast<std::uint32_t>(ms));
  return "ok";
}

std::string positions(Session& session, const Arguments&) {
  std::vector<std::string> places;
  for (const std::int32_t head : session.desk().rackOrder())
    places.emplace_back(kRack[static_cast<std::size_t>(placeOfParameter(head))].prefix);
  return joined(places);
}

std::string meters(Session& session, const Arguments& arguments) {
  const std::string part = arguments.empty() ? "" : lowerCase(arguments[0]);
  std::vector<std::string> readings;
  const auto add = [&](const std::string& name, std::optional<double> reading) {
    if (reading && lowerCase(name).find(part) != std::string::npos)
      readings.push_back(asWord(fmt::format("{}={:.4f}", name, *reading)));
  };
  for (const auto& [name, id] : {std::pair{"Input", AAX_TypeID("mtrI")}, {"Output", AAX_TypeID("mtrO")}}) {
    float peak = 0.0f;
    if (lowerCase(name).find(part) != std::string::npos && session.instance().meter(id, &peak) == AAX_SUCCESS)
      add(name, static_cast<double>(peak));
  }
  for (int id = kFirstMeterId; id <= kTotalReductionMeterId; ++id) {
    char name[kTextBytes];
    parameterName(id, name);
    add(name, session.strip().meter(id));
  }
  if (readings.empty())
    refuse("no meter's name holds \"{}\"", printable(arguments.empty() ? "" : arguments[0]));
  return joined(readings);
}

std::string help(Session&, const Arguments& arguments) {
  if (!arguments.empty()) {
    const Command& command = commandNamed(arguments[0]);
    return fmt::format("{}: {} Answers {}.", command.usage(), command.help, command.answer);
  }
  std::vector<std::string> names;
  for (const Command& command : commands()) names.emplace_back(command.name);
  return joined(names);
}

}  // namespace corvane::cli::session
