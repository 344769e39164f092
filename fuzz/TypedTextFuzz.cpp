#include <cmath>
#include <cstring>
#include <string>

#include "control/ParameterText.h"
#include "core/ParameterBank.h"
#include "core/Rack.h"
#include "fuzz/Fuzz.h"

// What a person types, for every parameter and every module of an insert. An input is an id (two bytes,
// little-endian), an insert index, and the text. Promises: a refused text leaves the value as it was; an
// accepted one gives 0 to 1, and what the display then shows can be typed back and shows the same.

namespace corvane::fuzz {
namespace {

constexpr std::size_t kSelectorBytes = 3;
constexpr double kUntouched = -7.0;

std::string shown(int id, int insertIndex, double value) {
  char text[kTextBytes] = "";
  parameterDisplay(id, insertIndex, value, text);
  expect(std::memchr(text, 0, sizeof text) != nullptr, "a display ends");
  return text;
}

bool isUnit(double value) { return value >= 0.0 && value <= 1.0; }

void checkTyped(int id, int insertIndex, const char* text) {
  double value = kUntouched;
  if (!valueFromTyped(id, insertIndex, text, &value)) {
    expect(value == kUntouched, "a refused text leaves the value as it was");
    return;
  }
  expect(isUnit(value), "a typed value is 0 to 1");
  const std::string display = shown(id, insertIndex, value);
  // a button speaks for itself, a state without a use is shown as none, a bare value is shown with its place
  if (display.empty() || display == "undef" || display.starts_with("Insert")) return;
  double again = kUntouched;
  expect(valueFromTyped(id, insertIndex, display.c_str(), &again), "a display can be typed");
  expect(shown(id, insertIndex, again) == display, "a display typed back shows the same");
}

void checkSearch(int id, const char* text) {
  double value = kUntouched;
  if (parameterFromText(id, text, &value))
    expect(isUnit(value), "the search ends within 0 to 1");
  else
    expect(value == kUntouched, "the search leaves what is no parameter");
}

void checkModuleEntry(int id, int insertIndex, const char* text) {
  const int place = placeOfParameter(id);
  if (place < 0) return;
  const Place& group = kRack[static_cast<std::size_t>(place)];
  const ModuleFamily* family =
      place < kFixedPlaces ? &familyOfKind(group.kind) : familyOfInsertIndex(insertIndex);
  double value = kUntouched;
  if (family && valueFromText(*family, id - group.parameterBase, text, &value))
    expect(std::isfinite(value), "a module's entry is a number");
  else
    expect(value == kUntouched, "a module's entry refuses without a trace");
}

}  // namespace
}  // namespace corvane::fuzz

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace corvane;
  if (size < fuzz::kSelectorBytes) return 0;
  const int id = (data[0] | data[1] << 8) % kIdentifiers, insertIndex = data[2];
  const std::string text(data + fuzz::kSelectorBytes, data + size);
  fuzz::checkTyped(id, insertIndex, text.c_str());
  fuzz::checkSearch(id, text.c_str());
  fuzz::checkModuleEntry(id, insertIndex, text.c_str());
  return 0;
}
