#include "core/ParameterBank.h"

#include <gtest/gtest.h>

#include <string>

#include "core/Rack.h"

namespace corvane {
namespace {

std::string name(int id) {
  char text[kTextBytes];
  parameterName(id, text);
  return text;
}

TEST(ParameterBank, ComposesNamesOfEveryRange) {
  EXPECT_EQ(name(0), "Process");
  EXPECT_EQ(name(7), "- [7]");
  EXPECT_EQ(name(16), "Pre:Type");
  EXPECT_EQ(name(43), "Pre:-[27]");
  EXPECT_EQ(name(303), "InsX:Prm32");
  EXPECT_EQ(name(320), "InsY:Prm01");
  EXPECT_EQ(name(422), "InsY:Mtr11");
  EXPECT_EQ(name(423), "Gain-Reduction Meter");
  EXPECT_EQ(name(355), "- [355]");
  EXPECT_EQ(name(360), "_dev_ 360");
}

}  // namespace
}  // namespace corvane
