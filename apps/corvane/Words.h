#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace corvane::cli {

/// Without the blanks, tabs and line ends around it.
std::string_view trimmed(std::string_view text);
/// Letters of English in lower case, other bytes as they are.
std::string lowerCase(std::string_view text);
/// The whole text as a finite decimal number, whatever the locale.
std::optional<double> numberOf(std::string_view text);
/// Letters to insert, drop or replace to get from one to the other, letter case aside.
std::size_t editDistance(std::string_view a, std::string_view b);
/// The words with blanks between them.
std::string joined(const std::vector<std::string>& words);
/// Up to three of `names` that a person may have meant, the nearest first, parted by commas; empty for none.
std::string nearestOf(std::string_view asked, const std::vector<std::string>& names);
/// Shortest decimal number that reads back as `value`.
std::string shortest(double value);
/// dB of a linear gain, "-inf" for 0.
std::string decibels(double gain, int decimals);

/// Bytes that are no UTF-8 become the replacement character, for those who take UTF-8 alone.
std::string validUtf8(std::string_view text);

}  // namespace corvane::cli
