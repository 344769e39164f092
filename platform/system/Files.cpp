#include "platform/system/Files.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <memory>
#include <string_view>

#include "platform/system/PendingFile.h"

namespace corvane::platform {

namespace fs = std::filesystem;

namespace {

/// Closes on every way out.
class Descriptor {
 public:
  explicit Descriptor(int opened) : number(opened) {}
  ~Descriptor() {
    if (number >= 0) ::close(number);
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  operator int() const { return number; }

 private:
  int number;
};

bool fail(std::string* why, int error = errno) {
  if (why) *why = std::strerror(error);
  return false;
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
  PendingFile file;
  return file.open(path, why) && file.write(content, why) && file.commit(why);
}

// By the system's own calls: the iterator of the standard library ends the process where memory runs out.
std::vector<FolderEntry> listFolder(const fs::path& path) {
  struct Close {
    void operator()(DIR* folder) const { ::closedir(folder); }
  };
  std::vector<FolderEntry> entries;
  const std::unique_ptr<DIR, Close> folder(path.empty() ? nullptr : ::opendir(path.c_str()));
  while (const dirent* const entry = folder ? ::readdir(folder.get()) : nullptr) {
    const std::string_view name = entry->d_name;
    if (name == "." || name == "..") continue;
    struct stat status {};
    const bool known = ::fstatat(::dirfd(folder.get()), entry->d_name, &status, 0) == 0;
    entries.push_back({std::string(name), known && S_ISDIR(status.st_mode)});
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
