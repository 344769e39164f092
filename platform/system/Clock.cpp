#include "platform/system/Clock.h"

#include <time.h>

#include <chrono>
#include <cstdio>

namespace corvane::platform {

std::uint32_t SystemClock::milliseconds() {
  using namespace std::chrono;
  return static_cast<std::uint32_t>(
      duration_cast<std::chrono::milliseconds>(steady_clock::now().time_since_epoch()).count());
}

std::string SystemClock::timeOfDay() {
  const time_t now = time(nullptr);
  tm local{};
  localtime_r(&now, &local);
  char text[16];
  return {text, strftime(text, sizeof text, "%H:%M:%S", &local)};
}

void HoldableClock::hold() {
  heldAtMs = source.milliseconds();
  movedMs = 0;
  held = true;
}

std::uint32_t HoldableClock::milliseconds() {
  return held ? heldAtMs + static_cast<std::uint32_t>(movedMs) : source.milliseconds();
}

std::string HoldableClock::timeOfDay() {
  if (!held) return source.timeOfDay();
  const std::chrono::hh_mm_ss time{std::chrono::seconds(movedMs / 1000 % 86400)};
  char text[16];
  std::snprintf(text, sizeof text, "%02d:%02d:%02d", static_cast<int>(time.hours().count()),
                static_cast<int>(time.minutes().count()), static_cast<int>(time.seconds().count()));
  return text;
}

}  // namespace corvane::platform
