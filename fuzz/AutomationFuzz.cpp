#include <sys/mman.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "core/ParameterBank.h"
#include "corvane/Automation.h"
#include "corvane/Failure.h"
#include "corvane/ParameterNames.h"
#include "corvane/Words.h"
#include "fuzz/Fuzz.h"

// Automation files. Promises: a file is refused with one line that names it and says why, or its rows are in
// order of time, with times of 0 or more, values of 0 to 1 and ids that take them; written down again, they
// read the same.

namespace corvane::fuzz {
namespace {

using cli::AutomationPoint;

/// A file without a disk, under a path.
class MemoryFile {
 public:
  MemoryFile() : descriptor(::memfd_create("automation.csv", MFD_CLOEXEC)) {
    if (descriptor < 0) std::abort();
  }
  ~MemoryFile() { ::close(descriptor); }
  MemoryFile(const MemoryFile&) = delete;
  MemoryFile& operator=(const MemoryFile&) = delete;

  std::filesystem::path path() const { return "/proc/self/fd/" + std::to_string(descriptor); }
  void hold(const void* bytes, std::size_t count) const {
    const auto written = ::pwrite(descriptor, bytes, count, 0);
    if (::ftruncate(descriptor, static_cast<off_t>(count)) != 0 || written != static_cast<ssize_t>(count))
      std::abort();
  }

 private:
  int descriptor;
};

std::vector<AutomationPoint> readBack(const MemoryFile& file) {
  static const cli::Setting setting;
  return cli::readAutomation(file.path(),
                             [](std::string_view name) { return cli::parameterFromName(name, setting); });
}

bool same(const AutomationPoint& a, const AutomationPoint& b) {
  return a.seconds == b.seconds && a.id == b.id && a.value == b.value;
}

void check(const MemoryFile& file) {
  std::vector<AutomationPoint> points;
  try {
    points = readBack(file);
  } catch (const cli::Failure& failure) {
    const std::string text = failure.what();
    expect(text.find(file.path().native()) != text.npos, "a refusal names the file");
    expect(std::ranges::none_of(text, [](char c) { return c >= 0 && c < ' '; }), "a refusal is one line");
    return;
  }
  std::string written = "seconds,name,value\n";
  for (const AutomationPoint& point : points) {
    expect(std::isfinite(point.seconds) && point.seconds >= 0.0, "a time is 0 or more");
    expect(point.value >= 0.0 && point.value <= 1.0, "a value is 0 to 1");
    expect((parameterKind(point.id) & kKindAnnounced) != 0, "an id is a parameter's");
    written += fmt::format("{},{},{}\n", cli::shortest(point.seconds), point.id, cli::shortest(point.value));
  }
  expect(std::ranges::is_sorted(points, {}, &AutomationPoint::seconds), "rows are in order of time");
  file.hold(written.data(), written.size());
  expect(std::ranges::equal(readBack(file), points, same), "rows written down again read the same");
}

}  // namespace
}  // namespace corvane::fuzz

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const corvane::fuzz::MemoryFile file;
  file.hold(data, size);
  corvane::fuzz::check(file);
  return 0;
}
