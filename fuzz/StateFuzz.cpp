#include <algorithm>
#include <array>
#include <cmath>

#include "control/StateBank.h"
#include "fuzz/Fuzz.h"
#include "platform/aaxhost/AaxHost.h"

// What a host hands back to the built plug-in as its stored state. The first byte says which of the two
// chunks; a second byte of 'L' lengthens the rest to the size of sessions from before the limiter had modes,
// which no input would grow to. Promises: a refused chunk changes nothing; after any other, every value is 0
// to 1, the state comes back the same, and the next blocks are finite.

namespace corvane::fuzz {
namespace {

using aaxhost::Chunk;
using aaxhost::Instance;

constexpr AAX_CTypeID kStateChunk = AAX_TypeID("All "), kControlsChunk = AAX_TypeID("elck");
constexpr std::size_t kTrailerBytes = 8, kHeadBytes = 224, kBankStartBytes = 8, kNameRecordBytes = 168,
                      kOldBlockBytes = 1119153;
constexpr std::array<std::size_t, 3> kForeignBlockBytes{18985, 621649, 621873};
constexpr int kFrames = 64;

Chunk chunkOf(const Instance& instance, AAX_CTypeID id) {
  Chunk chunk;
  expect(instance.getChunk(id, &chunk) == AAX_SUCCESS, "a state can be stored");
  return chunk;
}

std::vector<double> valuesOf(const Instance& instance) {
  std::vector<double> values;
  for (const auto& parameter : instance.parameters())
    expect(instance.value(parameter.id, &values.emplace_back()) == AAX_SUCCESS, "a parameter has a value");
  return values;
}

/// Whether the strip takes a chunk's data as its state, by the sizes and the reader of the presets in it.
bool isState(const std::vector<char>& data) {
  if (data.size() < kTrailerBytes + kHeadBytes) return false;
  const std::size_t size = data.size() - kTrailerBytes;
  if (std::ranges::find(kForeignBlockBytes, size) != kForeignBlockBytes.end()) return false;
  static const std::vector<PresetRecord> empty(kFactoryPlaces);
  std::vector<PresetRecord> bank = empty;
  PresetHeader header;
  const ByteView block{reinterpret_cast<const std::uint8_t*>(data.data()), size};
  return static_cast<bool>(readStateBank(block.subspan(kHeadBytes), empty.front(), bank, header));
}

void checkSound(Instance& instance) {
  std::array<float, kFrames> block{};
  for (int round = 0; round < 2; ++round) {
    block.fill(0.5f);
    instance.render({.input = block.data(), .output = block.data(), .frames = kFrames});
    expect(std::ranges::all_of(block, [](float x) { return std::isfinite(x); }), "sound is finite");
  }
}

/// A state that puts every place of the strip's bank back to the default: a name alone clears a preset.
Chunk plainState() {
  Bytes names;
  for (std::uint32_t index = 0; index < kFactoryPlaces; ++index) {
    Bytes preset;
    appendRecords(preset, {}, index);
    names.insert(names.end(), preset.begin(), preset.begin() + kNameRecordBytes);
  }
  Bytes bytes(kHeadBytes + kBankStartBytes);
  appendHeader(bytes, PresetContent::bank, {.recordBytes = static_cast<std::uint32_t>(names.size())});
  bytes.insert(bytes.end(), names.begin(), names.end());
  bytes.resize(bytes.size() + kTrailerBytes);
  return {.id = kStateChunk, .version = 1, .data = {bytes.begin(), bytes.end()}};
}

/// Two strips that live as long as the process, since one takes longer to make than a thousand states to
/// read.
class Strips {
 public:
  Strips() {
    for (const char* variable : {"HOME", "XDG_CONFIG_HOME"}) ::setenv(variable, home.path.c_str(), 1);
    const auto library = aaxhost::Library::load(std::getenv("CORVANE_PLUGIN"));
    subject = std::make_unique<Instance>(library, 48000.0);
    other = std::make_unique<Instance>(library, 48000.0);
  }

  void check(const Chunk& chunk);

 private:
  void take(Instance& instance, const Chunk& chunk) {
    expect(instance.setChunk(chunk) == AAX_SUCCESS && instance.settle(), "a stored state is taken");
  }

  const OwnFolder home;
  const Chunk plain = plainState();
  std::unique_ptr<Instance> subject, other;
};

void Strips::check(const Chunk& chunk) {
  Instance& instance = *subject;
  take(instance, plain);  // whatever the input before this one has left
  const auto before = valuesOf(instance);
  const Chunk stateBefore = chunkOf(instance, kStateChunk);
  const AAX_Result result = instance.setChunk(chunk);
  expect(instance.settle(), "a state comes to rest");
  const auto after = valuesOf(instance);
  const Chunk state = chunkOf(instance, kStateChunk);
  const bool taken = result == AAX_SUCCESS;
  if (chunk.id == kStateChunk)
    expect(taken == isState(chunk.data), "a state that can be read is taken, no other");
  if (!taken) {
    expect(after == before, "a refused chunk leaves the values");
    expect(state.data == stateBefore.data, "a refused chunk leaves the state");
    return;
  }
  for (const double value : after) expect(value >= 0.0 && value <= 1.0, "a value is 0 to 1");
  checkSound(instance);

  take(*other, state);
  expect(chunkOf(*other, kStateChunk).data == state.data, "a state comes back the same");
}

}  // namespace
}  // namespace corvane::fuzz

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace corvane::fuzz;
  static Strips strips;
  if (size < 2) return 0;
  Chunk chunk;
  chunk.id = data[0] == 'e' ? kControlsChunk : kStateChunk;
  chunk.version = 1;
  chunk.data.assign(data + 2, data + size);
  if (data[1] == 'L') chunk.data.resize(kOldBlockBytes + kTrailerBytes);
  strips.check(chunk);
  return 0;
}
