#include <filesystem>
#include <optional>

#include "corvane/Failure.h"
#include "corvane/Presets.h"
#include "corvane/StateFile.h"
#include "corvane/Words.h"
#include "corvane/session/Answers.h"
#include "corvane/session/Line.h"

namespace corvane::cli::session {

namespace {

constexpr const char* kListKinds[] = {"category", "designer", "user"};
constexpr int kUserKind = 2;

struct ListWords {
  int kind = 0;
  std::string list;
};

/// "designer:NAME" taken apart; without a kind it is a category.
ListWords splitList(const std::string& words) {
  for (int kind = 0; kind <= kUserKind; ++kind)
    if (const std::string prefix = std::string(kListKinds[kind]) + ":"; words.starts_with(prefix))
      return {kind, words.substr(prefix.size())};
  return {0, words};
}

std::optional<int> indexOf(const std::string& text) {
  if (text.empty() || text.size() > 4 || text.find_first_not_of("0123456789") != text.npos)
    return std::nullopt;
  return std::stoi(text);
}

/// All names that `nameAt` tells for 0, 1, 2 ... before it has no more.
template <typename NameAt>
std::vector<std::string> namesFrom(NameAt nameAt) {
  std::vector<std::string> names;
  while (const char* name = nameAt(static_cast<int>(names.size()))) names.emplace_back(name);
  return names;
}

/// A number in the range of `names`, or the one that has the name. Throws Failure with the nearest names.
int numberOfName(const char* what, const std::string& words, const std::vector<std::string>& names) {
  if (const auto index = indexOf(words)) {
    if (*index < std::ssize(names)) return *index;
    if (names.empty()) refuse("no {} {}; there is none", what, words);
    refuse("no {} {}; there are 0 to {}", what, words, names.size() - 1);
  }
  std::string found;
  int last = -1;
  for (int k = 0; k < std::ssize(names); ++k)
    if (lowerCase(names[static_cast<std::size_t>(k)]) == lowerCase(words)) {
      found += (found.empty() ? "" : ", ") + std::to_string(k);
      last = k;
    }
  if (last < 0) {
    const std::string near = nearestOf(words, names);
    refuse("no {} \"{}\"{}", what, printable(words), near.empty() ? "" : "; nearest: " + printable(near));
  }
  if (found != std::to_string(last)) refuse("several of the name \"{}\": {}", printable(words), found);
  return last;
}

std::string nameOf(Session& session) { return printable(session.desk().name()); }

/// Throws with the desk's own reason for what it refuses; `what` is what the person named.
void attempt(Session& session, const std::string& what, const std::function<bool(EditorDesk&)>& operation) {
  bool done = false;
  session.atWindow([&](EditorDesk& desk) { done = operation(desk); });
  if (!done) fail("{}{}{}", printable(what), what.empty() ? "" : ": ", printable(session.desk().problem()));
}

std::string yesOrNo(bool yes) { return yes ? "yes" : "no"; }

std::string absolute(const std::string& file) { return std::filesystem::absolute(file).string(); }

}  // namespace

std::string selectPreset(Session& session, const Arguments& arguments) {
  EditorDesk& desk = session.desk();
  const auto [kind, list] = splitList(arguments[0]);
  if (kind == kUserKind) desk.rescanUserFolders();
  PresetSelection wanted{kind, 0, 0};
  wanted.listIndex =
      numberOfName("list", list, namesFrom([&](int k) { return desk.listName(wanted.listKind, k); }));
  wanted.presetIndex =
      numberOfName("preset", joined({arguments.begin() + 1, arguments.end()}),
                   namesFrom([&](int k) { return desk.presetName(wanted.listKind, wanted.listIndex, k); }));
  attempt(session, "", [&](EditorDesk& window) { return window.selectPreset(wanted); });
  return nameOf(session);
}

std::string nextPreset(Session& session, const Arguments&) {
  session.atWindow([](EditorDesk& desk) { desk.nextPreset(); });
  return nameOf(session);
}

std::string previousPreset(Session& session, const Arguments&) {
  session.atWindow([](EditorDesk& desk) { desk.previousPreset(); });
  return nameOf(session);
}

std::string selection(Session& session, const Arguments&) {
  const PresetSelection chosen = session.desk().selection();
  const char* list = session.desk().listName(chosen.listKind, chosen.listIndex);
  return fmt::format("{} {}",
                     asWord(printable(fmt::format("{}:{}", kListKinds[chosen.listKind],
                                                  list ? list : std::to_string(chosen.listIndex)))),
                     chosen.presetIndex);
}

std::string settingName(Session& session, const Arguments&) { return nameOf(session); }

std::string isModified(Session& session, const Arguments&) { return yesOrNo(session.desk().isModified()); }

std::string memory(Session& session, const Arguments& arguments) {
  if (!arguments.empty()) {
    if (arguments[0] != "A" && arguments[0] != "B") refuse("\"{}\" must be A or B", printable(arguments[0]));
    session.atWindow([&](EditorDesk& desk) { desk.switchMemory(arguments[0] == "B"); });
  }
  return session.desk().memoryBIsCurrent() ? "B" : "A";
}

std::string copyMemory(Session& session, const Arguments&) {
  session.desk().copyMemory();
  return "ok";
}

std::string undo(Session& session, const Arguments&) {
  if (!session.desk().canUndo()) fail("nothing to take back");
  session.atWindow([](EditorDesk& desk) { desk.undo(); });
  return nameOf(session);
}

std::string redo(Session& session, const Arguments&) {
  if (!session.desk().canRedo()) fail("nothing to make again");
  session.atWindow([](EditorDesk& desk) { desk.redo(); });
  return nameOf(session);
}

std::string canUndo(Session& session, const Arguments&) { return yesOrNo(session.desk().canUndo()); }
std::string canRedo(Session& session, const Arguments&) { return yesOrNo(session.desk().canRedo()); }

std::string copySetting(Session& session, const Arguments&) {
  attempt(session, "", [](EditorDesk& desk) { return desk.copy(); });
  return "ok";
}

std::string pasteSetting(Session& session, const Arguments&) {
  attempt(session, "", [](EditorDesk& desk) { return desk.paste(); });
  return nameOf(session);
}

std::string savePreset(Session& session, const Arguments& arguments) {
  const std::string file = presetFileName(arguments[0]);
  attempt(session, file, [&](EditorDesk& desk) { return desk.savePreset(absolute(file).c_str()); });
  return printable(file);
}

std::string loadPreset(Session& session, const Arguments& arguments) {
  attempt(session, arguments[0],
          [&](EditorDesk& desk) { return desk.loadPreset(absolute(arguments[0]).c_str()); });
  return nameOf(session);
}

std::string saveState(Session& session, const Arguments& arguments) {
  const aaxhost::Chunk state = session.strip().state();
  writeState(arguments[0], state);
  return fmt::format("{} bytes", state.data.size());
}

std::string loadState(Session& session, const Arguments& arguments) {
  try {
    session.strip().restore(readState(arguments[0]));
  } catch (const Failure& failure) {
    fail("{}: {}", printable(arguments[0]), failure.what());
  }
  return nameOf(session);
}

}  // namespace corvane::cli::session
