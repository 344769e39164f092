#include "core/text/NumberText.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cmath>
#include <string>

#include "core/text/TypedText.h"

namespace corvane {
namespace {

std::string fixed(double value, int decimals) {
  char text[16] = "unchanged";
  formatFixed(static_cast<float>(value), decimals, text);
  return text;
}

std::string frequency(double hz) {
  char text[16] = "";
  formatFrequency(static_cast<float>(hz), text);
  return text;
}

TEST(FormatFixed, RoundsAwayFromZeroAtTheHalf) {
  EXPECT_EQ(fixed(3.999, 1), "4.0");
  EXPECT_EQ(fixed(2.04, 1), "2.0");
  EXPECT_EQ(fixed(-18.06, 1), "-18.1");
  EXPECT_EQ(fixed(0.5, 0), "1");
  EXPECT_EQ(fixed(100.0, 0), "100");
}

TEST(FormatFixed, KeepsToEightCharacters) {
  EXPECT_EQ(fixed(12345.678, 3), "12345.67");
  EXPECT_EQ(fixed(-1234.5678, 4), "-1234.56");
  EXPECT_EQ(fixed(99999992.0, 2), "99999992");
}

TEST(FormatFixed, LeavesTheTextForWhatDoesNotFit) {
  EXPECT_EQ(fixed(2e8, 1), "unchanged");
  EXPECT_EQ(fixed(-1e7, 1), "unchanged");
  EXPECT_EQ(fixed(std::nan(""), 1), "unchanged");
}

TEST(FormatFrequency, ReadsAsAnEngineerWritesIt) {
  EXPECT_EQ(frequency(7.256), "7.26");
  EXPECT_EQ(frequency(99.54), "99.5");
  EXPECT_EQ(frequency(440.0), "440");
  EXPECT_EQ(frequency(1000.0), "1k");
  EXPECT_EQ(frequency(1050.0), "1k05");
  EXPECT_EQ(frequency(1500.0), "1k5");
  EXPECT_EQ(frequency(2250.0), "2k25");
  EXPECT_EQ(frequency(10050.0), "10k0");
  EXPECT_EQ(frequency(12500.0), "12k5");
}

TEST(TypedText, ReadsNumbersWhateverTheLocale) {
  const std::string before = std::setlocale(LC_ALL, nullptr);
  std::setlocale(LC_ALL, "de_DE.UTF-8");  // where it is not installed the test still holds
  EXPECT_EQ(readNumber("  -1.5 dB"), -1.5);
  EXPECT_EQ(readNumber("+3"), 3.0);
  EXPECT_EQ(readNumber("word"), 0.0);
  EXPECT_EQ(readNumber("inf"), 0.0);
  EXPECT_EQ(readFrequency("1k5"), 1500.0);
  EXPECT_EQ(readFrequency("2K"), 2000.0);
  EXPECT_EQ(readFrequency("440"), 440.0);
  std::setlocale(LC_ALL, before.c_str());
}

}  // namespace
}  // namespace corvane
