#include <algorithm>
#include <fstream>
#include <iostream>
#include <iterator>
#include <vector>

#include "fuzz/Fuzz.h"

// A target without a fuzzer: runs the files of the folders given, so that what was once found stays mended
// under every compiler.
int main(int count, char** arguments) {
  std::vector<std::filesystem::path> files;
  for (int k = 1; k < count; ++k)
    for (const auto& entry : std::filesystem::directory_iterator(arguments[k])) files.push_back(entry.path());
  std::ranges::sort(files);
  for (const auto& path : files) {
    std::cerr << path.filename().string() << '\n';  // the last name is the one that ended it
    std::ifstream file(path, std::ios::binary);
    // a heap block of the exact size, so that a read beyond the end is seen
    const std::vector<char> content{std::istreambuf_iterator<char>(file), {}};
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(content.data()), content.size());
  }
  return files.empty() ? 1 : 0;
}
