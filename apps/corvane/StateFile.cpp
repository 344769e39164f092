#include "corvane/StateFile.h"

#include <algorithm>
#include <vector>

#include "control/StateBank.h"
#include "corvane/Failure.h"
#include "corvane/PendingFile.h"
#include "corvane/PluginLibrary.h"
#include "platform/system/Files.h"

namespace corvane::cli {

namespace {

constexpr std::size_t kLargestStateBytes = 4 << 20;  // the largest of older versions has a quarter of it
constexpr std::size_t kTrailerBytes = 8;             // two words behind the strip's own block

/// The strip's block within the chunk's data.
ByteView blockOf(const aaxhost::Chunk& state) {
  const auto* bytes = reinterpret_cast<const std::uint8_t*>(state.data.data());
  return {bytes, state.data.size() - std::min(state.data.size(), kTrailerBytes)};
}

}  // namespace

aaxhost::Chunk readState(const std::filesystem::path& path) {
  platform::Bytes bytes;
  std::string why;
  if (!platform::readFile(path, kLargestStateBytes, &bytes, &why)) fail("cannot be read: {}", why);
  const auto chunk = aaxhost::chunkFromBytes({reinterpret_cast<const char*>(bytes.data()), bytes.size()});
  if (!chunk) fail("no stored state, or one cut short; nothing was changed");
  const auto& description = pluginLibrary()->description();
  const auto product = static_cast<std::uint32_t>(description.property(AAX_eProperty_ProductID));
  const auto word = [](std::uint32_t id) { return printable(aaxhost::typeIdText(id)); };
  if (chunk->product != product || chunk->id != kStateChunkId)
    fail("holds the chunk \"{}\" of a plug-in \"{}\", must be \"{}\" of \"{}\"; nothing was changed",
         word(chunk->id), word(chunk->product), word(kStateChunkId), word(product));
  return *chunk;
}

void writeState(const std::filesystem::path& path, const aaxhost::Chunk& state) {
  const std::vector<char> bytes = aaxhost::chunkToBytes(state);
  writeFile(path, {bytes.data(), bytes.size()});
}

aaxhost::Chunk stateWith(const aaxhost::Chunk& state, const Setting& setting, std::string_view name) {
  const ByteView block = blockOf(state);
  std::vector<PresetRecord> bank(kStatePresets);
  PresetHeader header;
  if (block.size() < kStateHeadBytes || !readStateBank(block.subspan(kStateHeadBytes), {}, bank, header))
    fail("the strip gave a state that cannot be read");
  PresetRecord& current = bank.front();
  if (!name.empty()) current.setName(name);
  std::ranges::transform(setting.all(), current.values.begin(),
                         [](double v) { return static_cast<float>(v); });
  Bytes changed(block.begin(), block.begin() + kStateHeadBytes);
  appendStateBank(changed, bank, header.editorWord, header.editorZoom);
  aaxhost::Chunk made = state;
  const std::vector<char> trailer(state.data.end() - kTrailerBytes, state.data.end());
  made.data.assign(changed.begin(), changed.end());
  made.data.insert(made.data.end(), trailer.begin(), trailer.end());
  return made;
}

}  // namespace corvane::cli
