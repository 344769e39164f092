#include <algorithm>
#include <fstream>
#include <optional>
#include <sstream>
#include <vector>

#include "control/PresetBytes.h"
#include "core/ParameterBank.h"
#include "corvane/Console.h"
#include "corvane/Failure.h"
#include "corvane/Words.h"
#include "corvane/session/Line.h"
#include "corvane/session/Session.h"
#include "corvane/session/SessionCommand.h"
#include "fuzz/Fuzz.h"

// Scripts of `corvane session`, each in a session of its own. Promises: one answer line for each command, in
// plain characters; a refused command leaves the state as it was; every value that the host holds is 0 to 1.

namespace corvane::fuzz {
namespace {

constexpr double kRateHz = 48000.0;
constexpr int kBlockFrames = 64;
constexpr double kLongestRunSeconds = 0.01;
constexpr std::size_t kMostCommands = 40;

/// A user's home with presets, good and broken, and a folder for the files that scripts name.
struct User {
  User() {
    for (const char* variable : {"HOME", "XDG_CONFIG_HOME"}) ::setenv(variable, home.path.c_str(), 1);
    const auto presets = home.path / "Documents/Quadrexa/User Presets/QDX Corvane";
    std::filesystem::create_directories(presets / "Live");
    PresetRecord record;
    record.values.fill(0.5f);
    Bytes whole = presetBlock(record, 0, 100);
    write(presets / "Live/mine.qdx", whole);
    whole.resize(whole.size() / 2);
    write(presets / "broken.qdx", whole);
    std::filesystem::current_path(folder.path);
  }
  static void write(const std::filesystem::path& path, const Bytes& bytes) {
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
  }
  void tidy() const {
    for (const auto& entry : std::filesystem::directory_iterator(folder.path))
      std::filesystem::remove_all(entry);
  }
  OwnFolder home, folder;
};

/// The lines with a command; nothing for a script that would leave its folder or play for long.
std::optional<std::vector<std::string>> commandsOf(const std::string& script) {
  if (script.find('/') != script.npos || script.find("..") != script.npos) return std::nullopt;
  std::vector<std::string> lines;
  std::istringstream in(script);
  for (std::string line; std::getline(in, line);) {
    const std::string_view text = cli::trimmed(line);
    if (text.empty() || text.starts_with('#')) continue;
    lines.push_back(line);
    try {
      const auto words = cli::session::wordsOf(text);
      if (words.size() > 1 && words[0] == "run" && cli::numberOf(words[1]).value_or(0.0) > kLongestRunSeconds)
        return std::nullopt;
    } catch (const cli::Failure&) {  // a quote that is not closed: the session says so too
    }
  }
  return lines.size() <= kMostCommands ? std::optional(lines) : std::nullopt;
}

/// Runs one command; whether it was refused.
bool runs(const std::string& line, cli::session::Session& session) {
  std::istringstream in(line);
  std::ostringstream out, err;
  cli::Console console(out, err, false);
  const int refused = cli::answerLines(in, session, false, console);
  const std::string answer = out.str();
  expect(std::ranges::count(answer, '\n') == 1 && answer.back() == '\n', "a command has one answer line");
  expect(std::ranges::none_of(answer, [](char c) { return (c >= 0 && c < ' ' && c != '\n') || c == 0x7f; }),
         "an answer is plain characters");
  expect(answer.starts_with("error: line ") == (refused == 1), "a refusal is told as one");
  return refused == 1;
}

void check(const std::vector<std::string>& lines) {
  cli::session::Session session(std::nullopt, kRateHz, kBlockFrames);
  for (const std::string& line : lines) {
    // every beginning of a script is a script too, so the last command alone shows what any of them does
    const bool last = &line == &lines.back();
    const auto before = last ? session.strip().state().data : std::vector<char>{};
    if (runs(line, session) && last)
      expect(session.strip().state().data == before, "a refused command leaves the state");
  }
  for (int id = 0; id < kParameters; ++id) {
    if ((parameterKind(id) & kKindAnnounced) == 0) continue;
    const double value = session.held(id);
    expect(value >= 0.0 && value <= 1.0, "a value is 0 to 1");
  }
}

}  // namespace
}  // namespace corvane::fuzz

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const corvane::fuzz::User user;
  if (const auto lines = corvane::fuzz::commandsOf({data, data + size})) corvane::fuzz::check(*lines);
  user.tidy();
  return 0;
}
