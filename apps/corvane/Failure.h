#pragma once

#include <fmt/format.h>

#include <stdexcept>
#include <string>
#include <utility>

namespace corvane::cli {

inline constexpr int kDone = 0, kFailed = 1, kWrongUsage = 2;

/// What went wrong, in words for the person at the terminal, and the exit code that goes with it.
struct Failure : std::runtime_error {
  Failure(int code, const std::string& text) : std::runtime_error(text), exitCode(code) {}
  int exitCode;
};

/// The work could not be done: a file, a disk, a rate.
template <typename... Args>
[[noreturn]] void fail(fmt::format_string<Args...> pattern, Args&&... args) {
  throw Failure(kFailed, fmt::format(pattern, std::forward<Args>(args)...));
}

/// The command line itself is wrong.
template <typename... Args>
[[noreturn]] void refuse(fmt::format_string<Args...> pattern, Args&&... args) {
  throw Failure(kWrongUsage, fmt::format(pattern, std::forward<Args>(args)...));
}

/// A name in any bytes as one line of a terminal: control characters as \xNN.
std::string printable(const std::string& name);

}  // namespace corvane::cli
