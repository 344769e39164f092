#pragma once

#include <filesystem>
#include <string_view>

namespace corvane::cli {

/// A file that exists under its name only when it is whole.
///
/// Bytes go to a temporary name in the same folder; `commit` flushes them to the disk and renames. Without a
/// commit the destructor removes the temporary file, and what stood under the name stays. A symbolic link is
/// followed: its target is what is replaced. The new file keeps the permissions of the one it replaces.
class PendingFile {
 public:
  /// Throws Failure where no file can be made.
  explicit PendingFile(const std::filesystem::path& target);
  ~PendingFile();
  PendingFile(const PendingFile&) = delete;
  PendingFile& operator=(const PendingFile&) = delete;

  /// Open for writing, from the start; owned by this object.
  int descriptor() const { return fd; }
  void write(std::string_view bytes);
  void commit();

 private:
  std::filesystem::path asked;   ///< as the user wrote it, for messages
  std::filesystem::path target;  ///< links resolved
  std::filesystem::path temporary;
  int fd = -1;
};

/// The whole text at once.
void writeFile(const std::filesystem::path& target, std::string_view bytes);

}  // namespace corvane::cli
