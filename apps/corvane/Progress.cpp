#include "corvane/Progress.h"

#include <algorithm>
#include <string>

namespace corvane::cli {

namespace {

constexpr std::chrono::milliseconds kPatience{1000};  // shorter work shows no bar
constexpr std::chrono::milliseconds kRefresh{100};
constexpr int kBarWidth = 30;

}  // namespace

void Progress::advance(std::int64_t frames) {
  done += frames;
  if (!console.watched()) return;
  const std::unique_lock lock(drawing, std::try_to_lock);
  const auto now = Clock::now();
  if (!lock || now - start < kPatience || now - lastDrawn < kRefresh) return;
  lastDrawn = now;
  const double share =
      expected > 0 ? std::min(1.0, static_cast<double>(done) / static_cast<double>(expected)) : 0.0;
  const auto filled = static_cast<std::size_t>(share * kBarWidth);
  const double seconds = std::chrono::duration<double>(now - start).count();
  const double left = share > 0.0 ? seconds / share - seconds : 0.0;
  console.status(fmt::format("[{}{}] {:3.0f} %  {:.0f} s left", std::string(filled, '#'),
                             std::string(kBarWidth - filled, '.'), share * 100.0, left));
}

}  // namespace corvane::cli
