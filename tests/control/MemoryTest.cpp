#include <gtest/gtest.h>

#include "control/StateBank.h"
#include "tests/control/HostDouble.h"
#include "tests/rig/FailingMemory.h"

// Memory that runs out in the middle of a load or a save.

namespace corvane {
namespace {

using rig::kMostAllocations;
using rig::withAllocations;

struct Memory : testing::Test {
  rig::Home home;
  rig::HostDouble host{home};
  rig::Folder folder;
  const std::filesystem::path file = folder.path / "a.qdx";
};

TEST_F(Memory, RunningOutDuringASaveLeavesTheOldFileOrTheNewOne) {
  ASSERT_TRUE(host.presets->savePresetFile(file));
  const auto old = rig::contentOf(file);
  host.edit(130, 0.9);
  int failures = 0;
  for (int count = 0;; ++count) {
    ASSERT_LT(count, kMostAllocations);
    const PresetResult result = withAllocations(count, [&] { return host.presets->savePresetFile(file); });
    EXPECT_EQ(platform::listFolder(folder.path).size(), 1U)
        << "a temporary file stayed, allocation " << count;
    if (result) break;
    EXPECT_EQ(result.error, PresetError::noMemory) << count;
    EXPECT_EQ(rig::contentOf(file), old) << count;
    ++failures;
  }
  EXPECT_GT(failures, 1);
  EXPECT_NE(rig::contentOf(file), old);
}

TEST_F(Memory, RunningOutWhileAStateIsReadLeavesTheStripAndItsRulesAsTheyWere) {
  host.edit(130, 0.9);
  const std::vector<std::uint8_t> block = host.state();
  host.edit(130, 0.2);
  const ByteView bank = ByteView(block).subspan(block.size() - kStateBankBytes);
  const auto before = host.values;
  host.commands.reserve(kMostAllocations);  // the host's own notes are not the matter
  int failures = 0;
  for (int count = 0;; ++count) {
    ASSERT_LT(count, kMostAllocations);
    const PresetResult result = withAllocations(count, [&] { return host.presets->setStateBank(bank); });
    if (result) break;
    EXPECT_EQ(result.error, PresetError::noMemory) << count;
    EXPECT_EQ(host.values, before) << count;
    EXPECT_EQ(host.inMemory(130), 0.2F) << count;
    ++failures;
  }
  EXPECT_GE(failures, 1);
  EXPECT_EQ(host.inMemory(130), 0.9F);
}

TEST_F(Memory, RunningOutWhileFoldersAreReadKeepsTheListsThatWere) {
  std::filesystem::create_directories(home.presets() / "Live");
  ASSERT_TRUE(host.presets->savePresetFile(home.presets() / "Live/one.qdx"));
  host.presets->rescanUserFolders();
  ASSERT_TRUE(host.presets->savePresetFile(home.presets() / "Live/two.qdx"));
  const auto entries = [&] { return host.presets->presetLists(ListKind::user)->list(0)->entries.size(); };
  int failures = 0;
  for (int count = 0; entries() == 1; ++count) {
    ASSERT_LT(count, kMostAllocations);
    try {
      withAllocations(count, [&] { return host.presets->rescanUserFolders(), true; });
    } catch (const std::bad_alloc&) {
      EXPECT_EQ(entries(), 1U) << count;
      ++failures;
    }
  }
  EXPECT_GE(failures, 1);
  EXPECT_EQ(entries(), 2U);
}

TEST_F(Memory, RunningOutDuringALoadLeavesTheRecordAsItWas) {
  host.edit(130, 0.9);
  ASSERT_TRUE(host.presets->savePresetFile(file));
  const PresetRecord before = [] {
    PresetRecord record;
    record.values.fill(0.25F);
    return record;
  }();
  int failures = 0;
  for (int count = 0;; ++count) {
    ASSERT_LT(count, kMostAllocations);
    PresetRecord record = before;
    const PresetResult result =
        withAllocations(count, [&] { return host.presets->loadPresetFile(file, record); });
    if (result) {
      EXPECT_EQ(record.values[130], 0.9F);
      break;
    }
    EXPECT_EQ(result.error, PresetError::noMemory) << count;
    EXPECT_EQ(record.values, before.values) << count;
    ++failures;
  }
  EXPECT_GE(failures, 1);
}

}  // namespace
}  // namespace corvane
