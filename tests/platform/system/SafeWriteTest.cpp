#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <functional>

#include "platform/system/Files.h"
#include "tests/control/Home.h"
#include "tests/rig/Child.h"

// What a save may leave behind when it dies, or fails, at any of its calls to the system. The linker leads
// these calls through here; unarmed they go straight on.

namespace {

enum class Fate { none, dies, fails };
Fate fate = Fate::none;
int callsLeft = 0;  ///< until the fate strikes

/// Whether this call is the one.
bool struck() { return fate != Fate::none && callsLeft-- == 0; }

bool failsNow() {
  if (!struck()) return false;
  if (fate == Fate::dies) ::_exit(0);
  errno = ENOSPC;
  return true;
}

}  // namespace

extern "C" {
int __real_open(const char* path, int flags, mode_t mode);
ssize_t __real_write(int descriptor, const void* bytes, size_t count);
int __real_fchmod(int descriptor, mode_t mode);
int __real_fsync(int descriptor);
int __real_close(int descriptor);
int __real_rename(const char* from, const char* to);
int __real_unlink(const char* path);

int __wrap_open(const char* path, int flags, ...) {
  va_list arguments;
  va_start(arguments, flags);
  const mode_t mode = flags & O_CREAT ? va_arg(arguments, mode_t) : 0;
  va_end(arguments);
  return failsNow() ? -1 : __real_open(path, flags, mode);
}
ssize_t __wrap_write(int descriptor, const void* bytes, size_t count) {
  if (!struck()) return __real_write(descriptor, bytes, count);
  const ssize_t half = __real_write(descriptor, bytes, count / 2);  // as far as the disk or the life goes
  if (fate == Fate::dies) ::_exit(0);
  callsLeft = 0;  // and full it stays for the rest
  return half;
}
int __wrap_fchmod(int descriptor, mode_t mode) { return failsNow() ? -1 : __real_fchmod(descriptor, mode); }
int __wrap_fsync(int descriptor) { return failsNow() ? -1 : __real_fsync(descriptor); }
int __wrap_close(int descriptor) {
  const bool fails = failsNow();
  const int result = __real_close(descriptor);  // a close that fails has closed all the same
  return fails ? -1 : result;
}
int __wrap_rename(const char* from, const char* to) { return failsNow() ? -1 : __real_rename(from, to); }
int __wrap_unlink(const char* path) { return failsNow() ? -1 : __real_unlink(path); }
}

namespace corvane::platform {
namespace {

using rig::asNobody;
using rig::inChild;

const Bytes kOld(3000, 'o'), kNew(50000, 'n');

struct SafeWrite : testing::Test {
  rig::Folder folder;
  const std::filesystem::path file = folder.path / "a.qdx";

  void SetUp() override { rig::writeFile(file, kOld); }
  void TearDown() override { fate = Fate::none; }

  static void strike(Fate what, int call) {
    fate = what;
    callsLeft = call;
  }
};

constexpr int kMostCalls = 30;

TEST_F(SafeWrite, KilledAtAnyCallLeavesTheOldFileOrTheNewOne) {
  ::chmod(folder.path.c_str(), 0777);
  ::chmod(file.c_str(), 0666);
  bool finished = false;
  int oldOnes = 0, newOnes = 0;
  for (int call = 0; !finished; ++call) {
    ASSERT_LT(call, kMostCalls);
    rig::writeFile(file, kOld);
    const int answer = asNobody([&] {
      strike(Fate::dies, call);
      return writeFileSafely(file, kNew, nullptr) ? 7 : 8;
    });
    finished = answer == 7;
    const Bytes content = rig::contentOf(file);
    EXPECT_TRUE(content == kOld || content == kNew) << "killed at call " << call;
    ++(content == kOld ? oldOnes : newOnes);
    std::string why;
    EXPECT_TRUE(writeFileSafely(file, kOld, &why)) << "the next save, after call " << call << ": " << why;
  }
  EXPECT_GE(oldOnes, 4) << "open, write, flush, close and rename come before the new file";
  EXPECT_GE(newOnes, 2) << "the folder's flush comes behind it";
}

TEST_F(SafeWrite, AnyCallThatFailsLeavesOneWholeFileAndTellsTheTruth) {
  bool finished = false;
  for (int call = 0; !finished; ++call) {
    ASSERT_LT(call, kMostCalls);
    rig::writeFile(file, kOld);
    std::string why;
    strike(Fate::fails, call);
    const bool saved = writeFileSafely(file, kNew, &why);
    finished = callsLeft >= 0;
    fate = Fate::none;
    EXPECT_EQ(rig::contentOf(file), saved ? kNew : kOld) << "call " << call;
    EXPECT_EQ(why.empty(), saved) << "call " << call;
    EXPECT_EQ(listFolder(folder.path).size(), 1U) << "call " << call << " left something behind";
  }
}

TEST_F(SafeWrite, LeftoversOfAKilledProcessOfTheSameNumberAreNoHindrance) {
  EXPECT_EQ(inChild([&] {
              const std::string start = ".corvane-save-" + std::to_string(::getpid()) + "-";
              for (int n = 0; n < 60; ++n) rig::writeFile(folder.path / (start + std::to_string(n)), {1});
              return writeFileSafely(file, kNew, nullptr) ? 0 : 1;
            }),
            0);
  EXPECT_EQ(rig::contentOf(file), kNew);
}

TEST_F(SafeWrite, WithoutRoomKeepsTheOldFile) {
  EXPECT_EQ(inChild([&] {
              ::signal(SIGXFSZ, SIG_IGN);
              const rlimit tight{10000, 10000};
              ::setrlimit(RLIMIT_FSIZE, &tight);
              std::string why;
              return !writeFileSafely(file, kNew, &why) && !why.empty() ? 0 : 1;
            }),
            0);
  EXPECT_EQ(rig::contentOf(file), kOld);
  EXPECT_EQ(listFolder(folder.path).size(), 1U);
}

TEST_F(SafeWrite, RespectsFoldersAndFilesThatMayNotBeWritten) {
  const auto refusedAsAUser = [&] {
    return asNobody([&] {
      std::string why;
      return !writeFileSafely(file, kNew, &why) && why == "Permission denied" ? 0 : 1;
    });
  };
  ::chmod(folder.path.c_str(), 0555);
  ::chmod(file.c_str(), 0666);
  EXPECT_EQ(refusedAsAUser(), 0) << "folder";
  ::chmod(folder.path.c_str(), 0777);
  ::chmod(file.c_str(), 0444);
  EXPECT_EQ(refusedAsAUser(), 0) << "file";
  EXPECT_EQ(rig::contentOf(file), kOld);
}

TEST_F(SafeWrite, FollowsLinksAndKeepsPermissions) {
  ::chmod(file.c_str(), 0640);
  std::filesystem::create_symlink("a.qdx", folder.path / "link");
  ASSERT_TRUE(writeFileSafely(folder.path / "link", kNew, nullptr));
  EXPECT_EQ(rig::contentOf(file), kNew);
  EXPECT_TRUE(std::filesystem::is_symlink(folder.path / "link"));
  struct stat status {};
  ::stat(file.c_str(), &status);
  EXPECT_EQ(status.st_mode & 0777U, 0640U);
  std::filesystem::create_symlink("gone", folder.path / "nowhere");
  std::string why;
  EXPECT_FALSE(writeFileSafely(folder.path, kNew, &why)) << "a folder";
  EXPECT_FALSE(writeFileSafely("/dev/null", kNew, &why)) << "a device";
}

}  // namespace
}  // namespace corvane::platform
