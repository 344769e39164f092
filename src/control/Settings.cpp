#include "control/Settings.h"

#include <bit>
#include <new>
#include <string>

namespace corvane {

namespace {
std::string keyOf(int id) { return "QDXCorvane: " + std::to_string(id); }
}  // namespace

void Settings::read(int id, double* value) const {
  platform::Bytes bytes;
  if (!store.readBytes(keyOf(id), &bytes) || bytes.size() != 4) return;
  std::uint32_t word = 0;
  for (std::size_t k = 0; k < 4; ++k) word |= static_cast<std::uint32_t>(bytes[k]) << 8 * k;
  const float stored = std::bit_cast<float>(word);
  if (stored >= 0.0f && stored <= 1.0f) *value = static_cast<double>(stored);
}

void Settings::write(int id, double value) const try {
  const auto word = std::bit_cast<std::uint32_t>(static_cast<float>(value));
  platform::Bytes bytes;
  for (int shift = 0; shift < 32; shift += 8) bytes.push_back(static_cast<std::uint8_t>(word >> shift));
  // A session with many strips writes the same few values as it closes; each write waits for the disk.
  platform::Bytes stored;
  if (!store.readBytes(keyOf(id), &stored) || stored != bytes) store.writeBytes(keyOf(id), bytes);
} catch (const std::bad_alloc&) {  // strips write as they go, where nothing may be thrown
}

}  // namespace corvane
