#include "corvane/MeterFiles.h"

#include <fmt/format.h>

#include <cmath>
#include <nlohmann/json.hpp>

#include "core/ParameterBank.h"
#include "corvane/Words.h"

namespace corvane::cli {

namespace {

constexpr int kFirstMeter = 361, kMeterEnd = kTotalReductionMeterId + 1;
constexpr std::size_t kTextChunk = 1 << 16;

struct ReductionColumn {
  const char* heading;
  int meterId;
};
constexpr ReductionColumn kReductions[] = {
    {"reduction_db", kTotalReductionMeterId},
    {"gate_reduction_db", 373},
    {"comp_reduction_db", 377},
    {"lim_reduction_db", 385},
};

}  // namespace

double reductionDb(double reading) { return reading > 0.0 ? -20.0 * std::log10(1.0 - reading) : 0.0; }

MeterLog::MeterLog(const std::filesystem::path& path) : file(path) {
  text = "seconds,channel,input_peak_db,output_peak_db";
  for (const auto& column : kReductions) text += fmt::format(",{}", column.heading);
  text += "\n";
}

void MeterLog::add(const ChannelBlock& block) {
  LevelSum input, output;
  input.add(block.input), output.add(block.output);
  const auto end = block.firstFrame + std::ssize(block.input);
  text += fmt::format("{:.6f},{},{},{}", static_cast<double>(end) / block.rateHz, block.channel + 1,
                      decibels(input.peak, 3), decibels(output.peak, 3));
  for (const auto& column : kReductions)
    text += fmt::format(",{:.3f}", reductionDb(block.strip.meter(column.meterId).value_or(0.0)));
  text += "\n";
  if (text.size() > kTextChunk) flushText();
}

void MeterLog::flushText() {
  file.write(text);
  text.clear();
}

void MeterLog::commit() {
  flushText();
  file.commit();
}

nlohmann::ordered_json meterReadings(std::vector<StripRunner>& strips) {
  auto channels = nlohmann::ordered_json::array();
  for (StripRunner& strip : strips) {
    auto meters = nlohmann::ordered_json::object();
    for (int id = kFirstMeter; id < kMeterEnd; ++id) {
      char name[kTextBytes];
      parameterName(id, name);
      if (const auto reading = strip.meter(id)) meters[name] = *reading;
    }
    channels.push_back(std::move(meters));
  }
  return channels;
}

}  // namespace corvane::cli
