#pragma once

#include <filesystem>
#include <functional>

namespace corvane::platform {

/// Where a user's things live. A path is empty where the user has no home to put it in.
struct UserFolders {
  std::filesystem::path settingsFile;
  std::filesystem::path documents;
};

/// Value of an environment variable, null where it is not set.
using Environment = std::function<const char*(const char*)>;

/// By the XDG rules: relative paths are ignored; without HOME the user's entry in the system counts.
UserFolders findUserFolders(const Environment& environment);

}  // namespace corvane::platform
