#pragma once

#include <optional>
#include <span>
#include <string>
#include <vector>

#include "platform/aax/AAX.h"

namespace corvane::aaxhost {

/// Stored state of an instance, with its header.
struct Chunk {
  AAX_CTypeID id = 0;
  std::int32_t version = 0;
  AAX_CTypeID manufacturer = 0, product = 0, plugIn = 0;
  std::string name{};  ///< at most 31 characters
  std::vector<char> data{};
};

/// As bytes of a file: the header's words, little-endian, the name in 32 bytes, the data.
std::vector<char> chunkToBytes(const Chunk& chunk);
/// Nothing if the bytes are shorter or longer than their header says.
std::optional<Chunk> chunkFromBytes(std::span<const char> bytes);

}  // namespace corvane::aaxhost
