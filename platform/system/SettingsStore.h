#pragma once

#include <filesystem>
#include <span>
#include <string>

#include "platform/system/Files.h"

namespace corvane::platform {

/// Small values by name that all processes of a user share.
class SettingsStore {
 public:
  virtual ~SettingsStore() = default;
  /// False, and `value` as it was, for a value that is missing, of the other type, or cannot be read.
  virtual bool readBytes(const std::string& name, Bytes* value) = 0;
  virtual bool readText(const std::string& name, std::string* value) = 0;
  /// False, and the stored value as it was, where the store cannot be written.
  virtual bool writeBytes(const std::string& name, std::span<const std::uint8_t> value) = 0;
  virtual bool writeText(const std::string& name, const std::string& value) = 0;
};

/// The store as an SQLite file, one transaction for each write. Several processes may use it at once; a call
/// gives up rather than wait longer than three quarters of a second. [any]
class SqliteSettingsStore final : public SettingsStore {
 public:
  /// The file and its folder are made by the first write; an empty path makes a store that holds nothing.
  explicit SqliteSettingsStore(std::filesystem::path path) : file(std::move(path)) {}
  bool readBytes(const std::string& name, Bytes* value) override;
  bool readText(const std::string& name, std::string* value) override;
  bool writeBytes(const std::string& name, std::span<const std::uint8_t> value) override;
  bool writeText(const std::string& name, const std::string& value) override;

 private:
  bool read(const std::string& name, const char* type, Bytes* value);
  bool write(const std::string& name, const char* type, std::span<const std::uint8_t> value);

  std::filesystem::path file;
};

}  // namespace corvane::platform
