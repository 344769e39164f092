#pragma once

#include <cstdint>
#include <filesystem>
#include <span>
#include <string>
#include <vector>

namespace corvane::platform {

using Bytes = std::vector<std::uint8_t>;

/// Whole content of a regular file of at most `limit` bytes. On failure false and the reason in `why`: also
/// for pipes and devices, which are never waited for.
bool readFile(const std::filesystem::path& path, std::size_t limit, Bytes* content, std::string* why);

/// The whole of a `PendingFile` at once: false, the reason in `why`, and the old file untouched on failure.
bool writeFileSafely(const std::filesystem::path& path, std::span<const std::uint8_t> content,
                     std::string* why);

struct FolderEntry {
  std::string name;  ///< bytes as the file system has them, in any encoding
  bool isFolder;     ///< also a link to one; false for a link that leads nowhere
};

/// Entries of a folder in order of their names; empty where it cannot be read.
std::vector<FolderEntry> listFolder(const std::filesystem::path& path);

/// Makes a folder and what is missing above it; false where that fails.
bool makeFolder(const std::filesystem::path& path);

}  // namespace corvane::platform
