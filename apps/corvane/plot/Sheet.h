#pragma once

#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "corvane/plot/Canvas.h"

namespace corvane::plot {

// The form that all pictures share: a heading, panels below each other, a column of figures at the right of
// each. Sizes in points.

inline constexpr double kMargin = 28.0, kLabelSize = 10.0;

/// Words above the panels.
struct Caption {
  std::string title, subtitle;
};

struct Panel {
  Box whole, curve;  ///< `curve` leaves room for labels at the left and figures at the right
};

/// A name and its value, as text.
using Figure = std::pair<std::string, std::string>;

class Sheet {
 public:
  /// `shares` of the height between heading and foot, one for each panel, which leave `gap` between them;
  /// `figureRoom` at the right of the curves.
  Sheet(const Caption& caption, std::optional<PictureSize> size, bool vector, std::span<const double> shares,
        double gap, double figureRoom);
  const Panel& panel(std::size_t index) const { return panels[index]; }
  /// A title with its colour and rows, from `top` below the panel's edge; the room it took.
  double figures(const Panel& panel, double top, const std::string& title, Colour colour,
                 std::span<const Figure> rows);

  Canvas canvas;

 private:
  std::vector<Panel> panels;
};

/// Steps of 1, 2 or 5 that cut `span` into at most `most` parts.
double roundStep(double span, int most);
/// A minus as wide as a digit in place of the hyphen.
std::string withMinus(const std::string& number);

}  // namespace corvane::plot
