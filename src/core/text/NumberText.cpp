#include "core/text/NumberText.h"

#include <cmath>
#include <cstring>
#include <string>

namespace corvane {

double roundForDisplay(double value, int decimals) {
  const double t = value * std::trunc(std::pow(10.0, decimals));
  const double r = t - std::trunc(t);
  // a little under a half, so that a float just below it still rounds away from zero
  if (r >= 0.49999) return (t + 1.0) * std::pow(0.1, decimals);
  if (r <= -0.49999) return (t - 1.0) * std::pow(0.1, decimals);
  return value;
}

void formatFixed(float value, int decimals, char* text) {
  constexpr std::size_t kBudget = 8;  // characters, sign and point included
  const double v = roundForDisplay(static_cast<double>(value), decimals);
  if (!(v <= 99999999.0 && v >= -9999999.0)) return;
  const double whole = std::trunc(std::abs(v));
  std::string out = v < 0.0 ? "-" : "";
  out += std::to_string(static_cast<long>(whole));
  out.resize(std::min(out.size(), kBudget));
  if (decimals > 0 && out.size() < kBudget) {
    out += '.';
    double rest = std::abs(v) - whole;
    for (int digit = 0; digit < decimals && out.size() < kBudget; ++digit) {
      rest *= 10.0;
      out += static_cast<char>('0' + static_cast<int>(rest));
      rest -= std::trunc(rest);
    }
  }
  std::memcpy(text, out.c_str(), out.size() + 1);
}

void formatFrequency(float hz, char* text) {
  if (hz < 1000.0f) return formatFixed(hz, hz < 10.0f ? 2 : hz < 100.0f ? 1 : 0, text);
  const double f = static_cast<double>(hz);
  const double k = std::trunc(f / 1000.0);
  formatFixed(static_cast<float>(k), 0, text);
  std::size_t end = std::strlen(text);
  text[end++] = 'k';
  const double r = f - 1000.0 * k;
  const int hundreds = static_cast<int>(r / 100.0);
  const int tens = static_cast<int>((r - 100.0 * hundreds) / 10.0);
  if (hundreds != 0 || tens != 0) text[end++] = static_cast<char>('0' + hundreds);
  if (tens != 0 && f < 10000.0) text[end++] = static_cast<char>('0' + tens);
  text[end] = '\0';
}

}  // namespace corvane
