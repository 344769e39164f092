#pragma once

#include <filesystem>
#include <string_view>

#include "corvane/Setting.h"
#include "platform/aaxhost/Chunk.h"

namespace corvane::cli {

// The state of a strip as hosts keep it in their sessions: the plug-in's own chunk, here in a file.

/// Id of the chunk.
inline constexpr std::uint32_t kStateChunkId = AAX_TypeID("All ");

/// A state of this plug-in. Throws Failure that tells what is wrong with the file, without its name.
aaxhost::Chunk readState(const std::filesystem::path& path);
/// The old file or the new one, never half. Throws Failure that names the file.
void writeState(const std::filesystem::path& path, const aaxhost::Chunk& state);

/// A state that a strip gave, with another setting as its current one, as if the session had been stored so.
/// An empty name leaves the name as it is.
aaxhost::Chunk stateWith(const aaxhost::Chunk& state, const Setting& setting, std::string_view name);

}  // namespace corvane::cli
