#pragma once

#include <fmt/format.h>

#include <iosfwd>
#include <mutex>
#include <ostream>
#include <string>

namespace corvane::cli {

/// Where the program talks to: results to `out`, notes, errors and progress to `err`. Lines of several
/// threads do not mix.
class Console {
 public:
  Console(std::ostream& output, std::ostream& errors, bool errorsOnTerminal)
      : out(output), err(errors), terminal(errorsOnTerminal) {}

  template <typename... Args>
  void print(fmt::format_string<Args...> pattern, Args&&... args) {
    writeOut(fmt::format(pattern, std::forward<Args>(args)...));
  }
  template <typename... Args>
  void note(fmt::format_string<Args...> pattern, Args&&... args) {
    writeError("note: " + fmt::format(pattern, std::forward<Args>(args)...) + "\n");
  }
  void error(const std::string& text) { writeError("error: " + text + "\n"); }

  /// What was printed is there for whoever waits for it.
  void flush();
  /// A line that the next one replaces; nothing unless a person watches.
  void status(const std::string& line);
  bool watched() const { return terminal; }

 private:
  void writeOut(const std::string& text);
  void writeError(const std::string& text);
  void clearStatus();

  std::mutex mutex;
  std::ostream& out;
  std::ostream& err;
  bool terminal;
  bool statusShown = false;
};

}  // namespace corvane::cli
