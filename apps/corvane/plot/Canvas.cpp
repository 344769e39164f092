#include "corvane/plot/Canvas.h"

#include <cairo-svg.h>
#include <cairo.h>

#include <cmath>
#include <numbers>

#include "corvane/Failure.h"
#include "corvane/PendingFile.h"
#include "corvane/Words.h"

namespace corvane::plot {

namespace {

constexpr double kUsualHeightPoints = 600.0;
constexpr int kPixelsPerPoint = 2;  // where nobody asks for a size
constexpr int kFewestPixels = 480, kMostPixels = 8192;
constexpr double kFlattest = 2.5, kTallest = 0.5;  // width to height
constexpr const char* kFont = "DejaVu Sans";

cairo_status_t append(void* closure, const unsigned char* data, unsigned int length) {
  static_cast<std::string*>(closure)->append(reinterpret_cast<const char*>(data), length);
  return CAIRO_STATUS_SUCCESS;
}

void setColour(cairo_t* cairo, Colour c) { cairo_set_source_rgba(cairo, c.red, c.green, c.blue, c.alpha); }

}  // namespace

void Canvas::Release::operator()(_cairo* context) const { cairo_destroy(context); }
void Canvas::Release::operator()(_cairo_surface* drawn) const { cairo_surface_destroy(drawn); }

PictureSize pictureSizeFrom(const std::string& words) {
  const auto cross = words.find('x');
  const auto pixels = [](std::string_view text) {
    const auto number = cli::numberOf(text);
    return number && *number == std::floor(*number) && *number >= kFewestPixels && *number <= kMostPixels
               ? static_cast<int>(*number)
               : 0;
  };
  const std::string_view whole = words;
  const int width = pixels(whole.substr(0, cross)),
            height = cross == whole.npos ? 0 : pixels(whole.substr(cross + 1));
  if (width == 0 || height == 0)
    cli::refuse("must be WIDTHxHEIGHT, each {} to {} pixels", kFewestPixels, kMostPixels);
  const double shape = static_cast<double>(width) / height;
  if (shape > kFlattest || shape < kTallest)
    cli::refuse("must not be flatter than {}:1 nor taller than 1:{}", kFlattest, 1.0 / kTallest);
  return {width, height};
}

Canvas::Canvas(std::optional<PictureSize> size, bool vector)
    : heightPoints(size ? kWidthPoints * size->height / size->width : kUsualHeightPoints), isVector(vector) {
  const int scale = vector ? 1 : kPixelsPerPoint;
  const PictureSize pixels = size.value_or(
      PictureSize{static_cast<int>(kWidthPoints) * scale, static_cast<int>(kUsualHeightPoints) * scale});
  surface.reset(vector ? cairo_svg_surface_create_for_stream(append, &bytes, pixels.width, pixels.height)
                       : cairo_image_surface_create(CAIRO_FORMAT_RGB24, pixels.width, pixels.height));
  cairo.reset(cairo_create(surface.get()));
  const double perPoint = pixels.width / kWidthPoints;
  cairo_scale(cairo.get(), perPoint, perPoint);
  fill({0.0, 0.0, kWidthPoints, heightPoints}, kGround);
}

Canvas::~Canvas() = default;

void Canvas::fill(const Box& box, Colour colour) {
  setColour(cairo.get(), colour);
  cairo_rectangle(cairo.get(), box.left, box.top, box.width, box.height);
  cairo_fill(cairo.get());
}

void Canvas::fillRounded(const Box& box, double radius, Colour colour) {
  constexpr double kQuarter = std::numbers::pi / 2.0;
  cairo_t* c = cairo.get();
  cairo_new_path(c);
  cairo_arc(c, box.right() - radius, box.top + radius, radius, -kQuarter, 0.0);
  cairo_arc(c, box.right() - radius, box.bottom() - radius, radius, 0.0, kQuarter);
  cairo_arc(c, box.left + radius, box.bottom() - radius, radius, kQuarter, 2.0 * kQuarter);
  cairo_arc(c, box.left + radius, box.top + radius, radius, 2.0 * kQuarter, 3.0 * kQuarter);
  cairo_close_path(c);
  setColour(c, colour);
  cairo_fill(c);
}

void Canvas::line(double x1, double y1, double x2, double y2, Colour colour, double width) {
  setColour(cairo.get(), colour);
  cairo_set_line_width(cairo.get(), width);
  cairo_move_to(cairo.get(), x1, y1);
  cairo_line_to(cairo.get(), x2, y2);
  cairo_stroke(cairo.get());
}

void Canvas::pickFont(double size, bool bold) {
  cairo_select_font_face(cairo.get(), kFont, CAIRO_FONT_SLANT_NORMAL,
                         bold ? CAIRO_FONT_WEIGHT_BOLD : CAIRO_FONT_WEIGHT_NORMAL);
  cairo_set_font_size(cairo.get(), size);
}

double Canvas::textWidth(std::string_view words, double size, bool bold) {
  pickFont(size, bold);
  cairo_text_extents_t extents;
  cairo_text_extents(cairo.get(), cli::validUtf8(words).c_str(), &extents);
  return extents.x_advance;
}

void Canvas::text(std::string_view words, double x, double baseline, double size, Colour colour, Align align,
                  bool bold) {
  const double width = align == Align::left ? 0.0 : textWidth(words, size, bold);
  pickFont(size, bold);
  setColour(cairo.get(), colour);
  cairo_move_to(cairo.get(),
                align == Align::right    ? x - width
                : align == Align::centre ? x - width / 2.0
                                         : x,
                baseline);
  cairo_show_text(cairo.get(), cli::validUtf8(words).c_str());
}

void Canvas::write(const std::filesystem::path& path) {
  cairo_status_t status = cairo_status(cairo.get());
  if (status == CAIRO_STATUS_SUCCESS && !isVector)
    status = cairo_surface_write_to_png_stream(surface.get(), append, &bytes);
  cairo_surface_finish(surface.get());
  if (status == CAIRO_STATUS_SUCCESS) status = cairo_surface_status(surface.get());
  if (status != CAIRO_STATUS_SUCCESS)
    cli::fail("cannot draw {}: {}", cli::printable(path), cairo_status_to_string(status));
  cli::writeFile(path, bytes);
}

bool isVectorName(const std::filesystem::path& path) {
  const std::string ending = cli::lowerCase(path.extension().string());
  if (ending == ".svg") return true;
  if (ending == ".png") return false;
  cli::refuse("a picture's name must end in .png or .svg, not \"{}\"", cli::printable(path.filename()));
}

}  // namespace corvane::plot
