#include "corvane/Console.h"

#include <utility>

namespace corvane::cli {

namespace {

constexpr const char* kEraseLine = "\r\x1b[K";

}  // namespace

void Console::clearStatus() {
  if (std::exchange(statusShown, false)) err << kEraseLine;
}

void Console::writeOut(const std::string& text) {
  const std::lock_guard lock(mutex);
  clearStatus();
  err.flush();
  out << text;
}

void Console::writeError(const std::string& text) {
  const std::lock_guard lock(mutex);
  clearStatus();
  out.flush();
  err << text << std::flush;
}

void Console::flush() {
  const std::lock_guard lock(mutex);
  out.flush();
}

void Console::status(const std::string& line) {
  if (!terminal) return;
  const std::lock_guard lock(mutex);
  clearStatus();
  out.flush();
  err << line << std::flush;
  statusShown = !line.empty();
}

}  // namespace corvane::cli
