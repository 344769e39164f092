#pragma once

#include <optional>
#include <string>
#include <vector>

#include "corvane/Console.h"
#include "corvane/StartOptions.h"

namespace CLI {
class App;
}

namespace corvane::cli {

enum class PlotKind { response, dynamics, harmonics };

/// What the user typed behind `corvane plot response|dynamics|harmonics`.
struct PlotOptions {
  PlotKind kind = PlotKind::response;
  StartOptions start;
  std::vector<std::string> compared;  ///< presets
  std::string output, title, size;
  double rateHz = 48000.0, toneHz = 1000.0;
  double levelDb = -18.0;  ///< peak of the sine, dBFS
  bool phase = false, burst = false, json = false, csv = false;
};

void addPlotCommand(CLI::App& app, PlotOptions& options);
/// Measures, draws, prints; the exit code. Throws Failure and Interrupted.
int runPlot(const PlotOptions& options, Console& console);

}  // namespace corvane::cli
