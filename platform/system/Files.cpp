#include "platform/system/Files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstring>

namespace corvane::platform {

namespace fs = std::filesystem;

namespace {

/// Closes on every way out.
class Descriptor {
 public:
  explicit Descriptor(int opened) : number(opened) {}
  ~Descriptor() { close(); }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  operator int() const { return number; }
  bool close() {
    const bool closed = number < 0 || ::close(number) == 0;
    number = -1;
    return closed;
  }

 private:
  int number;
};

bool fail(std::string* why, int error = errno) {
  if (why) *why = std::strerror(error);
  return false;
}

bool writeAll(int descriptor, std::span<const std::uint8_t> content) {
  while (!content.empty()) {
    const ssize_t written = ::write(descriptor, content.data(), content.size());
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) return false;
    content = content.subspan(static_cast<std::size_t>(written));
  }
  return true;
}

/// A name in the folder that no other save uses. It does not end like a preset, so that a scan passes over
/// what a killed process left.
fs::path temporaryBeside(const fs::path& path) {
  static std::atomic<unsigned> count = 0;
  return path.parent_path() /
         (".corvane-save-" + std::to_string(::getpid()) + "-" + std::to_string(count.fetch_add(1)));
}

void flushFolder(const fs::path& folder) {
  const Descriptor descriptor(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (descriptor >= 0) ::fsync(descriptor);  // some file systems cannot; the file itself is safe by now
}

}  // namespace

bool readFile(const fs::path& path, std::size_t limit, Bytes* content, std::string* why) {
  const Descriptor descriptor(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
  if (descriptor < 0) return fail(why);
  struct stat status {};
  if (::fstat(descriptor, &status) != 0) return fail(why);
  if (S_ISDIR(status.st_mode)) return fail(why, EISDIR);
  if (!S_ISREG(status.st_mode)) {
    if (why) *why = "not a regular file";
    return false;
  }
  if (static_cast<std::uintmax_t>(status.st_size) > limit) return fail(why, EFBIG);
  content->resize(static_cast<std::size_t>(status.st_size));
  std::size_t at = 0;
  while (at < content->size()) {
    const ssize_t got = ::read(descriptor, content->data() + at, content->size() - at);
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) return fail(why);
    if (got == 0) break;  // cut short meanwhile
    at += static_cast<std::size_t>(got);
  }
  content->resize(at);
  return true;
}

bool writeFileSafely(const fs::path& path, std::span<const std::uint8_t> content, std::string* why) {
  std::error_code ignored;
  const fs::path target = fs::is_symlink(path, ignored) ? fs::weakly_canonical(path, ignored) : path;
  if (target.empty()) return fail(why, ENOENT);
  if (fs::is_directory(target, ignored)) return fail(why, EISDIR);
  const fs::path temporary = temporaryBeside(target);
  Descriptor out(::open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666));
  if (out < 0) return fail(why);
  struct stat old {};
  const bool keepsMode = ::stat(target.c_str(), &old) == 0;
  const bool saved = writeAll(out, content) && (!keepsMode || ::fchmod(out, old.st_mode & 0777) == 0) &&
                     ::fsync(out) == 0 && out.close() && ::rename(temporary.c_str(), target.c_str()) == 0;
  if (!saved) {
    const int error = errno;
    ::unlink(temporary.c_str());
    return fail(why, error);
  }
  flushFolder(target.has_parent_path() ? target.parent_path() : fs::path("."));
  return true;
}

std::vector<FolderEntry> listFolder(const fs::path& path) {
  std::vector<FolderEntry> entries;
  std::error_code error;
  for (fs::directory_iterator at(path, error), end; !error && at != end; at.increment(error)) {
    std::error_code unknown;
    entries.push_back({at->path().filename().native(), at->is_directory(unknown)});
  }
  std::ranges::sort(entries, {}, &FolderEntry::name);
  return entries;
}

bool makeFolder(const fs::path& path) {
  std::error_code error;
  fs::create_directories(path, error);
  return fs::is_directory(path, error);
}

}  // namespace corvane::platform
