#include "core/text/TypedText.h"

#include <charconv>
#include <cstring>
#include <string>

#include "core/ParameterRow.h"

namespace corvane {

double readNumber(const char* text, const char** end) {
  const char* at = text;
  while (*at == ' ' || (*at >= '\t' && *at <= '\r')) ++at;
  const bool plus = *at == '+' && at[1] != '-';
  if (plus) ++at;
  double value = 0.0;
  const auto result = std::from_chars(at, at + std::strlen(at), value);
  const bool read =
      result.ec == std::errc{} && value - value == 0.0;  // "inf" and "nan" are words, not numbers
  if (end) *end = read ? result.ptr : text;
  return read ? value : 0.0;
}

double readFrequency(const char* text) {
  const char* k = std::strpbrk(text, "kK");
  if (!k) return readNumber(text);
  std::string number = text;
  number[static_cast<std::size_t>(k - text)] = '.';
  return readNumber(number.c_str()) * 1000.0;
}

bool isTypedZero(const char* text) { return std::strcmp(text, "0") == 0 || std::strcmp(text, "0.") == 0; }

namespace {

bool accept(const Row& row, double value, const char* text, double* p) {
  if (value == 0.0 && !isTypedZero(text)) return false;
  if (value < row.entry.low || value > row.entry.high) return false;
  *p = row.taper.normalised(value);
  return true;
}

}  // namespace

bool readTypedNumber(const Row& row, const char* text, double* p) {
  return accept(row, readNumber(text), text, p);
}

bool readTypedFrequency(const Row& row, const char* text, double* p) {
  return accept(row, readFrequency(text), text, p);
}

}  // namespace corvane
