#pragma once

#include <filesystem>
#include <string_view>

#include "platform/system/PendingFile.h"

namespace corvane::cli {

/// A file that exists under its name only when it is whole, for a person at a terminal: what cannot be
/// written is a Failure that names the file as the person did.
class PendingFile {
 public:
  explicit PendingFile(const std::filesystem::path& target);

  /// Open for writing, from the start; owned by this object.
  int descriptor() const { return file.descriptor(); }
  void write(std::string_view bytes);
  void commit();

 private:
  [[noreturn]] void fail(const std::string& why) const;

  std::filesystem::path asked;  ///< as the user wrote it
  platform::PendingFile file;
};

/// The whole text at once.
void writeFile(const std::filesystem::path& target, std::string_view bytes);

}  // namespace corvane::cli
