#pragma once

#include <filesystem>
#include <mutex>
#include <nlohmann/json_fwd.hpp>
#include <string>

#include "corvane/PendingFile.h"
#include "corvane/Render.h"

namespace corvane::cli {

/// Readings of a meter in dB below no reduction; 0.0 for none.
double reductionDb(double reading);

/// One row a block and channel: level in and out, reductions, at the end of the block.
class MeterLog {
 public:
  explicit MeterLog(const std::filesystem::path& path);
  void add(const ChannelBlock& block);
  void commit();

 private:
  void flushText();
  PendingFile file;
  std::string text;
};

/// Every meter of every strip after the last block, by name.
nlohmann::ordered_json meterReadings(std::vector<StripRunner>& strips);

}  // namespace corvane::cli
