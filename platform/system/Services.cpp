#include "platform/system/Services.h"

#include <cstdlib>

namespace corvane::platform {

const Services& systemServices() {
  static const auto environment = [](const char* name) -> const char* { return std::getenv(name); };
  static const auto textOf = [](const char* value) { return value ? value : ""; };
  static FileTrace trace{textOf(std::getenv("CORVANE_TRACE"))};
  static const UserFolders folders = findUserFolders(environment);
  static SqliteSettingsStore settings{folders.settingsFile};
  static SystemClock clock;
  static SystemDesktop desktop{
      [](const std::string& title, const std::string& text) { trace.line(title + ": " + text); }};
  static const Services services{folders, settings, clock, desktop, trace};
  return services;
}

}  // namespace corvane::platform
