#include <gtest/gtest.h>

#include "control/EditorDesk.h"
#include "tests/host/HostOfOne.h"

// What a program gets that stands in for the window.

namespace corvane::rig {
namespace {

constexpr int kThreshold = 130;

struct Desk : testing::Test {
  Home home;
  HostOfOne host{home};
  EditorDesk* desk = find();

  EditorDesk* find() {
    EditorDesk* found = nullptr;
    std::uint32_t written = 0;
    EXPECT_EQ(host.parameters->GetCustomData(EditorDesk::kCustomDataId, sizeof found, &found, &written),
              AAX_SUCCESS);
    EXPECT_EQ(written, sizeof found);
    return found;
  }
  void edit(double value) {
    desk->edit(kThreshold, value);
    host.answer();
  }
};

TEST_F(Desk, IsTheOnlyCustomDataAndAsksForItsRoom) {
  char bytes[16];
  std::uint32_t written = 0;
  EXPECT_EQ(host.parameters->GetCustomData(AAX_TypeID("none"), sizeof bytes, bytes, &written),
            AAX_ERROR_UNIMPLEMENTED);
  EXPECT_EQ(host.parameters->GetCustomData(EditorDesk::kCustomDataId, 4, bytes, &written),
            AAX_ERROR_INVALID_INTERNAL_DATA);
  EXPECT_EQ(written, 0u);
}

TEST_F(Desk, AnEditGoesByTheHostAndAHeldClockDecidesOnSteps) {
  desk->edit(kThreshold, 0.25);
  EXPECT_EQ(host.log, (std::vector<std::string>{"touch", "set", "release"}));
  EXPECT_EQ(desk->stored(kThreshold), 0.5);
  host.answer();
  EXPECT_EQ(desk->stored(kThreshold), 0.25);

  desk->holdClock();
  desk->advanceClock(1000);
  edit(0.3);
  home.clock.nowMs += 1000;  // nobody's time any more
  edit(0.35);
  desk->advanceClock(50);
  edit(0.4);
  desk->advanceClock(51);
  edit(0.45);
  desk->undo();
  host.answer();
  EXPECT_FLOAT_EQ(static_cast<float>(desk->stored(kThreshold)), 0.4f);
  desk->undo();
  host.answer();
  EXPECT_FLOAT_EQ(static_cast<float>(desk->stored(kThreshold)), 0.25f)
      << "three edits within 51 ms each are one step";
}

TEST_F(Desk, APresetOfAnyListIsOneStep) {
  EXPECT_STREQ(desk->listName(0, 2), "Bass");
  EXPECT_EQ(desk->listName(0, 9), nullptr);
  EXPECT_EQ(desk->listName(3, 0), nullptr);
  EXPECT_FALSE(desk->selectPreset({0, 2, 18}));
  EXPECT_STREQ(desk->problem(), "there is no such preset");
  EXPECT_EQ(desk->selection(), (PresetSelection{0, 0, 0}));
  ASSERT_TRUE(desk->selectPreset({1, 3, 0}));
  EXPECT_STREQ(desk->name(), desk->presetName(1, 3, 0));
  desk->undo();
  EXPECT_EQ(desk->selection(), (PresetSelection{0, 0, 0}));
  EXPECT_FALSE(desk->canUndo());
}

TEST_F(Desk, FilesAreTakenWholeOrNotAtAll) {
  const std::string file = (home.path / "mine.qdx").native();
  edit(0.25);
  ASSERT_TRUE(desk->savePreset(file.c_str()));
  edit(0.75);
  EXPECT_FALSE(desk->loadPreset((home.path / "none.qdx").c_str()));
  EXPECT_NE(std::string(desk->problem()), "");
  EXPECT_EQ(desk->stored(kThreshold), 0.75);
  ASSERT_TRUE(desk->loadPreset(file.c_str()));
  host.answer();
  EXPECT_EQ(desk->stored(kThreshold), 0.25);
  EXPECT_FALSE(desk->isModified());
  EXPECT_EQ(desk->selection().presetIndex, -1);

  std::filesystem::create_directories(home.presets() / "Kit");
  writeFile(home.presets() / "Kit" / "broken.qdx", {'N', 'M', 'c', 'Q'});
  desk->rescanUserFolders();
  ASSERT_STREQ(desk->presetName(2, 0, 0), "broken");
  EXPECT_FALSE(desk->selectPreset({2, 0, 0}));
  EXPECT_EQ(desk->selection().listKind, 0) << "a preset that cannot be read is not chosen";
}

TEST_F(Desk, AStateThatIsNotTakenIsToldToTheHost) {
  std::vector<char> bytes(sizeof(AAX_SPlugInChunk) + 100);
  auto* chunk = new (bytes.data()) AAX_SPlugInChunk{};
  chunk->fSize = 100;
  EXPECT_NE(host.parameters->SetChunk(AAX_TypeID("All "), chunk), AAX_SUCCESS);
}

}  // namespace
}  // namespace corvane::rig
