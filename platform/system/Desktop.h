#pragma once

#include <sys/types.h>

#include <functional>
#include <mutex>
#include <string>
#include <vector>

namespace corvane::platform {

/// What the desktop does for a program: opening things in the user's own applications, and messages.
class Desktop {
 public:
  enum class Opened { yes, failed, noApplication };

  virtual ~Desktop() = default;
  /// Opens a folder, a document or a link. Never waits for the application.
  virtual Opened open(const std::string& target) = 0;
  virtual void message(const std::string& title, const std::string& text) = 0;
};

/// Opens through `opener`, started without a shell; messages go to `show`. [control]
class SystemDesktop final : public Desktop {
 public:
  using Show = std::function<void(const std::string& title, const std::string& text)>;
  explicit SystemDesktop(Show messages, std::string program = "xdg-open")
      : show(std::move(messages)), opener(std::move(program)) {}
  ~SystemDesktop() override;
  Opened open(const std::string& target) override;
  void message(const std::string& title, const std::string& text) override { show(title, text); }

 private:
  void collectFinished();

  Show show;
  std::string opener;
  std::mutex mutex;             ///< instances in several threads share the desktop
  std::vector<pid_t> children;  ///< started and not yet collected
};

}  // namespace corvane::platform
