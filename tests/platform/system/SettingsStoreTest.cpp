#include "platform/system/SettingsStore.h"

#include <gtest/gtest.h>
#include <sqlite3.h>
#include <sys/wait.h>

#include <algorithm>
#include <chrono>

#include "tests/control/Home.h"

namespace corvane::platform {
namespace {

using Clock = std::chrono::steady_clock;
constexpr std::chrono::milliseconds kLongestWait{1000};

TEST(SettingsStore, KeepsBytesAndTextApart) {
  const rig::Folder folder;
  SqliteSettingsStore store(folder.path / "deep/er/settings.sqlite3");
  Bytes bytes{7};
  EXPECT_FALSE(store.readBytes("MemoA", &bytes));
  EXPECT_FALSE(std::filesystem::exists(folder.path / "deep")) << "reading makes nothing";
  const Bytes content{0, 1, 255, 0, 39};
  EXPECT_TRUE(store.writeBytes("MemoA", content));
  EXPECT_TRUE(store.writeText("ManualPath", "/doc/it's.pdf"));
  SqliteSettingsStore again(folder.path / "deep/er/settings.sqlite3");
  EXPECT_TRUE(again.readBytes("MemoA", &bytes));
  EXPECT_EQ(bytes, content);
  std::string text = "kept";
  EXPECT_FALSE(again.readText("MemoA", &text));
  EXPECT_EQ(text, "kept");
  EXPECT_TRUE(again.readText("ManualPath", &text));
  EXPECT_EQ(text, "/doc/it's.pdf");
  EXPECT_TRUE(store.writeBytes("MemoA", Bytes{}));
  EXPECT_TRUE(again.readBytes("MemoA", &bytes));
  EXPECT_TRUE(bytes.empty());
}

TEST(SettingsStore, AStoreThatIsNoneLeavesTheCallersValue) {
  const rig::Folder folder;
  rig::writeFile(folder.path / "noise", Bytes(5000, 0x5A));
  std::filesystem::create_directory(folder.path / "folder");
  for (const std::filesystem::path& path : {folder.path / "noise", folder.path / "folder",
                                            folder.path / "noise/below", std::filesystem::path()}) {
    SqliteSettingsStore store(path);
    Bytes bytes{7};
    EXPECT_FALSE(store.writeBytes("a", Bytes{1})) << path;
    EXPECT_FALSE(store.readBytes("a", &bytes)) << path;
    EXPECT_EQ(bytes, Bytes{7}) << path;
  }
}

TEST(SettingsStore, TwoProcessesLoseNothingAndNeverHang) {
  const rig::Folder folder;
  const std::filesystem::path path = folder.path / "settings.sqlite3";
  constexpr int kProcesses = 2, kWrites = 25;
  std::vector<pid_t> children;
  for (int process = 0; process < kProcesses; ++process) {
    const pid_t child = ::fork();
    if (child == 0) {
      SqliteSettingsStore store(path);
      for (int k = 0; k < kWrites; ++k) {
        const Bytes clipboard(6353, static_cast<std::uint8_t>(process));
        const auto start = Clock::now();
        const bool written =
            store.writeBytes("QDXCorvane: " + std::to_string(process * 1000 + k), Bytes(4, 1)) &&
            store.writeBytes("MemoA", clipboard);
        if (!written) ::_exit(1);
        if (Clock::now() - start > 2 * kLongestWait) ::_exit(2);
      }
      ::_exit(0);
    }
    children.push_back(child);
  }
  for (const pid_t child : children) {
    int status = 0;
    ::waitpid(child, &status, 0);
    EXPECT_EQ(WEXITSTATUS(status), 0) << "1: lost a write, 2: hung";
  }
  SqliteSettingsStore store(path);
  Bytes bytes;
  int kept = 0;
  for (int process = 0; process < kProcesses; ++process)
    for (int k = 0; k < kWrites; ++k)
      kept += store.readBytes("QDXCorvane: " + std::to_string(process * 1000 + k), &bytes) ? 1 : 0;
  EXPECT_EQ(kept, kProcesses * kWrites);
  EXPECT_TRUE(store.readBytes("MemoA", &bytes));
  EXPECT_EQ(std::ranges::count(bytes, bytes.front()), 6353) << "one clipboard or the other, never a mixture";
}

TEST(SettingsStore, GivesUpWithinASecondOnOneThatStaysLocked) {
  const rig::Folder folder;
  const std::filesystem::path path = folder.path / "settings.sqlite3";
  SqliteSettingsStore store(path);
  ASSERT_TRUE(store.writeBytes("a", Bytes{1}));
  sqlite3* holder = nullptr;
  ASSERT_EQ(sqlite3_open(path.c_str(), &holder), SQLITE_OK);
  ASSERT_EQ(sqlite3_exec(holder, "BEGIN EXCLUSIVE", nullptr, nullptr, nullptr), SQLITE_OK);
  Bytes bytes{7};
  const auto start = Clock::now();
  EXPECT_FALSE(store.writeBytes("a", Bytes{2}));
  const auto middle = Clock::now();
  EXPECT_FALSE(store.readBytes("a", &bytes));
  EXPECT_LT(middle - start, kLongestWait);
  EXPECT_LT(Clock::now() - middle, kLongestWait);
  sqlite3_close(holder);
  EXPECT_TRUE(store.readBytes("a", &bytes));
  EXPECT_EQ(bytes, Bytes{1});
}

}  // namespace
}  // namespace corvane::platform
