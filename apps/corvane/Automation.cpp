#include "corvane/Automation.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <string>
#include <utility>

#include "corvane/Failure.h"
#include "corvane/Words.h"

namespace corvane::cli {

namespace {

constexpr std::size_t kColumns = 3;

/// Cells of a row, blanks and quotes around them taken off; empty for a row without exactly three.
std::optional<std::array<std::string_view, kColumns>> cellsOf(std::string_view row) {
  std::array<std::string_view, kColumns> cells;
  for (std::size_t k = 0; k < kColumns; ++k) {
    const auto comma = row.find(',');
    if ((comma == row.npos) != (k + 1 == kColumns)) return std::nullopt;
    cells[k] = trimmed(row.substr(0, comma));
    if (cells[k].size() >= 2 && cells[k].front() == '"' && cells[k].back() == '"')
      cells[k] = cells[k].substr(1, cells[k].size() - 2);
    if (comma != row.npos) row.remove_prefix(comma + 1);
  }
  return cells;
}

AutomationPoint pointOf(std::string_view row, const std::function<int(std::string_view)>& idOf) {
  const auto cells = cellsOf(row);
  if (!cells) fail("\"{}\" is not a row of seconds,name-or-id,normalised", row);
  const auto& [time, name, value] = *cells;
  const auto seconds = numberOf(time);
  if (!seconds || *seconds < 0.0) fail("\"{}\" is not a time in seconds, 0 or more", time);
  const auto normalised = numberOf(value);
  if (!normalised || *normalised < 0.0 || *normalised > 1.0)
    fail("\"{}\" is not a normalised value, 0 to 1", value);
  return {*seconds, idOf(name), *normalised};
}

}  // namespace

std::vector<AutomationPoint> readAutomation(const std::filesystem::path& path,
                                            const std::function<int(std::string_view)>& idOf) {
  std::ifstream file(path);
  if (!file) fail("cannot read {}: {}", printable(path), std::strerror(errno));
  std::vector<AutomationPoint> points;
  std::string line;
  bool headingsMayCome = true;
  for (int number = 1; std::getline(file, line); ++number) {
    const std::string_view row = trimmed(line);
    if (row.empty() || row.front() == '#') continue;
    const bool headings = std::exchange(headingsMayCome, false) && row.starts_with("seconds");
    if (headings) continue;
    try {
      points.push_back(pointOf(row, idOf));
    } catch (const Failure& failure) {
      fail("{}:{}: {}", printable(path), number, printable(failure.what()));
    }
  }
  if (file.bad()) fail("cannot read {}: {}", printable(path), std::strerror(errno));
  std::ranges::stable_sort(points, {}, &AutomationPoint::seconds);
  return points;
}

}  // namespace corvane::cli
