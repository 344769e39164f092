#include "corvane/PluginLibrary.h"

#include "corvane/Failure.h"
#include "tests/apps/CommandRig.h"

namespace corvane::cli {
namespace {

class PluginPlaces : public rig::CommandLineTest {
 protected:
  ~PluginPlaces() override { ::setenv("CORVANE_PLUGIN", built.c_str(), 1); }

  std::string placeFor(const std::string& programFolder) const {
    try {
      return findPlugin(at(programFolder)).string();
    } catch (const Failure& failure) {
      return failure.what();
    }
  }

  const std::string built = std::getenv("CORVANE_PLUGIN");
};

TEST_F(PluginPlaces, AreTheVariableThenBesideTheProgramThenItsLibraryFolder) {
  for (const char* made :
       {"bin/QDX Corvane Mono.aaxplugin", "lib/corvane/QDX Corvane Mono.aaxplugin", "named"})
    std::filesystem::create_directories(at(made));
  ::setenv("CORVANE_PLUGIN", at("named").c_str(), 1);
  EXPECT_EQ(placeFor("bin"), at("named"));
  ::setenv("CORVANE_PLUGIN", "", 1);
  EXPECT_EQ(placeFor("bin"), at("bin/QDX Corvane Mono.aaxplugin"));
  ::unsetenv("CORVANE_PLUGIN");
  EXPECT_EQ(placeFor("bin"), at("bin/QDX Corvane Mono.aaxplugin"));
  std::filesystem::remove_all(at("bin/QDX Corvane Mono.aaxplugin"));
  EXPECT_EQ(placeFor("bin"), at("lib/corvane/QDX Corvane Mono.aaxplugin"));
}

TEST_F(PluginPlaces, AreToldWhenNoneHoldsIt) {
  ::unsetenv("CORVANE_PLUGIN");
  EXPECT_EQ(placeFor("bin"), "cannot find the plug-in: neither " + at("bin/QDX Corvane Mono.aaxplugin") +
                                 " nor " + at("lib/corvane/QDX Corvane Mono.aaxplugin") +
                                 " is there; CORVANE_PLUGIN can name another place");
  ::setenv("CORVANE_PLUGIN", at("gone").c_str(), 1);
  EXPECT_EQ(placeFor("bin"), "CORVANE_PLUGIN=" + at("gone") + ": no such file or folder");
}

TEST_F(PluginPlaces, TheLibraryIsOneForTheProcess) {
  EXPECT_EQ(pluginLibrary()->description().names.at(0), "QDX Corvane Mono");
  EXPECT_EQ(pluginLibrary(), pluginLibrary());
}

}  // namespace
}  // namespace corvane::cli
