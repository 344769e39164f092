#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

struct _cairo;
struct _cairo_surface;

namespace corvane::plot {

struct Colour {
  double red, green, blue, alpha = 1.0;
};

constexpr Colour rgb(std::uint32_t hex, double alpha = 1.0) {
  return {((hex >> 16) & 255) / 255.0, ((hex >> 8) & 255) / 255.0, (hex & 255) / 255.0, alpha};
}

// The strip's night desk: a dark ground, quiet lines, one colour for each thing that is told.
inline constexpr Colour kGround = rgb(0x14171c);
inline constexpr Colour kPanel = rgb(0x1b1f26);
inline constexpr Colour kGrid = rgb(0x2c323c);
inline constexpr Colour kFaintGrid = rgb(0x232831);
inline constexpr Colour kAxis = rgb(0x4a5361);
inline constexpr Colour kText = rgb(0xe8ebf0);
inline constexpr Colour kQuietText = rgb(0x97a1b0);
inline constexpr Colour kInput = rgb(0x7d8998);
inline constexpr Colour kOutput = rgb(0x4fc3d9);
inline constexpr Colour kReduction = rgb(0xf0a24a);

struct Box {
  double left, top, width, height;
  double right() const { return left + width; }
  double bottom() const { return top + height; }
};

enum class Align { left, centre, right };

/// Of a whole picture, in pixels. Whatever its size, a picture is kWidthPoints wide for those who draw.
struct PictureSize {
  int width, height;
};
inline constexpr double kWidthPoints = 960.0;

/// "960x600". Throws Failure for another form, for too few or too many pixels, and for a shape into which no
/// picture of ours fits.
PictureSize pictureSizeFrom(const std::string& words);

/// A drawing in points, written as PNG or SVG, by the ending of the file's name.
class Canvas {
 public:
  /// Without a size: kWidthPoints by 600 points, in a PNG two pixels to a point for dense screens.
  Canvas(std::optional<PictureSize> size, bool vector);
  ~Canvas();
  Canvas(const Canvas&) = delete;
  Canvas& operator=(const Canvas&) = delete;

  /// Height in points; the width is kWidthPoints.
  double height() const { return heightPoints; }

  void fill(const Box& box, Colour colour);
  void fillRounded(const Box& box, double radius, Colour colour);
  void line(double x1, double y1, double x2, double y2, Colour colour, double width = 1.0);
  /// `baseline` is where the letters stand.
  void text(std::string_view words, double x, double baseline, double size, Colour colour,
            Align align = Align::left, bool bold = false);
  double textWidth(std::string_view words, double size, bool bold = false);
  /// For what the helpers above do not draw.
  _cairo* context() { return cairo.get(); }

  /// The whole picture. Throws Failure.
  void write(const std::filesystem::path& path);

 private:
  void pickFont(double size, bool bold);

  struct Release {
    void operator()(_cairo* context) const;
    void operator()(_cairo_surface* surface) const;
  };
  double heightPoints;
  std::string bytes;  ///< of the vector form, as cairo hands it over
  bool isVector;
  std::unique_ptr<_cairo_surface, Release> surface;
  std::unique_ptr<_cairo, Release> cairo;
};

/// Whether a file of this name holds a vector picture; throws Failure for an ending other than .png and .svg.
bool isVectorName(const std::filesystem::path& path);

}  // namespace corvane::plot
