#pragma once

#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>

/// What a target does with one input. It returns, whatever the input; a broken promise ends the process.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace corvane::fuzz {

/// Ends the process with `promise` unless it holds; the input that did it is kept.
inline void expect(bool holds, const char* promise) {
  if (holds) return;
  std::fprintf(stderr, "broken promise: %s\n", promise);
  std::abort();
}

/// A folder of this process, in memory where there is such a place, that goes when the process ends well.
class OwnFolder {
 public:
  OwnFolder() {
    const std::filesystem::path memory = "/dev/shm";
    std::string name =
        ((std::filesystem::is_directory(memory) ? memory : std::filesystem::temp_directory_path()) /
         "corvane-fuzz-XXXXXX")
            .native();
    if (!::mkdtemp(name.data())) std::abort();
    path = name;
  }
  ~OwnFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path, ignored);
  }
  OwnFolder(const OwnFolder&) = delete;
  OwnFolder& operator=(const OwnFolder&) = delete;

  std::filesystem::path path;
};

}  // namespace corvane::fuzz
