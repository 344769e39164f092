#include "core/text/Display.h"

#include <cstring>
#include <string_view>

#include "core/ParameterRow.h"
#include "core/text/NumberText.h"

namespace corvane::display {

void nothing(const Row&, double, char* text) { text[0] = '\0'; }

void fixed(const Row& row, double p, char* text) {
  text[0] = '\0';
  formatFixed(static_cast<float>(row.taper.physical(p)), row.display.decimals, text);
  std::strcat(text, row.display.suffix);
}

void frequency(const Row& row, double p, char* text) {
  text[0] = '\0';
  formatFrequency(static_cast<float>(row.taper.physical(p)), text);
  std::strcat(text, row.display.suffix);
}

void frequencyOrOff(const Row& row, double p, char* text) {
  if (row.taper.physical(p) > row.taper.base)
    frequency(row, p, text);
  else
    std::strcpy(text, "Off");
}

void choice(const Row& row, double p, char* text) {
  std::string_view words = row.display.words;
  for (int state = static_cast<int>(row.taper.physical(p)); state > 0; --state) {
    const auto bar = words.find('|');
    if (bar == words.npos) break;
    words.remove_prefix(bar + 1);
  }
  words = words.substr(0, words.find('|'));
  std::memcpy(text, words.data(), words.size());
  text[words.size()] = '\0';
}

}  // namespace corvane::display
