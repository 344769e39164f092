#include "corvane/Words.h"

#include <fmt/ranges.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <numeric>
#include <vector>

namespace corvane::cli {

std::string_view trimmed(std::string_view text) {
  constexpr std::string_view kBlank = " \t\r\n\v\f";
  const auto first = text.find_first_not_of(kBlank);
  if (first == text.npos) return {};
  return text.substr(first, text.find_last_not_of(kBlank) - first + 1);
}

std::string lowerCase(std::string_view text) {
  std::string lower(text);
  for (char& c : lower)
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  return lower;
}

std::optional<double> numberOf(std::string_view text) {
  if (text.starts_with('+') && !text.starts_with("+-")) text.remove_prefix(1);
  double value = 0.0;
  const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
  if (result.ec != std::errc{} || result.ptr != text.data() + text.size() || !std::isfinite(value))
    return std::nullopt;
  return value;
}

std::size_t editDistance(std::string_view a, std::string_view b) {
  const std::string from = lowerCase(a), to = lowerCase(b);
  std::vector<std::size_t> row(to.size() + 1);
  std::iota(row.begin(), row.end(), std::size_t{0});
  for (std::size_t i = 1; i <= from.size(); ++i) {
    std::size_t diagonal = row[0];
    row[0] = i;
    for (std::size_t j = 1; j <= to.size(); ++j) {
      const std::size_t replaced = diagonal + (from[i - 1] == to[j - 1] ? 0 : 1);
      diagonal = row[j];
      row[j] = std::min({row[j] + 1, row[j - 1] + 1, replaced});
    }
  }
  return row.back();
}

std::string joined(const std::vector<std::string>& words) { return fmt::format("{}", fmt::join(words, " ")); }

std::string nearestOf(std::string_view asked, const std::vector<std::string>& names) {
  constexpr std::size_t kNearestShown = 3;
  std::vector<std::pair<std::size_t, std::string_view>> near;
  const std::string part = lowerCase(asked);
  for (const auto& name : names) {
    const bool holds = !part.empty() && lowerCase(name).find(part) != std::string::npos;
    const std::size_t distance = holds ? 1 : editDistance(asked, name);
    if (distance <= std::max<std::size_t>(2, asked.size() / 3)) near.emplace_back(distance, name);
  }
  std::ranges::stable_sort(near, {}, &std::pair<std::size_t, std::string_view>::first);
  near.resize(std::min(kNearestShown, near.size()));
  std::string list;
  for (const auto& [distance, name] : near) list += (list.empty() ? "" : ", ") + std::string(name);
  return list;
}

std::string shortest(double value) { return fmt::format("{}", value); }

std::string decibels(double gain, int decimals) {
  return gain > 0.0 ? fmt::format("{:.{}f}", 20.0 * std::log10(gain), decimals) : "-inf";
}

namespace {

/// Bytes of the well-formed character at the start of `text`; 0 for none.
std::size_t characterBytes(std::string_view text) {
  const auto byte = [&](std::size_t k) { return static_cast<unsigned char>(text[k]); };
  const std::size_t length = byte(0) < 0x80                       ? 1
                             : byte(0) >= 0xc2 && byte(0) <= 0xdf ? 2
                             : byte(0) >= 0xe0 && byte(0) <= 0xef ? 3
                             : byte(0) >= 0xf0 && byte(0) <= 0xf4 ? 4
                                                                  : 0;
  if (length == 0 || length > text.size()) return 0;
  for (std::size_t k = 1; k < length; ++k)
    if ((byte(k) & 0xc0) != 0x80) return 0;
  const bool overlong = (byte(0) == 0xe0 && byte(1) < 0xa0) || (byte(0) == 0xf0 && byte(1) < 0x90);
  const bool outside = (byte(0) == 0xed && byte(1) > 0x9f) || (byte(0) == 0xf4 && byte(1) > 0x8f);
  return overlong || outside ? 0 : length;
}

}  // namespace

std::string validUtf8(std::string_view text) {
  std::string valid;
  while (!text.empty()) {
    const std::size_t length = characterBytes(text);
    if (length == 0)
      valid += "\xef\xbf\xbd";
    else
      valid += text.substr(0, length);
    text.remove_prefix(std::max<std::size_t>(length, 1));
  }
  return valid;
}

}  // namespace corvane::cli
