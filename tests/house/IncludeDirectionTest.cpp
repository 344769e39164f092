#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <regex>
#include <set>
#include <string>

// Arrows between folders point one way. A wrong include fails here, with its file and line.

namespace {

namespace fs = std::filesystem;

/// Which folders each folder may include, besides itself. A folder not named here may include nothing of
/// ours.
const std::map<std::string, std::set<std::string>> kMay{
    {"src/core", {}},
    {"src/modules", {"src/core"}},
    {"src/control", {"src/core", "src/modules", "platform/system"}},
    {"src/graphics", {"src/core"}},
    {"src/graphics/toolkit", {"src/graphics", "platform/toolkit"}},
    {"src/editor", {"src/core", "src/modules", "src/control", "src/graphics"}},
    {"src/host", {"src/core", "src/modules", "src/control", "src/editor", "platform/aax", "platform/system"}},
    {"platform/system", {}},
    {"platform/toolkit", {}},
    {"platform/aax", {}},
    {"platform/aaxhost", {"platform/aax", "platform/system"}},
    {"apps/corvane", {"src/core", "src/modules", "src/control", "platform/aaxhost", "platform/system"}},
    {"apps/audition", {"src/core", "src/modules", "src/control", "apps/corvane"}},
    // src/host for the numbers of its fields alone
    {"apps/lv2", {"src/core", "src/modules", "src/control", "src/host", "platform/aaxhost"}},
};

/// Headers of an operating system; only platform/system may know one.
const std::regex kSystemHeader(
    R"(^(sys/|unistd\.h|fcntl\.h|dirent\.h|pwd\.h|spawn\.h|dlfcn\.h|pthread\.h|sqlite3\.h).*)");

/// Folder of the map above that holds `path`, the deepest one; "" where there is none.
std::string folderOf(const std::string& path) {
  std::string best;
  for (const auto& [folder, may] : kMay)
    if (path.starts_with(folder + "/") && folder.size() > best.size()) best = folder;
  return best;
}

bool isSource(const fs::path& path) {
  static const std::set<std::string> kEndings{".h", ".hpp", ".cpp", ".inl"};
  return kEndings.contains(path.extension().string());
}

/// Repository path of an include, "" for headers from elsewhere.
std::string ownTarget(const fs::path& root, const std::string& name) {
  for (const std::string prefix : {"src/", ""})
    if (fs::exists(root / (prefix + name))) return prefix + name;
  return "";
}

TEST(Includes, PointDownTheHouse) {
  const fs::path root = CORVANE_SOURCE_DIR;
  const std::regex pattern(R"(^\s*#\s*include\s*[<"]([^">]+)[">])");
  int seen = 0;
  for (const char* top : {"src", "platform", "apps"}) {
    if (!fs::exists(root / top)) continue;
    for (const auto& entry : fs::recursive_directory_iterator(root / top)) {
      if (!entry.is_regular_file() || !isSource(entry.path())) continue;
      const std::string file = fs::relative(entry.path(), root).string();
      const std::string folder = folderOf(file);
      EXPECT_FALSE(folder.empty()) << file << ": this folder has no place in the house";
      std::ifstream in(entry.path());
      std::string line;
      for (int number = 1; std::getline(in, line); ++number) {
        std::smatch match;
        if (!std::regex_search(line, match, pattern)) continue;
        ++seen;
        const std::string name = match[1], target = ownTarget(root, name);
        if (target.empty()) {
          const bool system = std::regex_match(name, kSystemHeader);
          EXPECT_FALSE(system && file.starts_with("src/"))
              << file << ":" << number << ": only platform/ knows " << name;
          continue;
        }
        const std::string to = folderOf(target);
        EXPECT_TRUE(to == folder || kMay.at(folder).contains(to))
            << file << ":" << number << ": " << folder << " may not include " << target;
      }
    }
  }
  EXPECT_GT(seen, 50) << "the check found the sources";
}

}  // namespace
