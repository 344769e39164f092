#include "corvane/plot/LevelsPicture.h"

#include <cairo.h>
#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>

#include "core/ParameterBank.h"
#include "corvane/MeterFiles.h"
#include "corvane/Words.h"
#include "corvane/plot/Sheet.h"

namespace corvane::plot {

namespace {

constexpr std::int64_t kBinFrames = 16;  // a third of a millisecond: finer than a column of the picture

// Points.
constexpr double kPanelGap = 14.0, kFigureRoom = 118.0;
constexpr std::array kShares{0.35, 0.35, 0.3};  // input, output, reduction
constexpr double kGhostAlpha = 0.6;

constexpr double kSmallestReductionSpanDb = 6.0;

std::string timeText(double seconds, double step) {
  if (step >= 60.0 || seconds >= 600.0)
    return fmt::format("{}:{:02}", static_cast<int>(seconds) / 60, static_cast<int>(seconds) % 60);
  return fmt::format("{:.{}f}", seconds, step >= 1.0 ? 0 : step >= 0.1 ? 1 : 2);
}

class LevelsDrawing {
 public:
  LevelsDrawing(const LevelTrace& levelTrace, const cli::RenderReport& renderReport, const Caption& caption,
                std::optional<PictureSize> size, bool vector)
      : trace(levelTrace),
        report(renderReport),
        sheet(caption, size, vector, kShares, kPanelGap, kFigureRoom) {
    const auto columns = static_cast<std::size_t>(input.curve.width * 2.0);
    for (std::size_t k = 0; k < columns; ++k)
      bins.push_back(trace.between(static_cast<double>(k) / static_cast<double>(columns),
                                   static_cast<double>(k + 1) / static_cast<double>(columns)));
    for (const auto& bin : bins) {
      for (const float sample : {bin.inputLow, bin.inputHigh, bin.outputLow, bin.outputHigh})
        amplitude = std::max(amplitude, std::abs(static_cast<double>(sample)));
      deepestDb = std::max(deepestDb, static_cast<double>(bin.reductionDb));
    }
  }

  void draw() {
    timeAxis();
    waveAxis(input), waveAxis(output);
    wave(input, &LevelTrace::Bin::inputLow, &LevelTrace::Bin::inputHigh, kInput);
    wave(output, &LevelTrace::Bin::inputLow, &LevelTrace::Bin::inputHigh,
         {kInput.red, kInput.green, kInput.blue, kGhostAlpha});
    wave(output, &LevelTrace::Bin::outputLow, &LevelTrace::Bin::outputHigh, kOutput);
    reductionCurve();
    levelFigures(input, "Input", kInput, report.input);
    levelFigures(output, "Output", kOutput, report.output);
    canvas.text("grey: the input", output.curve.right() + 16.0, output.curve.bottom(), kLabelSize,
                kQuietText);
    sheet.figures(
        reduction, 0.0, "Reduction", kReduction,
        std::array{Figure{"largest", fmt::format("{:.1f} dB", cli::reductionDb(report.largestReduction))}});
  }

  Canvas& picture() { return canvas; }

 private:
  double xOf(std::size_t column) const {
    return input.curve.left +
           input.curve.width * (static_cast<double>(column) + 0.5) / static_cast<double>(bins.size());
  }

  void timeAxis() {
    const double seconds = trace.seconds();
    const double baseline = reduction.whole.bottom() + 16.0;
    if (seconds <= 0.0) {
      canvas.text("no samples", input.curve.left + input.curve.width / 2.0, baseline, kLabelSize, kQuietText,
                  Align::centre);
      return;
    }
    const double step = roundStep(seconds, 12);
    for (int k = 0; k * step <= seconds * (1.0 + 1e-9); ++k) {
      const double x = input.curve.left + input.curve.width * k * step / seconds;
      for (const Panel* frame : {&input, &output, &reduction})
        canvas.line(x, frame->curve.top, x, frame->curve.bottom(), kGrid, 0.7);
      canvas.text(timeText(k * step, step), x, baseline, kLabelSize, kQuietText, Align::centre);
    }
    canvas.text(seconds >= 600.0 ? "min:s" : "seconds", input.curve.right() + 14.0, baseline, kLabelSize,
                kQuietText);
  }

  double yOfSample(const Panel& frame, double sample) const {
    return frame.curve.top + frame.curve.height * (0.5 - 0.5 * sample / span());
  }
  /// Linear amplitude at the edge of a panel: the peak with a little air, or a line of the scale near it.
  double span() const {
    const double tight = std::max(amplitude * 1.06, 1e-4);
    const double line = std::pow(10.0, std::ceil(20.0 * std::log10(tight) / 6.0) * 0.3);  // the next 6 dB up
    return line < tight * 1.2 ? line * 1.03 : tight;
  }

  void waveAxis(const Panel& frame) {
    const int topDb = static_cast<int>(std::floor(20.0 * std::log10(span()) / 6.0)) * 6;
    for (const int db : {topDb, topDb - 6, topDb - 12}) {
      const double level = std::pow(10.0, db / 20.0);
      for (const double sign : {1.0, -1.0}) {
        const double y = yOfSample(frame, sign * level);
        canvas.line(frame.curve.left, y, frame.curve.right(), y, kGrid, 0.7);
        if (db != topDb - 12)
          canvas.text(withMinus(fmt::format("{}", db)), frame.curve.left - 8.0, y + 3.5, kLabelSize,
                      kQuietText, Align::right);
      }
    }
    const double middle = yOfSample(frame, 0.0);
    canvas.line(frame.curve.left, middle, frame.curve.right(), middle, kAxis, 0.7);
    canvas.text("dBFS", frame.curve.left - 8.0, middle + 3.5, kLabelSize, kQuietText, Align::right);
  }

  void wave(const Panel& frame, float LevelTrace::Bin::*low, float LevelTrace::Bin::*high, Colour colour) {
    cairo_t* c = canvas.context();
    constexpr double kThinnest = 0.35;  // silence still shows as a line
    cairo_new_path(c);
    for (std::size_t k = 0; k < bins.size(); ++k)
      cairo_line_to(c, xOf(k), yOfSample(frame, static_cast<double>(bins[k].*high)) - kThinnest);
    for (std::size_t k = bins.size(); k-- > 0;)
      cairo_line_to(c, xOf(k), yOfSample(frame, static_cast<double>(bins[k].*low)) + kThinnest);
    cairo_close_path(c);
    cairo_set_source_rgba(c, colour.red, colour.green, colour.blue, colour.alpha);
    cairo_fill(c);
  }

  void reductionCurve() {
    const Box& box = reduction.curve;
    const double step = std::max(roundStep(std::max(deepestDb * 1.05, kSmallestReductionSpanDb), 5), 1.0);
    const double bottomDb = std::max(std::ceil(deepestDb * 1.05 / step), 1.0) * step;
    const double shownDb = std::max(bottomDb, kSmallestReductionSpanDb);
    const auto yOf = [&](double db) { return box.top + box.height * std::min(db / shownDb, 1.0); };
    for (int k = 0; k * step <= shownDb + 1e-9; ++k) {
      const double y = yOf(k * step);
      canvas.line(box.left, y, box.right(), y, k == 0 ? kAxis : kGrid, 0.7);
      canvas.text(k == 0 ? "0 dB" : fmt::format("\u2212{:.0f}", k * step), box.left - 8.0, y + 3.5,
                  kLabelSize, kQuietText, Align::right);
    }
    cairo_t* c = canvas.context();
    cairo_new_path(c);
    for (std::size_t k = 0; k < bins.size(); ++k)
      cairo_line_to(c, xOf(k), yOf(static_cast<double>(bins[k].reductionDb)));
    cairo_path_t* curve = cairo_copy_path(c);
    cairo_line_to(c, xOf(bins.size() - 1), box.top);
    cairo_line_to(c, xOf(0), box.top);
    cairo_close_path(c);
    cairo_set_source_rgba(c, kReduction.red, kReduction.green, kReduction.blue, 0.22);
    cairo_fill(c);
    cairo_append_path(c, curve);
    cairo_path_destroy(curve);
    cairo_set_source_rgba(c, kReduction.red, kReduction.green, kReduction.blue, 1.0);
    cairo_set_line_width(c, 1.4);
    cairo_set_line_join(c, CAIRO_LINE_JOIN_ROUND);
    cairo_stroke(c);
  }

  void levelFigures(const Panel& panel, const char* title, Colour colour, const cli::LevelSum& level) {
    sheet.figures(panel, 0.0, title, colour,
                  std::array{Figure{"peak", cli::decibels(level.peak, 1) + " dB"},
                             Figure{"RMS", cli::decibels(level.rms(), 1) + " dB"}});
  }

  const LevelTrace& trace;
  const cli::RenderReport& report;
  Sheet sheet;
  Canvas& canvas = sheet.canvas;
  const Panel &input = sheet.panel(0), &output = sheet.panel(1), &reduction = sheet.panel(2);
  std::vector<LevelTrace::Bin> bins;  ///< a column each
  double amplitude = 0.0, deepestDb = 0.0;
};

}  // namespace

void LevelTrace::Bin::widen(const Bin& other) {
  inputLow = std::min(inputLow, other.inputLow), inputHigh = std::max(inputHigh, other.inputHigh);
  outputLow = std::min(outputLow, other.outputLow), outputHigh = std::max(outputHigh, other.outputHigh);
  reductionDb = std::max(reductionDb, other.reductionDb);
}

void LevelTrace::add(const cli::ChannelBlock& block) {
  rateHz = block.rateHz;
  frames = std::max(frames, block.firstFrame + std::ssize(block.input));
  bins.resize(static_cast<std::size_t>((frames + kBinFrames - 1) / kBinFrames));
  const auto reading = block.strip.meter(kTotalReductionMeterId).value_or(0.0);
  const auto reductionDb = static_cast<float>(std::min(cli::reductionDb(reading), 200.0));
  for (std::size_t i = 0; i < block.input.size(); ++i) {
    const float in = block.input[i], out = block.output[i];
    Bin& bin = bins[static_cast<std::size_t>((block.firstFrame + static_cast<std::int64_t>(i)) / kBinFrames)];
    bin.widen({in, in, out, out, reductionDb});
  }
}

LevelTrace::Bin LevelTrace::between(double from, double to) const {
  Bin whole;
  if (bins.empty()) return whole;
  const auto count = static_cast<double>(bins.size());
  const auto first = std::min(static_cast<std::size_t>(from * count), bins.size() - 1);
  const auto end = std::clamp(static_cast<std::size_t>(std::ceil(to * count)), first + 1, bins.size());
  whole = bins[first];
  for (std::size_t k = first + 1; k < end; ++k) whole.widen(bins[k]);
  return whole;
}

void drawLevels(const LevelTrace& trace, const cli::RenderReport& report, const Caption& caption,
                const std::filesystem::path& path, std::optional<PictureSize> size) {
  LevelsDrawing drawing(trace, report, caption, size, isVectorName(path));
  drawing.draw();
  drawing.picture().write(path);
}

}  // namespace corvane::plot
