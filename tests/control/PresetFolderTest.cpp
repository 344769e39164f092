#include <gtest/gtest.h>

#include <array>

#include "tests/control/HostDouble.h"
#include "tests/rig/Child.h"

// The user's preset folder in states that nobody made on purpose, met by a user who may not do everything.

namespace corvane {
namespace {

namespace fs = std::filesystem;
using rig::asNobody;
using rig::Home;
using rig::HostDouble;
using rig::writeFile;

constexpr int kThreshold = 130;
constexpr auto kOpenToAll = fs::perms::all;

struct PresetFolder : testing::Test {
  Home home;
  const fs::path root = home.presets();

  PresetFolder() { fs::permissions(home.path, kOpenToAll); }
  ~PresetFolder() override {
    for (const auto& entry :
         fs::recursive_directory_iterator(home.path, fs::directory_options::skip_permission_denied))
      if (!entry.is_symlink()) fs::permissions(entry.path(), kOpenToAll);
  }

  /// A preset at `name` below the root, readable by all.
  fs::path preset(const std::string& name) const {
    const fs::path path = root / name;
    fs::create_directories(path.parent_path());
    PresetRecord record;
    record.values.fill(0.75f);
    writeFile(path, presetBlock(record, 0, 100));
    for (fs::path folder = path; folder != home.path; folder = folder.parent_path())
      fs::permissions(folder, kOpenToAll);
    return path;
  }
};

std::size_t listed(HostDouble& host) {
  host.presets->rescanUserFolders();
  return host.presets->presetLists(ListKind::user)->list(0)->entries.size();
}

TEST_F(PresetFolder, SomethingElseInItsPlaceGivesEmptyListsAndAClearRefusal) {
  const std::array<void (*)(const fs::path&), 4> states{
      [](const fs::path& path) {
        writeFile(path, {1, 2, 3});
      },
      [](const fs::path& path) { fs::create_symlink(path.parent_path() / "nowhere", path); },
      [](const fs::path& path) { fs::create_symlink(path, path); },
      [](const fs::path& path) { fs::create_symlink("/dev/null", path); }};
  for (std::size_t state = 0; state < states.size(); ++state)
    for (const fs::path& place : {root, root.parent_path()}) {  // itself, and what it stands in
      fs::remove_all(home.path / "Documents");
      fs::create_directories(place.parent_path());
      states[state](place);
      HostDouble host(home);
      EXPECT_EQ(listed(host), 0u) << state;
      const PresetResult result = host.presets->savePresetFile(root / "x.qdx");
      EXPECT_EQ(result.error, PresetError::notWritten) << state;
      EXPECT_FALSE(result.reason.empty()) << state;
      host.presets->chooseListKind(ListKind::user);
      host.presets->selectPreset(0);
      EXPECT_STREQ(host.presets->currentRecord().name, "error loading preset") << state;
    }
}

TEST_F(PresetFolder, WhatAUserMayNotReadIsListedAndSaysWhy) {
  preset("open.qdx");
  const fs::path shut = preset("shut.qdx"), inShut = preset("locked/inside.qdx"),
                 seen = preset("seen/inside.qdx");
  fs::permissions(shut, fs::perms::none);
  fs::permissions(inShut.parent_path(), fs::perms::none);
  fs::permissions(seen.parent_path(), fs::perms::others_read | fs::perms::group_read);  // names, and no more
  EXPECT_EQ(asNobody([&] {
              HostDouble host(home);
              if (listed(host) != 3) return 1;  // of the locked folder nothing is known
              PresetRecord record;
              const PresetResult result = host.presets->loadPresetFile(shut, record);
              if (describe(result) != "cannot be read: Permission denied") return 2;
              if (host.presets->loadPresetFile(seen, record)) return 3;
              host.edit(kThreshold, 0.9);
              host.presets->chooseListKind(ListKind::user);
              for (const int entry : {0, 2, 1}) {  // the open one, second in the list, comes last
                host.presets->selectPreset(entry);
                host.deliver();
                const std::string name = host.presets->currentRecord().name;
                const bool open = name == "open";
                if (!open && name != "error loading preset") return 4;
                if (host.inMemory(kThreshold) != (open ? 0.75f : 0.9f)) return 5;
              }
              return 0;
            }),
            0);
}

TEST_F(PresetFolder, OneThatIsReadOnlyServesItsPresetsAndTakesNone) {
  const fs::path file = preset("mine.qdx");
  const auto old = rig::contentOf(file);
  fs::permissions(
      root, fs::perms::others_read | fs::perms::others_exec | fs::perms::owner_read | fs::perms::owner_exec);
  EXPECT_EQ(
      asNobody([&] {
        HostDouble host(home);
        if (listed(host) != 1) return 1;
        host.presets->chooseListKind(ListKind::user);
        host.presets->selectPreset(0);
        if (host.inMemory(kThreshold) != 0.75f) return 2;
        for (const char* name : {"mine.qdx", "new.qdx"})
          if (describe(host.presets->savePresetFile(root / name)) != "cannot be written: Permission denied")
            return 3;
        return 0;
      }),
      0);
  EXPECT_EQ(rig::contentOf(file), old);
}

TEST_F(PresetFolder, AHomeThatIsShutIsAHomeWithoutPresets) {
  preset("mine.qdx");
  fs::permissions(home.path / "Documents", fs::perms::none);
  EXPECT_EQ(asNobody([&] {
              HostDouble host(home);
              return listed(host) == 0 && !host.presets->savePresetFile(root / "x.qdx") ? 0 : 1;
            }),
            0);
}

TEST_F(PresetFolder, NamesThatAreNoFilesAreRefusedAndOddOnesAreFiles) {
  preset("mine.qdx");
  fs::create_symlink("/dev/zero", root / "endless.qdx");
  HostDouble host(home);
  PresetRecord record;
  EXPECT_EQ(describe(host.presets->loadPresetFile(root / "endless.qdx", record)),
            "cannot be read: not a regular file");
  for (const char* name : {"", ".", "..", "/", "mine.qdx/", "mine.qdx/x.qdx", "missing/x.qdx", "endless.qdx"})
    EXPECT_EQ(host.presets->savePresetFile(root / name).error, PresetError::notWritten) << name;
  EXPECT_EQ(host.presets->savePresetFile(root / (std::string(252, 'n') + ".qdx")).reason,
            "File name too long");
  for (const std::string& name :
       {std::string(251, 'n'), std::string("-rf"), std::string("a\nb"), std::string("\xff")}) {
    const fs::path path = root / (name + ".qdx");
    EXPECT_TRUE(host.presets->savePresetFile(path)) << name;
    EXPECT_TRUE(host.presets->loadPresetFile(path, record)) << name;
  }
}

// Whoever reads meanwhile sees one of the two presets, whole, and no trace stays of the loser.
TEST_F(PresetFolder, TwoWhoSaveUnderOneNameNeverMix) {
  const fs::path file = preset("mine.qdx");
  constexpr std::array kValues{0.25, 0.5};
  constexpr int kSaves = 60;
  std::array<pid_t, 2> savers{};
  for (std::size_t k = 0; k < savers.size(); ++k) {
    savers[k] = ::fork();
    if (savers[k] != 0) continue;
    HostDouble host(home);
    host.edit(kThreshold, kValues[k]);
    bool saved = true;
    for (int save = 0; save < kSaves; ++save) saved = host.presets->savePresetFile(file) && saved;
    ::_exit(saved ? 0 : 1);
  }
  HostDouble reader(home);
  int going = 2;
  while (going > 0) {
    PresetRecord record;
    EXPECT_TRUE(reader.presets->loadPresetFile(file, record));
    const float value = record.values[kThreshold];
    EXPECT_TRUE(value == 0.25f || value == 0.5f || value == 0.75f) << value;
    int status = 0;
    while (going > 0 && ::waitpid(-1, &status, WNOHANG) > 0) {
      EXPECT_EQ(status, 0);
      --going;
    }
  }
  EXPECT_EQ(std::distance(fs::directory_iterator(root), fs::directory_iterator()), 1);
}

}  // namespace
}  // namespace corvane
