#include "corvane/plot/Sheet.h"

#include <cmath>
#include <numeric>

namespace corvane::plot {

namespace {

constexpr double kTitleSize = 19.0, kSubtitleSize = 11.5, kPanelTitleSize = 11.5;
constexpr double kAxisRoom = 44.0;  // left of the curves
constexpr double kPanelsTop = 84.0, kBelowPanels = 46.0;
constexpr double kCurvePadding = 8.0;
constexpr double kRowHeight = 19.0;

Panel panelAt(double top, double height, double figureRoom) {
  const Box whole{kMargin, top, kWidthPoints - 2.0 * kMargin, height};
  return {whole,
          {whole.left + kAxisRoom, whole.top + kCurvePadding, whole.width - kAxisRoom - figureRoom,
           whole.height - 2.0 * kCurvePadding}};
}

/// As much of a text as there is room for, an ellipsis at its end.
std::string fitting(Canvas& canvas, std::string words, double room, double size, bool bold) {
  if (canvas.textWidth(words, size, bold) <= room) return words;
  while (!words.empty() && canvas.textWidth(words + "\u2026", size, bold) > room) words.pop_back();
  return words + "\u2026";
}

}  // namespace

Sheet::Sheet(const Caption& caption, std::optional<PictureSize> size, bool vector,
             std::span<const double> shares, double gap, double figureRoom)
    : canvas(size, vector) {
  const double room = kWidthPoints - 2.0 * kMargin;
  canvas.text(fitting(canvas, caption.title, room, kTitleSize, true), kMargin, kMargin + 16.0, kTitleSize,
              kText, Align::left, true);
  canvas.text(fitting(canvas, caption.subtitle, room, kSubtitleSize, false), kMargin, kMargin + 37.0,
              kSubtitleSize, kQuietText);
  const double height =
      canvas.height() - kBelowPanels - kPanelsTop - gap * static_cast<double>(shares.size() - 1);
  const double whole = std::accumulate(shares.begin(), shares.end(), 0.0);
  double top = kPanelsTop;
  for (const double share : shares) {
    panels.push_back(panelAt(top, height * share / whole, figureRoom));
    canvas.fillRounded(panels.back().whole, 5.0, kPanel);
    top = panels.back().whole.bottom() + gap;
  }
}

double Sheet::figures(const Panel& panel, double top, const std::string& title, Colour colour,
                      std::span<const Figure> rows) {
  const double left = panel.curve.right() + 16.0, right = panel.whole.right() - 14.0;
  double y = panel.whole.top + top + 24.0;
  canvas.fill({left, y - 9.0, 3.0, 11.0}, colour);
  canvas.text(fitting(canvas, title, right - left - 9.0, kPanelTitleSize, true), left + 9.0, y,
              kPanelTitleSize, kText, Align::left, true);
  for (const auto& [name, value] : rows) {
    y += kRowHeight;
    canvas.text(name, left, y, kLabelSize, kQuietText);
    canvas.text(withMinus(value), right, y, kLabelSize, kText, Align::right);
  }
  return y - panel.whole.top - top + 5.0;
}

double roundStep(double span, int most) {
  const double rough = span / most, decade = std::pow(10.0, std::floor(std::log10(rough)));
  for (const double factor : {1.0, 2.0, 5.0})
    if (decade * factor >= rough) return decade * factor;
  return decade * 10.0;
}

std::string withMinus(const std::string& number) {
  return number.starts_with('-') ? "\u2212" + number.substr(1) : number;
}

}  // namespace corvane::plot
