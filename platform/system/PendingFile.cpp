#include "platform/system/PendingFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstring>
#include <utility>

namespace corvane::platform {

namespace fs = std::filesystem;

namespace {

constexpr int kNameTries = 100;  // what killed processes of the same number may have left

bool refuse(std::string* why, const char* reason) {
  if (why) *why = reason;
  return false;
}
bool refuse(std::string* why, int error = errno) { return refuse(why, std::strerror(error)); }

fs::path folderOf(const fs::path& path) {
  return path.has_parent_path() ? path.parent_path() : fs::path(".");
}

/// A short name, since the target's own may already be as long as a name can be. It does not end like a
/// preset, so that a scan passes over what a killed process left.
fs::path temporaryName(const fs::path& folder) {
  static std::atomic<unsigned> count{0};
  return folder / (".corvane-save-" + std::to_string(::getpid()) + "-" + std::to_string(count.fetch_add(1)));
}

/// The new name itself is on the disk only when the folder is. Some file systems cannot flush one; the file
/// is safe by then.
void flushFolder(const fs::path& folder) {
  const int descriptor = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (descriptor < 0) return;
  ::fsync(descriptor);
  ::close(descriptor);
}

}  // namespace

bool PendingFile::open(const fs::path& path, std::string* why) {
  std::error_code error;
  target = path;
  if (fs::is_symlink(path, error)) {
    target = fs::weakly_canonical(path, error);
    if (error || fs::is_symlink(target)) return refuse(why, "the link leads nowhere");
  }
  struct stat old {};
  const bool replaces = ::stat(target.c_str(), &old) == 0;
  if (replaces && S_ISDIR(old.st_mode)) return refuse(why, "it is a folder");
  if (replaces && !S_ISREG(old.st_mode)) return refuse(why, "it is not a regular file");
  if (replaces && ::access(target.c_str(), W_OK) != 0) return refuse(why);
  if (target.filename().empty()) return refuse(why, "it names no file");
  folder = folderOf(target);
  const mode_t mode = replaces ? old.st_mode & 07777 : 0666;
  for (int i = 0; i < kNameTries && fd < 0; ++i) {
    fs::path name = temporaryName(folder);
    fd = ::open(name.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, mode);
    if (fd >= 0)
      temporary = std::move(name);
    else if (errno != EEXIST)
      break;
  }
  if (fd < 0) return refuse(why);
  if (replaces) ::fchmod(fd, mode);  // the creation mask had its say above; a failure costs permissions alone
  return true;
}

bool PendingFile::write(std::span<const std::uint8_t> bytes, std::string* why) {
  while (!bytes.empty()) {
    const ssize_t written = ::write(fd, bytes.data(), bytes.size());
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) return refuse(why, written < 0 ? errno : ENOSPC);
    bytes = bytes.subspan(static_cast<std::size_t>(written));
  }
  return true;
}

bool PendingFile::commit(std::string* why) {
  if (::fsync(fd) != 0 && errno != EINVAL) return refuse(why);
  if (::close(std::exchange(fd, -1)) != 0) return refuse(why);
  if (::rename(temporary.c_str(), target.c_str()) != 0) return refuse(why);
  temporary.clear();
  flushFolder(folder);
  return true;
}

void PendingFile::abandon() {
  if (fd >= 0) ::close(std::exchange(fd, -1));
  if (!temporary.empty()) ::unlink(temporary.c_str());
  temporary.clear();
}

}  // namespace corvane::platform
