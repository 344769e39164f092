#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <bit>
#include <chrono>
#include <csignal>
#include <set>

#include "tests/control/HostDouble.h"
#include "tests/rig/Child.h"

namespace corvane {
namespace {

namespace fs = std::filesystem;
using rig::asNobody;
using rig::contentOf;
using rig::Home;
using rig::HostDouble;
using rig::writeFile;

constexpr int kThreshold = 130;

std::vector<std::string> namesIn(const PresetTable& table, int list) {
  std::vector<std::string> names;
  for (const PresetEntry& entry : table.list(list)->entries) names.push_back(entry.fileName);
  return names;
}

struct Presets : testing::Test {
  Home home;
  HostDouble host{home};
  QDXPresetManager& presets = *host.presets;

  fs::path userFile(const std::string& name) {
    const fs::path path = home.presets() / name;
    fs::create_directories(path.parent_path());
    EXPECT_TRUE(presets.savePresetFile(path)) << name;
    return path;
  }
  std::shared_ptr<const PresetTable> scan() {
    presets.rescanUserFolders();
    return presets.presetLists(ListKind::user);
  }
};

TEST_F(Presets, AreListedByCategoryAndByDesigner) {
  const auto categories = presets.presetLists(ListKind::categories);
  EXPECT_EQ(categories->count, 9);
  EXPECT_EQ(categories->list(0)->name, "All");
  EXPECT_EQ(categories->list(0)->entries.size(), 235u);
  EXPECT_EQ(categories->list(7)->name, "Vocals");
  EXPECT_EQ(categories->list(7)->entries.size(), 32u);
  EXPECT_EQ(categories->entry(1, 0)->presetNumber, 3);
  EXPECT_EQ(categories->list(9), nullptr);
  EXPECT_EQ(categories->entry(1, 111), nullptr);
  const auto designers = presets.presetLists(ListKind::designers);
  EXPECT_EQ(designers->count, 23) << "the house has no name and no list";
  std::size_t entries = 0;
  for (int list = 1; list < designers->count; ++list) entries += designers->list(list)->entries.size();
  EXPECT_EQ(entries, 223u);
}

TEST_F(Presets, ChoosingOneSetsEverythingAndAnEditShows) {
  presets.selectPreset(1);
  host.deliver();
  for (const Place& place : kRack)
    EXPECT_EQ(host[place.parameterBase] > 0.0, place.parameterBase == 16 || place.parameterBase == 224);
  EXPECT_STREQ(presets.currentRecord().name, "Let's start from scratc");
  EXPECT_FALSE(presets.isModified());
  host.edit(kThreshold, 0.9);
  EXPECT_TRUE(presets.isModified());
  host.edit(kThreshold, 0.5);
  EXPECT_FALSE(presets.isModified());
}

TEST_F(Presets, NextAndPreviousStopAtTheEnds) {
  presets.previousPreset();
  EXPECT_EQ(presets.selection().presetIndex, 0);
  presets.chooseList(5);
  presets.selectPreset(4);
  presets.nextPreset();
  EXPECT_STREQ(presets.currentRecord().name, "Strings");
  presets.nextPreset();
  EXPECT_EQ(presets.selection().presetIndex, 5);
}

TEST_F(Presets, WhatCannotBeReadSaysSoAndKeepsTheValues) {
  const fs::path file = userFile("Mine.qdx");
  presets.chooseListKind(ListKind::user);
  fs::remove(file);
  host.edit(kThreshold, 0.9);
  presets.selectPreset(0);
  EXPECT_STREQ(presets.currentRecord().name, "error loading preset");
  EXPECT_EQ(static_cast<float>(host[kThreshold]), 0.9f);
  for (const auto& [list, entry] :
       std::vector<std::pair<int, int>>{{128, 0}, {-1, 0}, {0, 512}, {0, -1}, {50, 0}}) {
    PresetRecord record = presets.currentRecord();
    record.setName("");
    presets.readPresetEntry(ListKind::categories, list, entry, record);
    EXPECT_STREQ(record.name, "error loading preset");
    EXPECT_EQ(record.values, presets.currentRecord().values);
  }
}

TEST_F(Presets, AUserSavesASettingAndFindsItAgain) {
  host.edit(kThreshold, 0.8125);
  host.edit(256, 114 / 255.0);
  const auto saved = presets.currentRecord().values;
  userFile("Live/My Vox.qdx");
  presets.chooseListKind(ListKind::user);
  presets.chooseList(1);
  host.edit(kThreshold, 0.1);
  presets.selectPreset(0);
  EXPECT_EQ(presets.currentRecord().values, saved);
  EXPECT_STREQ(presets.currentRecord().name, "My Vox") << "the name in the list is the file's";
  EXPECT_EQ(QDXPresetManager::withPresetExtension("a/Mix.qdx.qdx"), "a/Mix.qdx");
  EXPECT_EQ(QDXPresetManager::withPresetExtension("a/Mix"), "a/Mix.qdx");
}

TEST_F(Presets, AnEmptyHomeGivesEmptyLists) {
  const auto table = scan();
  EXPECT_TRUE(fs::is_directory(home.presets())) << "made on first use";
  EXPECT_EQ(table->count, 1);
  EXPECT_EQ(table->list(0)->name, "All");
  EXPECT_EQ(table->list(kMainFolderList)->name, "#MAIN FOLDER");
  EXPECT_TRUE(table->list(0)->entries.empty());
  EXPECT_TRUE(table->list(kMainFolderList)->entries.empty());
  EXPECT_NE(std::ranges::find(home.trace.lines, "Plugin's Main Preset Folder: " + home.presets().native()),
            home.trace.lines.end());
}

TEST_F(Presets, FoldersAndFilesAreSortedAndStrangersLeftOut) {
  for (const char* name :
       {"zulu.qdx", "Test.QDX", "Alpha.qdx", ".qdx", "alphabet.qdx", "notes.txt", "beta/two.qdx",
        "Alpha/One.qdx", "beta/.hidden/x.qdx", ".git/y.qdx", "beta/deeper/z.qdx"})
    userFile(name);
  fs::create_directory(home.presets() / "folder.qdx");
  const auto table = scan();
  EXPECT_EQ(namesIn(*table, kMainFolderList), (std::vector<std::string>{"Alpha", "alphabet", "zulu"}));
  ASSERT_EQ(table->count, 4);
  EXPECT_EQ(table->list(1)->name, "Alpha");
  EXPECT_EQ(table->list(2)->name, "beta");
  EXPECT_EQ(table->list(3)->name, "folder.qdx");
  EXPECT_EQ(namesIn(*table, 2), std::vector<std::string>{"two"});
  EXPECT_EQ(namesIn(*table, 0), (std::vector<std::string>{"Alpha", "alphabet", "One", "two", "zulu"}));
  EXPECT_EQ(table->entry(0, 3)->folderIndex, 2);
  EXPECT_EQ(table->entry(0, 4)->folderIndex, kMainFolderList);
}

TEST_F(Presets, AScanSurvivesWhateverLiesInTheFolder) {
  const fs::path root = home.presets();
  fs::create_directories(root);
  fs::create_symlink(root / "loop.qdx", root / "loop.qdx");
  fs::create_symlink(root, root / "round");
  fs::create_symlink(root / "nowhere", root / "dangling.qdx");
  ::mkfifo((root / "pipe.qdx").c_str(), 0600);
  writeFile(root / "\xff\xfe broken.qdx", {1, 2, 3});
  writeFile(root / (std::string(251, 'n') + ".qdx"), {});
  writeFile(root / "new\nline.qdx", {});
  writeFile(root / "-rf.qdx", {});
  writeFile(root / "sparse.qdx", {'N', 'M', 'c', 'Q', 0x22});
  fs::resize_file(root / "sparse.qdx", 1u << 30);
  fs::create_directory(root / "locked");
  fs::permissions(root / "locked", fs::perms::none);
  const auto table = scan();
  for (const PresetEntry& entry : table->list(kMainFolderList)->entries) {
    PresetRecord record;
    EXPECT_FALSE(presets.loadPresetFile(root / entry.diskName, record)) << entry.fileName;
    EXPECT_LE(entry.fileName.size(), kPresetListName);
  }
  EXPECT_EQ(table->list(kMainFolderList)->entries.size(), 8u);
  presets.chooseListKind(ListKind::user);
  for (int entry = 0; entry < 20; ++entry) presets.selectPreset(entry);
  fs::permissions(root / "locked", fs::perms::owner_all);
}

TEST_F(Presets, ALongNameIsCutForTheEyeAndStillLoads) {
  std::string name = "x";
  for (int k = 0; k < 60; ++k) name += "\xc3\xa9";  // two bytes each
  userFile(name + ".qdx");
  presets.chooseListKind(ListKind::user);
  const auto table = presets.presetLists(ListKind::user);
  EXPECT_EQ(table->entry(0, 0)->fileName, name.substr(0, 63)) << "no half character";
  presets.selectPreset(0);
  EXPECT_STRNE(presets.currentRecord().name, "error loading preset");
}

TEST_F(Presets, ManyFilesAndFoldersFillTheListsAndNoMore) {
  for (int k = 0; k < 130; ++k) fs::create_directories(home.presets() / ("folder " + std::to_string(k)));
  for (int k = 0; k < 600; ++k) writeFile(home.presets() / "folder 0" / (std::to_string(k) + ".qdx"), {});
  const auto table = scan();
  EXPECT_EQ(table->count, 127);
  EXPECT_EQ(table->list(1)->entries.size(), 512u);
  EXPECT_EQ(table->list(0)->entries.size(), 512u);
  EXPECT_EQ(table->list(kMainFolderList)->name, "#MAIN FOLDER");
}

// A second is thirty times what a laptop needs: what fails here compares every name with every other.
TEST_F(Presets, TenThousandFilesAreListedWithinASecond) {
  for (int folder = 0; folder < 10; ++folder) {
    const fs::path path = home.presets() / ("folder " + std::to_string(folder));
    fs::create_directories(path);
    for (int k = 0; k < 1000; ++k) writeFile(path / (std::to_string(k) + ".qdx"), {});
  }
  const auto start = std::chrono::steady_clock::now();
  const auto table = scan();
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(1));
  EXPECT_EQ(table->count, 11);
}

TEST_F(Presets, ARefusedFileChangesNothing) {
  const fs::path file = userFile("Mine.qdx");
  auto broken = contentOf(file);
  const float bad = 1.5f;
  const auto bits = std::bit_cast<std::array<std::uint8_t, 4>>(bad);
  std::ranges::copy(bits, broken.end() - 8);
  writeFile(file, broken);
  presets.chooseListKind(ListKind::user);
  host.edit(kThreshold, 0.9);
  const auto values = presets.currentRecord().values;
  presets.selectPreset(0);
  host.deliver();
  EXPECT_EQ(presets.currentRecord().values, values);
  EXPECT_EQ(static_cast<float>(host[kThreshold]), 0.9f);
}

TEST_F(Presets, AFailedSaveKeepsTheOldFileAndSaysWhy) {
  const fs::path file = userFile("Mine.qdx");
  const auto old = contentOf(file);
  host.edit(kThreshold, 0.9);

  fs::permissions(home.path, fs::perms::all);
  fs::permissions(file, fs::perms::all);
  fs::permissions(file.parent_path(), fs::perms::owner_read | fs::perms::owner_exec | fs::perms::others_read |
                                          fs::perms::others_exec);
  EXPECT_EQ(asNobody([&] {
              const PresetResult result = presets.savePresetFile(file);
              return describe(result) == "cannot be written: Permission denied" ? 0 : 1;
            }),
            0);
  fs::permissions(file.parent_path(), fs::perms::all);
  EXPECT_EQ(contentOf(file), old);

  EXPECT_EQ(asNobody([&] {  // a disk with room for 1000 bytes
              ::signal(SIGXFSZ, SIG_IGN);
              const rlimit small{1000, 1000};
              ::setrlimit(RLIMIT_FSIZE, &small);
              const PresetResult result = presets.savePresetFile(file);
              return result.error == PresetError::notWritten && !result.reason.empty() ? 0 : 1;
            }),
            0);
  EXPECT_EQ(contentOf(file), old);
  EXPECT_EQ(std::distance(fs::directory_iterator(file.parent_path()), fs::directory_iterator()), 1)
      << "nothing half-written is left";
  EXPECT_EQ(presets.savePresetFile(home.path / "missing/x.qdx").reason, "No such file or directory");
  EXPECT_EQ(presets.savePresetFile(file.parent_path()).reason, "it is a folder");
  EXPECT_TRUE(presets.savePresetFile(file));
  EXPECT_NE(contentOf(file), old);
}

TEST_F(Presets, ASaveThroughALinkReplacesWhatItPointsTo) {
  const fs::path file = userFile("Mine.qdx"), link = home.path / "link.qdx";
  fs::permissions(file, fs::perms::owner_read | fs::perms::owner_write);
  fs::create_symlink(file, link);
  host.edit(kThreshold, 0.9);
  EXPECT_TRUE(presets.savePresetFile(link));
  EXPECT_TRUE(fs::is_symlink(link));
  EXPECT_EQ(fs::status(file).permissions(), fs::perms::owner_read | fs::perms::owner_write);
  PresetRecord record;
  EXPECT_TRUE(presets.loadPresetFile(file, record));
  EXPECT_EQ(record.values[kThreshold], 0.9f);
}

TEST_F(Presets, CopyAndPasteReachAnotherInstance) {
  presets.selectPreset(3);
  host.edit(kThreshold, 0.8125);
  presets.copyToClipboard();
  const auto copied = presets.currentRecord().values;
  EXPECT_STREQ(presets.currentRecord().name, "Smacka 808 BD");
  HostDouble other(home);
  other.presets->pasteFromClipboard();
  EXPECT_EQ(other.presets->currentRecord().values, copied);
  EXPECT_STREQ(other.presets->currentRecord().name, "clipboard 21:05:09");
  EXPECT_EQ(other.presets->selection().presetIndex, -1);
  EXPECT_FALSE(other.presets->isModified());

  for (const std::vector<std::uint8_t>& broken :
       {std::vector<std::uint8_t>{}, {'N', 'M'}, {'N', 'M', 'c', 'Q', 0x22, 9}}) {
    home.settings.writeBytes("MemoA", broken);
    other.presets->selectPreset(0);
    other.presets->pasteFromClipboard();
    EXPECT_STREQ(other.presets->currentRecord().name, "Default");
  }
}

TEST_F(Presets, DesktopFailuresAreTold) {
  presets.openUserFolder();
  presets.openLink(nullptr);
  presets.openLink("https://quadrexa.example/x");
  presets.openManual();
  home.settings.writeText("ManualPath", "/usr/share/doc/manual.pdf");
  presets.openManual();
  EXPECT_EQ(home.desktop.opened,
            (std::vector<std::string>{home.presets(), "https://quadrexa.example/",
                                      "https://quadrexa.example/x", "/usr/share/doc/manual.pdf"}));
  home.desktop.answer = platform::Desktop::Opened::noApplication;
  presets.openManual();
  presets.openUserFolder();
  EXPECT_EQ(home.desktop.messages,
            (std::vector<std::string>{"QDX Corvane Mono: Could not open user manual",
                                      "Could not open manual file: Make sure Acrobat Reader is installed",
                                      "QDX Corvane Mono: Could not open user's preset folder"}));
}

TEST(WindowSettings, OutliveTheProgramWithinTheirLimits) {
  Home home;
  const auto zoomAfter = [&home](double stored) {
    Settings(home.settings).write(kZoomSetting, stored);
    return HostDouble(home).presets->editorZoom;
  };
  EXPECT_EQ(HostDouble(home).presets->editorZoom, 100);
  EXPECT_EQ(zoomAfter(0.15), 150);
  EXPECT_EQ(HostDouble(home).presets->editorZoom, 150) << "written when the strip went";
  EXPECT_EQ(zoomAfter(0.4), 400);
  EXPECT_EQ(zoomAfter(0.401), 100);
  EXPECT_EQ(zoomAfter(0.069), 70);
  EXPECT_EQ(zoomAfter(1.5), 100);
  {
    HostDouble host(home);
    EXPECT_TRUE(host.presets->tooltipsEnabled());
    host.presets->setTooltipsEnabled(false);
  }
  EXPECT_FALSE(HostDouble(home).presets->tooltipsEnabled());
}

TEST(WindowSettings, AreWrittenAsFourBytesUnderTheirNumber) {
  Home home;
  Settings(home.settings).write(kViewSetting, 1.0 / 3.0);
  EXPECT_EQ(home.settings.bytes["QDXCorvane: 792"], (platform::Bytes{0xAB, 0xAA, 0xAA, 0x3E}));
  double value = 0.75;
  for (const platform::Bytes& unusable :
       {platform::Bytes{}, {0, 0, 0}, {0, 0, 0xC0, 0x3F}, {0, 0, 0xC0, 0x7F}}) {
    home.settings.bytes["QDXCorvane: 792"] = unusable;
    Settings(home.settings).read(kViewSetting, &value);
    EXPECT_EQ(value, 0.75);
  }
}

TEST(HomelessUser, StillHasAStrip) {
  Home home;
  home.services.folders = {};
  HostDouble host(home);
  host.presets->chooseListKind(ListKind::user);
  EXPECT_TRUE(host.presets->userFolder().empty());
  EXPECT_TRUE(host.presets->presetLists(ListKind::user)->list(0)->entries.empty());
}

}  // namespace
}  // namespace corvane
