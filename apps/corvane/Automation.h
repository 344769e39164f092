#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <string_view>
#include <vector>

namespace corvane::cli {

/// A host's automation: `id` takes the normalised `value` at the first block boundary at or after `seconds`.
struct AutomationPoint {
  double seconds;
  int id;
  double value;
};

/// Rows "seconds,name-or-id,normalised" in any order; blank lines, lines from "#" and one row of headings are
/// skipped. Sorted by time; rows of one time keep the order of the file. `idOf` answers a name or an id and
/// throws Failure for one that does not exist. Throws Failure with file and line.
std::vector<AutomationPoint> readAutomation(const std::filesystem::path& path,
                                            const std::function<int(std::string_view)>& idOf);

}  // namespace corvane::cli
