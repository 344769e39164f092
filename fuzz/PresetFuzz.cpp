#include <algorithm>
#include <cstring>

#include "fuzz/Fuzz.h"
#include "tests/control/HostDouble.h"

// Preset files, by the two roads on which one comes in: the reader of bytes, and a user's file chosen in the
// list. Promises: a refused file changes nothing but the name shown; an accepted one holds values of 0 to 1
// and comes back the same from a save.

namespace corvane::fuzz {
namespace {

bool same(const PresetRecord& a, const PresetRecord& b) {
  return std::memcmp(a.name, b.name, sizeof a.name) == 0 && a.values == b.values;
}

bool isStored(int id) { return (parameterKind(id) & kKindStored) != 0; }

PresetRecord recordOf(float value) {
  PresetRecord record;
  record.setName("as it was");
  record.values.fill(value);
  return record;
}

/// Reads the bytes over `before`; whether they were accepted.
bool readOver(ByteView bytes, const PresetRecord& before, PresetRecord& read) {
  read = before;
  const PresetResult result = readPresetBlock(bytes, read);
  expect(describe(result).empty() == static_cast<bool>(result), "a refusal has a text, a success none");
  if (!result) expect(same(read, before), "a refused block leaves the record as it was");
  return static_cast<bool>(result);
}

void checkBytes(ByteView bytes) {
  PresetRecord fromLow, fromHigh;
  const PresetRecord low = recordOf(0.25f), high = recordOf(0.75f);
  const bool accepted = readOver(bytes, low, fromLow);
  expect(readOver(bytes, high, fromHigh) == accepted, "what is held does not decide over a block");
  if (!accepted) return;
  for (std::size_t id = 0; id < kParameters; ++id) {
    expect(fromLow.values[id] >= 0.0f && fromLow.values[id] <= 1.0f, "accepted values are 0 to 1");
    const bool stayed = fromLow.values[id] == low.values[id] && fromHigh.values[id] == high.values[id];
    expect(stayed || fromLow.values[id] == fromHigh.values[id], "a value is the block's or stays");
  }
  expect(std::memchr(fromLow.name, 0, sizeof fromLow.name) != nullptr, "a name ends");
  PresetRecord again = high;
  const Bytes written = presetBlock(fromLow, 0, 100);
  expect(written.size() == kPresetBlockBytes, "a written preset has its size");
  expect(static_cast<bool>(readPresetBlock(written, again)), "a written preset is read");
  expect(std::strcmp(again.name, fromLow.name) == 0, "a name comes back");
  for (int id = 0; id < kParameters; ++id)
    expect(!isStored(id) ||
               again.values[static_cast<std::size_t>(id)] == fromLow.values[static_cast<std::size_t>(id)],
           "a stored value comes back as the same float");
}

/// A user with one preset in the list.
struct User {
  User() {
    std::filesystem::create_directories(home.presets());
    rig::writeFile(file, presetBlock(recordOf(0.5f), 0, 100));
    host.presets->chooseListKind(ListKind::user);
  }

  void choose(ByteView bytes) {
    QDXPresetManager& presets = *host.presets;
    host.edit(kThresholdId, edited = edited == 0.25 ? 0.75 : 0.25);
    const PresetRecord before = presets.currentRecord();
    rig::writeFile(file, {bytes.begin(), bytes.end()});
    PresetRecord wanted = before;
    wanted.values[0] = -1.0f;  // stays below 0 for a file that holds no whole setting
    const bool whole = readPresetBlock(bytes, wanted) && wanted.values[0] >= 0.0f;
    presets.selectPreset(0);
    host.deliver();
    const PresetRecord& now = presets.currentRecord();
    for (int id = 0; id < kParameters; ++id) {
      if (!isStored(id)) continue;
      const auto at = static_cast<std::size_t>(id);
      expect(now.values[at] == (whole ? wanted : before).values[at],
             "a chosen file is taken whole or not at all");
      expect(static_cast<float>(host[id]) == now.values[at], "strip and memory hold the same");
    }
    expect((std::strcmp(now.name, "error loading preset") == 0) == !whole, "a refused file says so");
    expect(!presets.isModified(), "a chosen preset is not modified");
    if (!whole) return;
    const auto saved = home.path / "saved.qdx";
    expect(static_cast<bool>(presets.savePresetFile(saved)), "a save succeeds");
    expect(rig::contentOf(saved) == presetBlock(now, presets.editorWord, presets.editorZoom),
           "a save is whole");
  }

  static constexpr int kThresholdId = 130;
  rig::Home home;
  rig::HostDouble host{home};
  const std::filesystem::path file = home.presets() / "mine.qdx";
  double edited = 0.25;
};

}  // namespace
}  // namespace corvane::fuzz

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static corvane::fuzz::User user;
  corvane::fuzz::checkBytes({data, size});
  user.choose({data, size});
  return 0;
}
