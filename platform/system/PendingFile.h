#pragma once

#include <cstdint>
#include <filesystem>
#include <span>
#include <string>

namespace corvane::platform {

/// A file that exists under its name only when it is whole: whatever crashes, fills up or loses its power,
/// either the old content stands there or the new one.
///
/// Bytes go to a temporary name in the same folder; `commit` flushes them to the disk and renames. Without a
/// commit the temporary file goes with this object, and what stood under the name stays. A symbolic link is
/// followed: its target is what is replaced. The new file keeps the permissions of the one it replaces, and a
/// file that may not be written is not replaced. Each call answers false with the reason in `why`. [any]
class PendingFile {
 public:
  PendingFile() = default;
  ~PendingFile() { abandon(); }
  PendingFile(const PendingFile&) = delete;
  PendingFile& operator=(const PendingFile&) = delete;

  /// Once, before all else.
  bool open(const std::filesystem::path& path, std::string* why);
  /// Open for reading and writing, from the start; owned by this object.
  int descriptor() const { return fd; }
  bool write(std::span<const std::uint8_t> bytes, std::string* why);
  bool commit(std::string* why);

 private:
  void abandon();

  std::filesystem::path target;     ///< links resolved
  std::filesystem::path folder;     ///< of the target, kept so that `commit` needs no memory
  std::filesystem::path temporary;  ///< empty when there is none
  int fd = -1;
};

}  // namespace corvane::platform
