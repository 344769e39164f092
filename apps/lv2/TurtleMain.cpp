#include <filesystem>
#include <fstream>
#include <iostream>

#include "lv2/Turtle.h"

/// Writes the descriptions of the bundle into the folder given.
int main(int argc, char** argv) {
  if (argc != 2) {
    std::cerr << "usage: corvane_lv2_turtle FOLDER\n";
    return 2;
  }
  for (const auto& [name, text] : corvane::lv2::bundleFiles()) {
    std::ofstream file(std::filesystem::path(argv[1]) / name, std::ios::binary);
    file << text;
    if (!file.flush()) {
      std::cerr << "error: cannot write " << name << " in " << argv[1] << "\n";
      return 1;
    }
  }
  return 0;
}
