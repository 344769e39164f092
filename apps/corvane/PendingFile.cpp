#include "corvane/PendingFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstring>
#include <utility>

#include "corvane/Failure.h"

namespace corvane::cli {

namespace fs = std::filesystem;

namespace {

constexpr int kNameTries = 100;

[[noreturn]] void cannotWrite(const fs::path& path, int error) {
  fail("cannot write {}: {}", printable(path), std::strerror(error));
}

fs::path behindLinks(const fs::path& path) {
  std::error_code error;
  if (!fs::is_symlink(path, error)) return path;
  const fs::path resolved = fs::weakly_canonical(path, error);
  if (error || fs::is_symlink(resolved)) fail("cannot write {}: the link leads nowhere", printable(path));
  return resolved;
}

fs::path folderOf(const fs::path& path) {
  return path.has_parent_path() ? path.parent_path() : fs::path(".");
}

/// A short name, since the target's own may already be as long as a name can be.
fs::path temporaryName(const fs::path& folder) {
  static std::atomic<unsigned> count{0};
  return folder / fmt::format(".corvane-{}-{}.part", ::getpid(), count++);
}

}  // namespace

PendingFile::PendingFile(const fs::path& path) : asked(path), target(behindLinks(path)) {
  struct stat old {};
  const bool replaces = ::stat(target.c_str(), &old) == 0;
  if (replaces && S_ISDIR(old.st_mode)) fail("cannot write {}: it is a folder", printable(asked));
  if (replaces && !S_ISREG(old.st_mode)) fail("cannot write {}: it is not a regular file", printable(asked));
  if (replaces && ::access(target.c_str(), W_OK) != 0) cannotWrite(asked, errno);
  if (target.filename().empty()) fail("cannot write \"{}\": it names no file", printable(asked));
  const mode_t mode = replaces ? old.st_mode & 07777 : 0666;
  for (int i = 0; i < kNameTries && fd < 0; ++i) {
    temporary = temporaryName(folderOf(target));
    fd = ::open(temporary.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, mode);
    if (fd < 0 && errno != EEXIST) break;
  }
  if (fd < 0) cannotWrite(asked, errno);
  if (replaces && ::fchmod(fd, mode) != 0) {
  }  // the folder's file system may know no permissions
}

PendingFile::~PendingFile() {
  if (fd < 0) return;
  ::close(fd);
  ::unlink(temporary.c_str());
}

void PendingFile::write(std::string_view bytes) {
  while (!bytes.empty()) {
    const auto written = ::write(fd, bytes.data(), bytes.size());
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) cannotWrite(asked, errno);
    bytes.remove_prefix(static_cast<std::size_t>(written));
  }
}

void PendingFile::commit() {
  if (::fsync(fd) != 0 && errno != EINVAL) cannotWrite(asked, errno);
  if (::rename(temporary.c_str(), target.c_str()) != 0) cannotWrite(asked, errno);
  ::close(std::exchange(fd, -1));
  // the new name itself is on the disk only when the folder is
  if (const int folder = ::open(folderOf(target).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC); folder >= 0) {
    ::fsync(folder);
    ::close(folder);
  }
}

void writeFile(const fs::path& target, std::string_view bytes) {
  PendingFile file(target);
  file.write(bytes);
  file.commit();
}

}  // namespace corvane::cli
