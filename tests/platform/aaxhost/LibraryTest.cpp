#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <fstream>

#include "tests/platform/aaxhost/FakeLibrary.h"

namespace corvane::aaxhost {
namespace {

namespace fs = std::filesystem;

/// What the host says when it refuses; "" when it does not.
std::string refusal(const fs::path& path) try {
  Library::load(path);
  return "";
} catch (const HostError& error) {
  return error.what();
}

TEST(Library, KeepsWhatItWasToldInOrder) {
  const FakeLibrary fake;
  const Description& told = fake.library->description();
  EXPECT_EQ(told.effectId, "tests.fake");
  EXPECT_EQ(told.manufacturer, "Tests");
  EXPECT_EQ(told.packageNames, std::vector<std::string>{"Fake plug-in"});
  EXPECT_EQ(told.packageVersion, 7u);
  EXPECT_EQ(told.category, 3u);
  EXPECT_EQ(told.property(AAX_eProperty_ManufacturerID), AAX_TypeID("Test"));
  EXPECT_EQ(told.factories, (std::vector<std::int32_t>{0, 5, 1}));
  std::string fields;
  for (const Field& field : told.fields)
    fields += std::to_string(field.index) + " " + fieldKindText(field.kind) +
              (field.bytes ? " " + std::to_string(field.bytes) : "") + ", ";
  EXPECT_EQ(
      fields,
      "1 audio in, 2 audio out, 3 buffer length, 4 sample rate, 5 side-chain in, 6 meters, 7 MIDI node, "
      "8 MIDI node, 10 data in port 4, 11 data in port 4, 12 data in port 4, 13 data in port 4, "
      "14 data in port 4, 20 private data 3200, 21 private data 24, 22 private data 20000, ");
  ASSERT_EQ(told.meters.size(), 4u);
  EXPECT_TRUE(told.meters[0].isPeak() && told.meters[1].isPeak());
  EXPECT_FALSE(told.meters[2].isPeak() || told.meters[3].isPeak());
}

TEST(Library, IsFoundInABundleFolderAndByARelativePath) {
  const fs::path root = fs::path(testing::TempDir()) / "aaxhost-bundle", bundle = root / "Made Up.aaxplugin";
  fs::remove_all(root);
  fs::create_directories(bundle / "Contents" / "x64");
  EXPECT_NE(refusal(bundle).find("no file Contents/x64/Made Up.aaxplugin"), std::string::npos);
  fs::copy_file(FAKE_PLUGIN, bundle / "Contents" / "x64" / "Made Up.aaxplugin");
  EXPECT_EQ(refusal(bundle), "");
  EXPECT_EQ(refusal(bundle.string() + "/"), "");
  EXPECT_EQ(refusal(fs::relative(bundle)), "");
  fs::remove_all(root);
}

TEST(Library, RefusesWhatIsNoPlugInAndSaysWhy) {
  const fs::path text = fs::path(testing::TempDir()) / "aaxhost-text.aaxplugin";
  std::ofstream(text) << "not a library";
  EXPECT_NE(refusal("/nowhere/at all.aaxplugin").find("\"/nowhere/at all.aaxplugin\": no such file"),
            std::string::npos);
  EXPECT_NE(refusal("/dev/null").find("not a file"), std::string::npos);
  EXPECT_NE(refusal(text).find("cannot be loaded"), std::string::npos);
  EXPECT_NE(refusal(NO_PLUGIN).find("no entry point ACFRegisterPlugin"), std::string::npos);
  EXPECT_FALSE(isLoaded(NO_PLUGIN)) << "what was refused is not kept";
  fs::remove(text);
}

TEST(Library, RefusesADescriptionWithoutSense) {
  const std::pair<const char*, const char*> kCases[] = {
      {"version", "version 1 of the contract"},
      {"startup", "ACFStartup failed with -20009"},
      {"refuse", "registration failed with -20004"},
      {"no-effect", "no effect"},
      {"two-effects", "more than one effect"},
      {"no-process", "no process function"},
      {"no-parameters", "no factory of the parameters object"},
      {"no-input", "no field of kind \"audio in\""},
      {"twice", "field 7 is declared twice"},
      {"far-field", "field 1073741824 is outside 0 to 65535"},
      {"wide-port", "data port 10 has 12 bytes"},
      {"no-size", "private field 20 has 0 bytes"},
      {"meter", "meter \"mtcA\" has no description"},
  };
  for (const auto& [name, expected] : kCases) {
    const Fault fault(name);
    const std::string said = refusal(FAKE_PLUGIN);
    EXPECT_NE(said.find(expected), std::string::npos) << name << ": " << said;
    EXPECT_FALSE(isLoaded(FAKE_PLUGIN)) << name;
  }
}

TEST(Library, GoesWithItsLastObjectAndNotBefore) {
  auto library = Library::load(FAKE_PLUGIN);
  auto instance = std::make_unique<Instance>(library, 48000.0);
  EXPECT_EQ(library->livingObjects(), 3);
  library.reset();
  EXPECT_TRUE(isLoaded(FAKE_PLUGIN));
  float in[4] = {1, 1, 1, 1}, out[4] = {};
  instance->render({in, out, 4});
  instance.reset();
  EXPECT_FALSE(isLoaded(FAKE_PLUGIN));
}

TEST(Library, StaysWhileSomebodyElseHoldsAnObject) {
  auto library = Library::load(FAKE_PLUGIN);
  std::unique_ptr<AAX_IEffectGUI> kept(library->description().createGui());
  library.reset();
  ASSERT_TRUE(isLoaded(FAKE_PLUGIN));
  EXPECT_EQ(kept->TimerWakeup(), AAX_SUCCESS);
  kept.reset();
  Library::load(FAKE_PLUGIN)
      .reset();  // the file's own count goes back to one hold, which nobody owns any more
  void* left = dlopen(FAKE_PLUGIN, RTLD_NOW | RTLD_NOLOAD);
  ASSERT_NE(left, nullptr);
  dlclose(left);
  dlclose(left);
  EXPECT_FALSE(isLoaded(FAKE_PLUGIN));
}

TEST(Library, AnInstanceThatFailsLeavesNothingBehind) {
  const std::pair<const char*, const char*> kCases[] = {
      {"init", "initialising the parameters object failed with -20011"},
      {"field", "private field 22 cannot be filled: -20015"},
      {"gui", "the factory of the window made nothing"}};
  const FakeLibrary fake;
  for (const auto& [name, expected] : kCases) {
    const Fault fault(name);
    try {
      const Instance instance(fake.library, 48000.0);
      ADD_FAILURE() << name;
    } catch (const HostError& error) {
      EXPECT_NE(std::string(error.what()).find(expected), std::string::npos) << error.what();
    }
    EXPECT_EQ(fake.library->livingObjects(), 0) << name;
    EXPECT_EQ(fake.probe.processors, 0) << name;
  }
  for (const double hz : {0.0, -1.0, std::nan(""), HUGE_VAL})
    EXPECT_THROW(Instance(fake.library, hz), HostError) << hz;
}

}  // namespace
}  // namespace corvane::aaxhost
