#include <gtest/gtest.h>

#include <cstdlib>
#include <new>

#include "tests/control/HostDouble.h"

// Memory that runs out in the middle of a load or a save. The seam is this program's operator new.

namespace {

int allocationsLeft = -1;  ///< until one fails; below 0 for never

void* allocate(std::size_t bytes) {
  if (allocationsLeft == 0) throw std::bad_alloc();
  if (allocationsLeft > 0) --allocationsLeft;
  if (void* memory = std::malloc(bytes ? bytes : 1)) return memory;
  throw std::bad_alloc();
}

}  // namespace

void* operator new(std::size_t bytes) { return allocate(bytes); }
void* operator new[](std::size_t bytes) { return allocate(bytes); }
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete[](void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
void operator delete[](void* memory, std::size_t) noexcept { std::free(memory); }

namespace corvane {
namespace {

constexpr int kMostAllocations = 500;

/// From the n-th allocation on none succeeds while `work` runs.
template <typename Work>
auto withAllocations(int count, Work work) {
  allocationsLeft = count;
  auto result = work();
  allocationsLeft = -1;
  return result;
}

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
