#include "platform/aaxhost/Chunk.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace corvane::aaxhost {

namespace {

constexpr std::size_t kWords = 6, kNameBytes = 32, kHeaderBytes = kWords * 4 + kNameBytes;

}  // namespace

std::vector<char> chunkToBytes(const Chunk& chunk) {
  std::vector<char> bytes(kHeaderBytes);
  const std::array<std::uint32_t, kWords> words{static_cast<std::uint32_t>(chunk.data.size()),
                                                static_cast<std::uint32_t>(chunk.version),
                                                chunk.manufacturer,
                                                chunk.product,
                                                chunk.plugIn,
                                                chunk.id};
  for (std::size_t k = 0; k < kWords * 4; ++k) bytes[k] = static_cast<char>(words[k / 4] >> k % 4 * 8 & 0xFF);
  chunk.name.copy(bytes.data() + kWords * 4, kNameBytes - 1);
  bytes.insert(bytes.end(), chunk.data.begin(), chunk.data.end());
  return bytes;
}

std::optional<Chunk> chunkFromBytes(std::span<const char> bytes) {
  if (bytes.size() < kHeaderBytes) return std::nullopt;
  std::array<std::uint32_t, kWords> words{};
  for (std::size_t k = 0; k < kWords * 4; ++k)
    words[k / 4] |= static_cast<std::uint32_t>(static_cast<unsigned char>(bytes[k])) << k % 4 * 8;
  if (words[0] != bytes.size() - kHeaderBytes) return std::nullopt;
  Chunk chunk{.id = words[5],
              .version = static_cast<std::int32_t>(words[1]),
              .manufacturer = words[2],
              .product = words[3],
              .plugIn = words[4]};
  const char* name = bytes.data() + kWords * 4;
  chunk.name.assign(name, std::find(name, name + kNameBytes, '\0'));
  chunk.data.assign(bytes.begin() + kHeaderBytes, bytes.end());
  return chunk;
}

}  // namespace corvane::aaxhost
