#include "corvane/PendingFile.h"

#include <cstdint>

#include "corvane/Failure.h"

namespace corvane::cli {

PendingFile::PendingFile(const std::filesystem::path& target) : asked(target) {
  std::string why;
  if (!file.open(target, &why)) fail(why);
}

void PendingFile::write(std::string_view bytes) {
  std::string why;
  if (!file.write({reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()}, &why)) fail(why);
}

void PendingFile::commit() {
  std::string why;
  if (!file.commit(&why)) fail(why);
}

void PendingFile::fail(const std::string& why) const {
  cli::fail("cannot write {}: {}", printable(asked), why);
}

void writeFile(const std::filesystem::path& target, std::string_view bytes) {
  PendingFile file(target);
  file.write(bytes);
  file.commit();
}

}  // namespace corvane::cli
