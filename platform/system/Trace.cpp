#include "platform/system/Trace.h"

#include <fstream>
#include <string>

namespace corvane::platform {

void FileTrace::line(std::string_view text) {
  if (file.empty()) return;
  std::ofstream out(file, std::ios::app | std::ios::binary);
  out << std::string(text) + '\n';  // one write, so that lines of several processes do not mix
}

}  // namespace corvane::platform
