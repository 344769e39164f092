#include "platform/system/UserFolders.h"

#include <pwd.h>
#include <unistd.h>

#include <array>
#include <fstream>
#include <string>

namespace corvane::platform {

namespace fs = std::filesystem;

namespace {

fs::path absoluteOrNothing(const char* text) {
  const fs::path path = text ? text : "";
  return path.is_absolute() ? path : fs::path();
}

fs::path homeOf(const Environment& environment) {
  if (fs::path home = absoluteOrNothing(environment("HOME")); !home.empty()) return home;
  std::array<char, 4096> buffer{};
  passwd entry{};
  passwd* found = nullptr;
  ::getpwuid_r(::getuid(), &entry, buffer.data(), buffer.size(), &found);
  return found ? absoluteOrNothing(found->pw_dir) : fs::path();
}

/// Value of a line `NAME="..."`; a "$HOME" at its start stands for the home, a backslash for the character
/// behind it.
fs::path readUserDirectory(const fs::path& file, const std::string& name, const fs::path& home) {
  std::ifstream in(file);
  fs::path result;
  for (std::string line; std::getline(in, line);) {
    if (!line.starts_with(name + "=\"")) continue;
    std::string value;
    for (std::size_t at = name.size() + 2; at < line.size() && line[at] != '"'; ++at) {
      if (line[at] == '\\' && at + 1 < line.size()) ++at;
      value += line[at];
    }
    const std::string homeWord = "$HOME";
    if (value.starts_with(homeWord)) value = home.native() + value.substr(homeWord.size());
    result = absoluteOrNothing(value.c_str());
  }
  return result;
}

}  // namespace

UserFolders findUserFolders(const Environment& environment) {
  const fs::path home = homeOf(environment);
  fs::path config = absoluteOrNothing(environment("XDG_CONFIG_HOME"));
  if (config.empty() && !home.empty()) config = home / ".config";
  UserFolders folders;
  if (!config.empty()) {
    folders.settingsFile = config / "Quadrexa-labs" / "QDXCorvane" / "settings.sqlite3";
    folders.documents = readUserDirectory(config / "user-dirs.dirs", "XDG_DOCUMENTS_DIR", home);
  }
  if (folders.documents.empty() && !home.empty()) folders.documents = home / "Documents";
  return folders;
}

}  // namespace corvane::platform
