#pragma once

#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>

#include "platform/aaxhost/Description.h"

namespace corvane::aaxhost {

/// What could not be loaded or made, and why, as a person reads it.
class HostError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// A loaded plug-in library with what it told about itself. Instances hold it, so it outlives them. [control]
class Library {
 public:
  /// Loads a library file or the bundle folder round one, registers it and checks what it describes.
  /// Throws HostError: nothing there, no entry points, registration refused, a description without sense.
  static std::shared_ptr<Library> load(const std::filesystem::path& path);

  /// Lets the library go if it says that none of its objects lives; otherwise its code stays in the process.
  ~Library();
  Library(const Library&) = delete;
  Library& operator=(const Library&) = delete;

  const Description& description() const { return told; }
  /// The library file itself, absolute.
  const std::filesystem::path& file() const { return where; }
  /// How many objects of the library live, by its own count.
  int livingObjects() const { return canUnload(); }

 private:
  Library() = default;
  void findEntryPoints();
  void start();
  void registerPlugin();
  void* entryPoint(const char* name) const;

  std::filesystem::path where;
  void* handle = nullptr;
  AAX_RegisterPlugin registerIt = nullptr;
  AAX_CanUnloadNow canUnload = nullptr;
  bool started = false;
  Description told;
};

}  // namespace corvane::aaxhost
