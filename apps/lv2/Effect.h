#pragma once

#include <filesystem>
#include <memory>

#include "platform/aaxhost/Library.h"

namespace corvane::lv2 {

/// The effect inside a bundle, loaded once for all instances and gone with the last. Throws
/// aaxhost::HostError. [control]
std::shared_ptr<aaxhost::Library> sharedEffect(const std::filesystem::path& bundle);

}  // namespace corvane::lv2
