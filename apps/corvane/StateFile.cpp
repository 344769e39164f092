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
  aaxhost::Chunk made = state;
  const std::span bytes(reinterpret_cast<std::uint8_t*>(made.data.data()), made.data.size());
  PresetRecord current;
  if (!readCurrentPreset(bytes, current)) fail("the strip gave a state that cannot be read");
  if (!name.empty()) current.setName(name);
  std::ranges::transform(setting.all(), current.values.begin(),
                         [](double v) { return static_cast<float>(v); });
  writeCurrentPreset(bytes, current);
  return made;
}

}  // namespace corvane::cli
