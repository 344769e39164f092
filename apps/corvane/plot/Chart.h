#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "corvane/plot/Sheet.h"

namespace corvane::plot {

// Curves over axes, for anything that is measured.

/// One colour for each curve of a panel, as often as there are.
Colour curveColour(std::size_t index);

struct Tick {
  double at;
  std::string label;  ///< empty: a line alone
};

struct Axis {
  double low = 0.0, high = 1.0;
  bool inRatios = false;   ///< equal ratios, equal room
  bool goesRound = false;  ///< behind `high` comes `low`, as with a phase
  std::vector<Tick> ticks{};
  std::string unit{};
};

/// 20 Hz to 20 kHz, or a part of it.
Axis frequencyAxis(double lowHz, double highHz);
/// Round steps of which every one has its number; `low` and `high` go out to the next step.
Axis evenAxis(double low, double high, int mostSteps, const std::string& unit);
/// The same in the steps that suit levels in dB: 1, 3, 6, 12, 24.
Axis levelAxis(double lowDb, double highDb);

struct Point {
  double x, y;
};

struct Curve {
  Colour colour;
  std::vector<Point> points{};
  enum class Form { line, dashes, stems } form = Form::line;
  double offset = 0.0;    ///< to the right, in points
  bool labelled = false;  ///< stems bear their value
};

/// What stands beside the curves.
struct FigureGroup {
  std::string title;
  Colour colour;
  std::vector<Figure> rows{};
};

struct ChartPanel {
  double share = 1.0;  ///< of the height
  Axis x{}, y{};
  std::vector<Curve> curves{};
  std::vector<FigureGroup> figures{};
};

/// Panels below each other, each with its own axes. Throws Failure.
void drawChart(const Caption& caption, const std::vector<ChartPanel>& panels,
               const std::filesystem::path& path, std::optional<PictureSize> size);

}  // namespace corvane::plot
