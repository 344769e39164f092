#include "platform/system/Desktop.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <chrono>
#include <fstream>
#include <thread>

#include "tests/control/Home.h"

namespace corvane::platform {
namespace {

/// A program that writes its arguments into a file beside it.
std::string recorder(const std::filesystem::path& folder) {
  const std::filesystem::path program = folder / "opener";
  std::ofstream(program) << "#!/bin/sh\nprintf '%s|' \"$#\" \"$@\" > '" << folder.native()
                         << "/seen.tmp'\nmv '" << folder.native() << "/seen.tmp' '" << folder.native()
                         << "/seen'\n";
  ::chmod(program.c_str(), 0755);
  return program;
}

std::string whatItSaw(const std::filesystem::path& folder) {
  for (int k = 0; k < 500 && !std::filesystem::exists(folder / "seen"); ++k)
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  std::ifstream in(folder / "seen");
  return {std::istreambuf_iterator<char>(in), {}};
}

TEST(SystemDesktop, HandsTheTargetOverAsItIs) {
  const rig::Folder folder;
  const std::string odd = folder.path / "a b; $(touch x) 'q' \"*.qdx";
  std::ofstream(odd) << "x";
  SystemDesktop desktop([](const auto&, const auto&) {}, recorder(folder.path));
  EXPECT_EQ(desktop.open(odd), Desktop::Opened::yes);
  EXPECT_EQ(whatItSaw(folder.path), "1|" + odd + "|");
}

TEST(SystemDesktop, SaysWhatWentWrong) {
  const rig::Folder folder;
  SystemDesktop desktop([](const auto&, const auto&) {}, recorder(folder.path));
  for (const std::string target : {"", "--help", "relative/file", "/no/such/file", "javascript:alert(1)"})
    EXPECT_EQ(desktop.open(target), Desktop::Opened::failed) << target;
  SystemDesktop none([](const auto&, const auto&) {}, "no-such-program-anywhere");
  EXPECT_EQ(none.open("https://quadrexa.example/"), Desktop::Opened::noApplication);
}

}  // namespace
}  // namespace corvane::platform
