#pragma once

#include <filesystem>
#include <string_view>

namespace corvane::platform {

/// Lines for whoever looks for a fault. Nothing in the program reads them.
class Trace {
 public:
  virtual ~Trace() = default;
  virtual void line(std::string_view text) = 0;
};

/// Appends to a file; silent without one, or where it cannot be written. [any]
class FileTrace final : public Trace {
 public:
  explicit FileTrace(std::filesystem::path target) : file(std::move(target)) {}
  void line(std::string_view text) override;

 private:
  std::filesystem::path file;
};

}  // namespace corvane::platform
