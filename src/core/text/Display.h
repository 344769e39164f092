#pragma once

namespace corvane {

struct Row;

/// Room that every buffer for a display text must offer, in bytes.
inline constexpr int kTextBytes = 64;

/// How a normalised value is shown. `write` gets p within 0..1 and a buffer of `kTextBytes`.
struct Display {
  void (*write)(const Row& row, double p, char* text) = nullptr;
  int decimals = 0;
  const char* words = nullptr;  ///< "|" between the states
  const char* suffix = "";
};

namespace display {
void nothing(const Row& row, double p, char* text);
void fixed(const Row& row, double p, char* text);
void frequency(const Row& row, double p, char* text);
void frequencyOrOff(const Row& row, double p, char* text);
void choice(const Row& row, double p, char* text);
}  // namespace display

/// Shows nothing: the control speaks for itself.
inline constexpr Display kNoDisplay{display::nothing};
/// The physical value by `formatFixed`, then `suffix`.
constexpr Display fixedText(int decimals, const char* suffix = "") {
  return {display::fixed, decimals, nullptr, suffix};
}
/// The physical value by `formatFrequency`, then `suffix`.
constexpr Display frequencyText(const char* suffix = "") { return {display::frequency, 0, nullptr, suffix}; }
/// The same, and "Off" at the low stop of the taper: a filter that is out of the path there.
constexpr Display frequencyOrOffText() { return {display::frequencyOrOff}; }
/// One word for each state of the row's stepped taper: "Out|In".
constexpr Display choiceText(const char* words) { return {display::choice, 0, words, ""}; }
/// A form of the family's own.
constexpr Display ownText(void (*write)(const Row&, double, char*)) { return {write}; }

}  // namespace corvane
