#include "platform/system/UserFolders.h"

#include <gtest/gtest.h>

#include <fstream>
#include <map>

#include "tests/control/Home.h"

namespace corvane::platform {
namespace {

UserFolders foldersFor(std::map<std::string, std::string> variables) {
  return findUserFolders([&](const char* name) -> const char* {
    const auto at = variables.find(name);
    return at == variables.end() ? nullptr : at->second.c_str();
  });
}

TEST(UserFolders, FollowTheUsersOwnNames) {
  const rig::Folder home;
  const std::string config = home.path / "conf";
  std::filesystem::create_directory(config);
  std::ofstream(config + "/user-dirs.dirs") << "# XDG_DOCUMENTS_DIR=\"/no\"\nXDG_MUSIC_DIR=\"$HOME/Musik\"\n"
                                               "XDG_DOCUMENTS_DIR=\"$HOME/Meine \\\"Texte\\\"\"\n";
  const auto folders = foldersFor({{"HOME", home.path}, {"XDG_CONFIG_HOME", config}});
  EXPECT_EQ(folders.documents, home.path / "Meine \"Texte\"");
  EXPECT_EQ(folders.settingsFile, config + "/Quadrexa-labs/QDXCorvane/settings.sqlite3");
}

TEST(UserFolders, FallBackToTheHome) {
  const auto folders = foldersFor({{"HOME", "/home/ann"}});
  EXPECT_EQ(folders.documents, "/home/ann/Documents");
  EXPECT_EQ(folders.settingsFile, "/home/ann/.config/Quadrexa-labs/QDXCorvane/settings.sqlite3");
}

TEST(UserFolders, IgnoreRelativePathsAndSurviveWithoutAHome) {
  EXPECT_EQ(foldersFor({{"HOME", "/home/ann"}, {"XDG_CONFIG_HOME", "conf"}}).settingsFile,
            foldersFor({{"HOME", "/home/ann"}}).settingsFile);
  for (const char* home : {"", "relative"}) {
    const auto folders = foldersFor({{"HOME", home}});
    EXPECT_TRUE(folders.documents.empty() || folders.documents.is_absolute());
    EXPECT_EQ(folders.documents, foldersFor({}).documents) << "the system's entry of the user";
  }
}

}  // namespace
}  // namespace corvane::platform
