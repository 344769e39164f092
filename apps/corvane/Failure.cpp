#include "corvane/Failure.h"

namespace corvane::cli {

std::string printable(const std::string& name) {
  std::string shown;
  for (const char c : name) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte < 0x20 || byte == 0x7f)
      shown += fmt::format("\\x{:02x}", byte);
    else
      shown += c;
  }
  return shown;
}

}  // namespace corvane::cli
