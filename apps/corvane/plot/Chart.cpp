#include "corvane/plot/Chart.h"

#include <cairo.h>
#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>

namespace corvane::plot {

namespace {

constexpr double kFigureRoom = 168.0;    // of which a preset's name takes most
constexpr double kGapWithLabels = 34.0;  // room for the numbers of an axis between two panels
constexpr double kCurveWidth = 1.8, kGridWidth = 0.7, kStemWidth = 9.0;

double shareOf(const Axis& axis, double value) {
  return axis.inRatios ? std::log(value / axis.low) / std::log(axis.high / axis.low)
                       : (value - axis.low) / (axis.high - axis.low);
}

class ChartDrawing {
 public:
  ChartDrawing(Canvas& onto, Sheet& ofSheet, const Panel& place, const ChartPanel& chartPanel)
      : canvas(onto), sheet(ofSheet), panel(place), chart(chartPanel) {}

  void draw() {
    grid();
    cairo_t* c = canvas.context();
    cairo_save(c);
    const Box& box = panel.curve;
    cairo_rectangle(c, box.left, box.top, box.width, box.height);
    cairo_clip(c);
    for (const Curve& curve : chart.curves) curve.form == Curve::Form::stems ? stems(curve) : line(curve);
    cairo_restore(c);
    for (const Curve& curve : chart.curves)
      if (curve.labelled) stemLabels(curve);
    double top = 0.0;
    for (const FigureGroup& group : chart.figures)
      top += sheet.figures(panel, top, group.title, group.colour, group.rows);
  }

 private:
  double xOf(double x) const { return panel.curve.left + panel.curve.width * shareOf(chart.x, x); }
  double yOf(double y) const { return panel.curve.bottom() - panel.curve.height * shareOf(chart.y, y); }

  void grid() {
    const Box& box = panel.curve;
    const double baseline = panel.whole.bottom() + 16.0;
    for (const Tick& tick : chart.x.ticks) {
      const double x = xOf(tick.at);
      canvas.line(x, box.top, x, box.bottom(), tick.label.empty() ? kFaintGrid : kGrid, kGridWidth);
      canvas.text(withMinus(tick.label), x, baseline, kLabelSize, kQuietText, Align::centre);
    }
    canvas.text(chart.x.unit, box.right() + 16.0, baseline, kLabelSize, kQuietText);
    for (const Tick& tick : chart.y.ticks) {
      const double y = yOf(tick.at);
      canvas.line(box.left, y, box.right(), y, tick.at == 0.0 ? kAxis : kGrid, kGridWidth);
      const bool top = &tick == &chart.y.ticks.back();
      const std::string label =
          withMinus(tick.label) + (top && !chart.y.unit.empty() ? " " + chart.y.unit : "");
      canvas.text(label, box.left - 8.0, y + 3.5, kLabelSize, kQuietText, Align::right);
    }
  }

  void line(const Curve& curve) {
    cairo_t* c = canvas.context();
    cairo_new_path(c);
    double last = 0.0;
    bool drawing = false;
    for (const Point& point : curve.points) {
      const bool jumps = chart.y.goesRound && std::abs(point.y - last) > 0.75 * (chart.y.high - chart.y.low);
      if (!std::isfinite(point.y) || jumps) drawing = false;
      if (!std::isfinite(point.y)) continue;
      // far outside is near outside: the clip hides both
      const double y = std::clamp(yOf(point.y), panel.curve.top - 1000.0, panel.curve.bottom() + 1000.0);
      drawing ? cairo_line_to(c, xOf(point.x), y) : cairo_move_to(c, xOf(point.x), y);
      drawing = true;
      last = point.y;
    }
    const std::array dashes{5.0, 4.0};
    if (curve.form == Curve::Form::dashes) cairo_set_dash(c, dashes.data(), std::ssize(dashes), 0.0);
    cairo_set_source_rgba(c, curve.colour.red, curve.colour.green, curve.colour.blue, curve.colour.alpha);
    cairo_set_line_width(c, curve.form == Curve::Form::dashes ? 1.0 : kCurveWidth);
    cairo_set_line_join(c, CAIRO_LINE_JOIN_ROUND);
    cairo_stroke(c);
    cairo_set_dash(c, nullptr, 0, 0.0);
  }

  void stems(const Curve& curve) {
    for (const Point& point : curve.points) {
      if (!(point.y > chart.y.low)) continue;
      const double x = xOf(point.x) + curve.offset, top = yOf(std::min(point.y, chart.y.high));
      canvas.fill({x - kStemWidth / 2.0, top, kStemWidth, panel.curve.bottom() - top}, curve.colour);
    }
  }

  void stemLabels(const Curve& curve) {
    for (const Point& point : curve.points)
      if (point.y > chart.y.low)
        canvas.text(withMinus(fmt::format("{:.1f}", point.y)), xOf(point.x) + curve.offset,
                    yOf(std::min(point.y, chart.y.high)) - 5.0, kLabelSize, kText, Align::centre);
  }

  Canvas& canvas;
  Sheet& sheet;
  const Panel& panel;
  const ChartPanel& chart;
};

Axis steppedAxis(double low, double high, double step, const std::string& unit) {
  Axis axis{.low = std::floor(low / step + 1e-9) * step,
            .high = std::ceil(high / step - 1e-9) * step,
            .unit = unit};
  const int decimals = step < 1.0 ? static_cast<int>(std::ceil(-std::log10(step) - 1e-9)) : 0;
  const auto count = std::lround((axis.high - axis.low) / step);
  for (long k = 0; k <= count; ++k) {
    const double at = axis.low + static_cast<double>(k) * step;
    axis.ticks.push_back({std::abs(at) < step * 1e-6 ? 0.0 : at,
                          fmt::format("{:.{}f}", std::abs(at) < step * 1e-6 ? 0.0 : at, decimals)});
  }
  return axis;
}

}  // namespace

Colour curveColour(std::size_t index) {
  static constexpr std::array kColours{kOutput,       kReduction,    rgb(0xb58cf0),
                                       rgb(0x8ccf7e), rgb(0xef7d94), rgb(0xe3d26f)};
  return kColours[index % kColours.size()];
}

Axis frequencyAxis(double lowHz, double highHz) {
  Axis axis{.low = lowHz, .high = highHz, .inRatios = true, .unit = "Hz"};
  for (double decade = 10.0; decade <= highHz; decade *= 10.0)
    for (int k = 1; k <= 9; ++k) {
      const double hz = k * decade;
      if (hz < lowHz * 0.999 || hz > highHz * 1.001) continue;
      const bool named = k == 1 || k == 2 || k == 5;
      axis.ticks.push_back({hz, !named        ? ""
                                : hz < 1000.0 ? fmt::format("{:.0f}", hz)
                                              : fmt::format("{:.0f}k", hz / 1000.0)});
    }
  return axis;
}

Axis evenAxis(double low, double high, int mostSteps, const std::string& unit) {
  return steppedAxis(low, high, roundStep(high - low, mostSteps), unit);
}

Axis levelAxis(double lowDb, double highDb) {
  for (const double step : {1.0, 3.0, 6.0, 12.0})
    if (highDb - lowDb <= step * 9.0) return steppedAxis(lowDb, highDb, step, "dB");
  return steppedAxis(lowDb, highDb, 24.0, "dB");
}

void drawChart(const Caption& caption, const std::vector<ChartPanel>& panels,
               const std::filesystem::path& path, std::optional<PictureSize> size) {
  std::vector<double> shares;
  for (const ChartPanel& panel : panels) shares.push_back(panel.share);
  Sheet sheet(caption, size, isVectorName(path), shares, kGapWithLabels, kFigureRoom);
  for (std::size_t k = 0; k < panels.size(); ++k)
    ChartDrawing(sheet.canvas, sheet, sheet.panel(k), panels[k]).draw();
  sheet.canvas.write(path);
}

}  // namespace corvane::plot
