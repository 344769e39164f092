#include "corvane/plot/MeasurePictures.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

#include "core/text/NumberText.h"

namespace corvane::plot {

namespace {

constexpr double kSmallestSpanDb = 6.0;  // each way from 0: a flat strip is a flat line
constexpr double kDeepestDb = 48.0;      // below the highest gain: a deep notch must not flatten all else
constexpr double kHarmonicFloorDb = -120.0;
constexpr double kStemPitch = 11.0;  // points

std::string gainText(double db) { return fmt::format("{:+.1f} dB", std::abs(db) < 0.05 ? 0.0 : db); }

std::string levelText(double db) {
  return db == 0.0 ? "at 0 dBFS" : fmt::format("at \u2212{:.0f} dBFS", -db);
}

std::string hzText(double hz) {
  char text[16] = "";
  formatFrequency(static_cast<float>(hz), text);
  return std::string(text) + " Hz";
}

const cli::ResponsePoint& nearest(const std::vector<cli::ResponsePoint>& points, double hz) {
  return *std::ranges::min_element(points, {}, [&](const auto& p) { return std::abs(std::log(p.hz / hz)); });
}

std::vector<Figure> responseFigures(const NamedResponse& curve, bool alone) {
  std::vector<Figure> rows{{"at 1 kHz", gainText(nearest(curve.points, 1000.0).gainDb)}};
  if (!alone) return rows;
  const auto [low, high] = std::ranges::minmax_element(curve.points, {}, &cli::ResponsePoint::gainDb);
  for (const auto& [what, point] : {std::pair{"highest", high}, {"lowest", low}}) {
    rows.emplace_back(what, gainText(point->gainDb));
    rows.emplace_back("at", hzText(point->hz));
  }
  return rows;
}

}  // namespace

std::vector<ChartPanel> responsePanels(const std::vector<NamedResponse>& curves, bool withPhase) {
  const auto& first = curves.front().points;
  const Axis hz = frequencyAxis(first.front().hz, first.back().hz);
  double lowest = -kSmallestSpanDb, highest = kSmallestSpanDb;
  for (const NamedResponse& curve : curves)
    for (const auto& point : curve.points) {
      lowest = std::min(lowest, point.gainDb - 0.5);
      highest = std::max(highest, point.gainDb + 0.5);
    }
  ChartPanel gain{.share = 1.0, .x = hz, .y = levelAxis(std::max(lowest, highest - kDeepestDb), highest)};
  ChartPanel phase{
      .share = 0.55, .x = hz, .y = {.low = -180.0, .high = 180.0, .goesRound = true, .unit = "\u00b0"}};
  for (const double degrees : {-180.0, -90.0, 0.0, 90.0, 180.0})
    phase.y.ticks.push_back({degrees, fmt::format("{:.0f}", degrees)});
  for (std::size_t k = 0; k < curves.size(); ++k) {
    Curve gains{.colour = curveColour(k)}, phases{.colour = curveColour(k)};
    for (const auto& point : curves[k].points) {
      gains.points.push_back({point.hz, point.gainDb});
      phases.points.push_back({point.hz, point.phaseDegrees});
    }
    gain.curves.push_back(std::move(gains));
    phase.curves.push_back(std::move(phases));
    gain.figures.push_back({curves[k].name, curveColour(k), responseFigures(curves[k], curves.size() == 1)});
  }
  phase.figures.push_back({"Phase", kAxis});
  std::vector<ChartPanel> panels{std::move(gain)};
  if (withPhase) panels.push_back(std::move(phase));
  return panels;
}

std::vector<ChartPanel> dynamicsPanels(const std::vector<NamedDynamics>& curves) {
  double lowest = cli::kLoudestDb, highest = cli::kLoudestDb, deepest = -kSmallestSpanDb, tallest = 0.0;
  for (const NamedDynamics& curve : curves) {
    for (const auto& point : curve.points) {
      lowest = std::min(lowest, point.outputDb);
      highest = std::max(highest, point.outputDb);
    }
    for (const auto& point : curve.burst) {
      deepest = std::min(deepest, point.gainDb - 0.5);
      tallest = std::max(tallest, point.gainDb + 0.5);
    }
  }
  const bool withBurst = !curves.front().burst.empty();
  ChartPanel level{.x = levelAxis(cli::kQuietestDb, cli::kLoudestDb),
                   .y = levelAxis(std::max(lowest, cli::kQuietestDb - 24.0), highest)};
  level.x.unit = "dBFS in";
  ChartPanel burst{.share = 0.7, .y = levelAxis(std::max(deepest, tallest - kDeepestDb), tallest)};
  level.curves.push_back(
      {.colour = kAxis,
       .points = {{cli::kQuietestDb, cli::kQuietestDb}, {cli::kLoudestDb, cli::kLoudestDb}},
       .form = Curve::Form::dashes});
  for (std::size_t k = 0; k < curves.size(); ++k) {
    Curve line{.colour = curveColour(k)}, gains{.colour = curveColour(k)};
    FigureGroup figures{curves[k].name, curveColour(k)};
    for (const auto& point : curves[k].points) {
      line.points.push_back({point.inputDb, point.outputDb});
      const bool told = curves.size() == 1 ? std::fmod(point.inputDb, 12.0) == 0.0 : point.inputDb == -12.0;
      if (told) figures.rows.emplace_back(levelText(point.inputDb), gainText(point.gainDb()));
    }
    for (const auto& point : curves[k].burst) gains.points.push_back({point.milliseconds, point.gainDb});
    level.curves.push_back(std::move(line));
    level.figures.push_back(std::move(figures));
    burst.curves.push_back(std::move(gains));
  }
  std::vector<ChartPanel> panels{std::move(level)};
  if (!withBurst) return panels;
  const auto& points = curves.front().burst;
  burst.x = evenAxis(points.front().milliseconds, points.back().milliseconds, 10, "ms");
  burst.figures.push_back(
      {"Gain", kAxis, {{"loud from", "0 ms"}, {"to", fmt::format("{:.0f} ms", cli::kBurstMs)}}});
  panels.push_back(std::move(burst));
  return panels;
}

std::vector<ChartPanel> harmonicsPanels(const std::vector<NamedHarmonics>& curves) {
  ChartPanel panel{.x = {.low = 0.4, .high = cli::kHarmonics + 0.6, .unit = "Hz"},
                   .y = levelAxis(kHarmonicFloorDb, 0.0)};
  panel.y.high += 6.0;  // room for the numbers over the stems
  for (std::size_t k = 0; k < curves.size(); ++k) {
    const auto& harmonics = curves[k].harmonics;
    Curve stems{
        .colour = curveColour(k),
        .form = Curve::Form::stems,
        .offset = (static_cast<double>(k) - 0.5 * static_cast<double>(curves.size() - 1)) * kStemPitch,
        .labelled = curves.size() == 1};
    for (const auto& harmonic : harmonics)
      stems.points.push_back(
          {static_cast<double>(harmonic.order), harmonic.levelDb - harmonics.front().levelDb});
    panel.curves.push_back(std::move(stems));
    panel.figures.push_back({curves[k].name,
                             curveColour(k),
                             {{"tone", fmt::format("{:.1f} dBFS", harmonics.front().levelDb)},
                              {"THD", fmt::format("{:.3g} %", 100.0 * cli::totalDistortion(harmonics))}}});
  }
  for (const auto& harmonic : curves.front().harmonics) {
    std::string label = hzText(harmonic.hz);
    label.resize(label.size() - 3);
    panel.x.ticks.push_back({static_cast<double>(harmonic.order), label});
  }
  return {panel};
}

}  // namespace corvane::plot
