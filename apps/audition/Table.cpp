#include "audition/Table.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>

namespace corvane::audition {

namespace {

constexpr std::array kHeadings{"place", "preset", "material", "in",   "out",     "change",
                               "peak",  "rms",    "tilt",     "dist", "nearest", "reduction, largest/mean",
                               "marks"};
using Cells = std::array<std::string, kHeadings.size()>;

/// dBFS that a name such as "Kick1 -12RMS" promises.
std::optional<double> promisedRmsDb(const std::string& name) {
  if (name.ends_with("-12RMS")) return -12.0;
  if (name.ends_with("-18RMS")) return -18.0;
  return std::nullopt;
}

void addMark(std::string& marks, const std::string& mark) { marks += (marks.empty() ? "" : ", ") + mark; }

void markReduction(std::string& marks, const Reduction& reduction) {
  if (reduction.kind == ModuleKind::compressor && reduction.largestDb < kLeastCompressionDb)
    addMark(marks, "comp idle");
  if (reduction.kind == ModuleKind::compressor && reduction.largestDb > kMostCompressionDb)
    addMark(marks, "comp deep");
  if (reduction.kind == ModuleKind::gate && reduction.largestDb < kGateClosesDb) addMark(marks, "gate open");
  if (reduction.kind == ModuleKind::gate && reduction.smallestDb > kGateOpensDb) addMark(marks, "gate shut");
}

std::string reductionText(const std::vector<Reduction>& reductions) {
  std::string text;
  for (const Reduction& r : reductions)
    text += fmt::format("{}{} {:.1f}/{:.1f}", text.empty() ? "" : ", ", r.module, r.largestDb, r.meanDb);
  return text;
}

Cells cellsOf(const Auditioned& preset) {
  const Hearing& h = preset.hearing;
  const bool near = preset.nearest.has_value();
  return {fmt::format("{}", preset.index),
          preset.name,
          preset.material,
          fmt::format("{:.1f}", h.loudnessIn),
          fmt::format("{:.1f}", h.loudnessOut),
          fmt::format("{:+.1f}", h.loudnessOut - h.loudnessIn),
          fmt::format("{:.1f}", h.truePeakDb),
          fmt::format("{:.1f}", h.loudestRmsDb),
          fmt::format("{:+.1f}", h.tilt),
          near ? fmt::format("{:.1f}", preset.nearestDb) : "",
          near ? fmt::format("{}", *preset.nearest) : "",
          reductionText(h.reductions),
          marksOf(preset)};
}

}  // namespace

std::string marksOf(const Auditioned& preset) {
  std::string marks;
  const Hearing& h = preset.hearing;
  if (const auto promised = promisedRmsDb(preset.name)) {
    if (std::abs(h.loudestRmsDb - *promised) > kLoudnessWindowDb) addMark(marks, "rms");
  } else if (std::abs(h.loudnessOut - h.loudnessIn) > kLoudnessWindowDb) {
    addMark(marks, h.loudnessOut > h.loudnessIn ? "loud" : "quiet");
  }
  if (h.truePeakDb > kHighestTruePeakDb) addMark(marks, "peak");
  for (const Reduction& reduction : h.reductions) markReduction(marks, reduction);
  if (preset.nearest && preset.nearestDb < kNearestBoundDb) addMark(marks, "alike");
  return marks;
}

std::string tableOf(const std::vector<Auditioned>& presets) {
  std::vector<Cells> rows(1);
  std::ranges::copy(kHeadings, rows.front().begin());
  for (const Auditioned& preset : presets) rows.push_back(cellsOf(preset));
  std::array<std::size_t, kHeadings.size()> widths{};
  for (const Cells& row : rows)
    for (std::size_t c = 0; c < row.size(); ++c) widths[c] = std::max(widths[c], row[c].size());
  std::string text;
  for (std::size_t r = 0; r < rows.size(); ++r) {
    for (std::size_t c = 0; c < widths.size(); ++c) text += fmt::format("| {:<{}} ", rows[r][c], widths[c]);
    text += "|\n";
    if (r > 0) continue;
    for (const std::size_t width : widths) text += fmt::format("|{:-<{}}", "", width + 2);
    text += "|\n";
  }
  return text;
}

}  // namespace corvane::audition
