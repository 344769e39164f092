#include <gtest/gtest.h>

#include <fstream>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "control/ParameterText.h"
#include "core/ModuleFamily.h"
#include "core/ParameterBank.h"
#include "core/Rack.h"
#include "corvane/ParameterReference.h"

namespace corvane {
namespace {

/// Cells of a table row without their blanks; empty for any other line.
std::vector<std::string> cellsOf(const std::string& line) {
  std::vector<std::string> cells;
  if (!line.starts_with("| ")) return cells;
  std::istringstream in(line.substr(2));
  for (std::string cell; std::getline(in, cell, '|');)
    cells.push_back(cell.substr(cell.find_first_not_of(' '), cell.find_last_not_of(' ') + 1));
  for (std::string& cell : cells) cell.erase(cell.find_last_not_of(' ') + 1);
  return cells;
}

TEST(Reference, CommittedPageIsWhatTheTablesSay) {
  std::ifstream file(std::string(CORVANE_SOURCE_DIR) + "/docs/parameters.md", std::ios::binary);
  const std::string committed{std::istreambuf_iterator<char>(file), {}};
  EXPECT_EQ(committed, cli::parameterReference())
      << "a table has changed: run `make docs` and commit the page";
}

TEST(Reference, HasEveryOwnRowOnceAndItsFormsAreTaken) {
  std::istringstream in(cli::parameterReference());
  std::set<std::string> names;
  for (std::string line; std::getline(in, line);) {
    const auto cells = cellsOf(line);
    if (cells.size() < 8 || cells[0] == "offset") continue;
    const int id = std::stoi(cells[1]);
    EXPECT_TRUE(names.insert(cells[2]).second || id >= kRack[kInsertX].parameterBase) << line;
    if (id >= kRack[kInsertX].parameterBase) continue;  // needs its module in the insert
    char text[kTextBytes];
    parameterName(id, text);
    EXPECT_EQ(cells[2], text);
    for (auto at = cells[7].find('`'); at != std::string::npos; at = cells[7].find('`', at + 1)) {
      const auto end = cells[7].find('`', at + 1);
      double value = -1.0;
      EXPECT_TRUE(valueFromTyped(id, cells[7].substr(at + 1, end - at - 1).c_str(), &value)) << line;
      at = end;
    }
  }
  for (const ModuleFamily* family : moduleFamilies())
    for (const Row& row : family->rows)
      EXPECT_TRUE(row.offset < kFirstOwnOffset || names.contains(row.name)) << row.name;
}

}  // namespace
}  // namespace corvane
