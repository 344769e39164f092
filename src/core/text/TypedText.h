#pragma once

namespace corvane {

/// One parameter row, see core/ParameterRow.h.
struct Row;

/// Number at the start of `text`, read like the C library's string-to-double but always with a decimal
/// point, whatever the locale; 0 where the text starts with none. `end`, if given, is set behind it.
double readNumber(const char* text, const char** end = nullptr);

/// As `readNumber`, but "k" or "K" stands for the decimal point and multiplies by 1000: "1k5" is 1500.
double readFrequency(const char* text);

/// Whether `text` is "0" or "0.": the only spellings of zero that typed values take.
bool isTypedZero(const char* text);

/// How a parameter takes what a person types: a reader and the physical range that it accepts.
struct Entry {
  enum class Kind {
    none,    ///< takes no text
    search,  ///< general walk along the display
    typed,   ///< `read`
  };
  Kind kind = Kind::none;
  /// Normalised value of `text` in `p`; false, and `p` as it was, for a text that is refused.
  bool (*read)(const Row& row, const char* text, double* p) = nullptr;
  double low = 0.0, high = 0.0;  ///< physical range
};

/// A number in low..high through the inverse taper; a text that reads as 0 must be "0" or "0.".
bool readTypedNumber(const Row& row, const char* text, double* p);
/// The same with the "k" form of frequencies.
bool readTypedFrequency(const Row& row, const char* text, double* p);

constexpr Entry typed(double low, double high) { return {Entry::Kind::typed, readTypedNumber, low, high}; }
constexpr Entry typedHz(double low, double high) {
  return {Entry::Kind::typed, readTypedFrequency, low, high};
}
/// A reader of the family's own; low..high are for messages.
constexpr Entry typedBy(bool (*read)(const Row&, const char*, double*), double low, double high) {
  return {Entry::Kind::typed, read, low, high};
}
inline constexpr Entry kNoEntry{};
inline constexpr Entry kSearchEntry{Entry::Kind::search, nullptr, 0.0, 0.0};

}  // namespace corvane
