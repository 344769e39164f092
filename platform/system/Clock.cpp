#include "platform/system/Clock.h"

#include <time.h>

#include <chrono>

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

}  // namespace corvane::platform
