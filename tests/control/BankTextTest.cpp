#include "control/bank/BankText.h"

#include <gtest/gtest.h>

#include <cmath>

namespace corvane::bank {
namespace {

const std::vector<DesignerRow> kDesigners{{"Tape Room", "https://quadrexa.example/tape"}, {"Chapel", ""}};

BankFile parse(const std::string& text) {
  BankPreset start;
  start.name = "Start";
  for (std::size_t place = 0; place < kPlaces; ++place)
    start.values[static_cast<std::size_t>(kRack[place].parameterBase) + 1] =
        static_cast<double>(8 - place) / 8.0;
  return parseBank("test.bank", text, kDesigners, {start});
}

/// Message of the fault in `text`.
std::string fault(const std::string& text) {
  try {
    parse(text);
  } catch (const BankError& error) {
    return error.what();
  }
  return "none";
}

TEST(BankText, WritesASettingTheWayAnEngineerThinks) {
  const BankFile file = parse(
      "category 2 Guitar  # a comment\n"
      "\n"
      "preset Loud & clear\n"
      "  designer Chapel\n"
      "  Mstr: Master Control\n"
      "    Gain -6 dB\n"
      "    Mute on\n"
      "  InsY: Master Control\n"
      "    Balance 20L\n"
      "  raw Mstr:Width 1/4\n"
      "preset Plain\n"
      "  designer 0\n"
      "preset Other\n"
      "  designer 0\n"
      "  like Start\n");
  ASSERT_EQ(file.presets.size(), 3u);
  EXPECT_EQ(file.categoryName, "Guitar");
  const BankPreset& loud = file.presets[0];
  EXPECT_EQ(loud.name, "Loud & clear");
  EXPECT_EQ(loud.category, 2);
  EXPECT_EQ(loud.designer, 1);
  EXPECT_EQ(loud.values[224], 1 / 15.0);
  EXPECT_EQ(loud.values[225], 0.0);
  EXPECT_EQ(loud.values[226], 1.0);
  EXPECT_EQ(loud.values[240], 0.25);
  EXPECT_NEAR(loud.values[242], std::pow(94.0 / 110.0, 1.0 / 0.333), 1e-12);  // -6 dB on a fader of 110 dB
  EXPECT_EQ(loud.values[304], 97 / 255.0);
  EXPECT_EQ(loud.values[305], 0.125) << "second in the chain";
  EXPECT_EQ(loud.values[321], 0.3);
  EXPECT_EQ(loud.values[320], 0.5) << "what the preset does not name has the module's default";
  EXPECT_EQ(loud.values[112], 0.0) << "a place outside the chain is empty";
  EXPECT_EQ(loud.values[17], 0.25) << "and stands behind it";
  EXPECT_EQ(file.presets[1].values[112], 0.125) << "no chain: the default strip";
  EXPECT_EQ(file.presets[2].values[17], 1.0);
}

TEST(BankText, NamesFileLineAndFault) {
  const std::string head = "preset A\n  designer 0\n";
  EXPECT_EQ(fault(head + "  Mstr: Opto Lim\n"), "test.bank:3: no module \"Opto Lim\" for \"Mstr\"");
  EXPECT_EQ(fault(head + "  Flute: Opto Lim\n"), "test.bank:3: no place \"Flute\"");
  EXPECT_EQ(fault(head + "  Mstr: Master Control\n  Gian 3\n"),
            "test.bank:4: no parameter of \"Mstr\" starts \"Gian 3\"");
  EXPECT_EQ(fault(head + "  Mstr: Master Control\n  Width 300 %\n"),
            "test.bank:4: \"300 %\" does not fit; from \"0\n%\" to \"200\n%\"");
  EXPECT_EQ(fault(head + "  Mstr: Master Control\n  Width 3\n  Width 4\n"),
            "test.bank:5: \"Width\" is set twice");
  EXPECT_EQ(fault(head + "  Mstr: Master Control\n  Mstr: Master Control\n"),
            "test.bank:4: \"Mstr\" stands in the chain twice");
  EXPECT_EQ(fault(head + "  raw Mstr:Gian 0.5\n"), "test.bank:3: no parameter \"Mstr:Gian\"");
  EXPECT_EQ(fault(head + "  raw Mstr:Gain 1.01\n"), "test.bank:3: \"1.01\" is no number from 0 to 1");
  EXPECT_EQ(fault(head + "  raw Mstr:Gain nan\n"), "test.bank:3: \"nan\" is no number from 0 to 1");
  EXPECT_EQ(fault(head + "  raw Mstr:Position 0\n"),
            "test.bank:3: preset \"A\" has two places at one position");
  EXPECT_EQ(fault(head + "  like Nobody\n"), "test.bank:3: no earlier preset \"Nobody\"");
  EXPECT_EQ(fault(head + "  Gain 3\n"), "test.bank:3: \"Gain 3\" stands under no module");
  EXPECT_EQ(fault("preset A\npreset B\n"), "test.bank:2: preset \"A\" has no designer");
  EXPECT_EQ(fault("preset A\n  designer 2\n"), "test.bank:2: no designer in row 2");
  EXPECT_EQ(fault("  designer 0\n"), "test.bank:1: a preset must start with a line \"preset NAME\"");
}

TEST(BankText, PlacesFollowEachOtherWithoutGap) {
  EXPECT_EQ(parsePlaces("p", "0-2 inits\n3 drums\n").size(), 2u);
  for (const char* broken : {"1 drums", "0 drums\n2 bass", "0-1 drums\n1 bass", "2-1 drums", "0", "x drums"})
    EXPECT_THROW(parsePlaces("p", broken), BankError) << broken;
  EXPECT_EQ(parseDesigners("d", "0 | A | l\n1 | |\n").size(), 2u);
  for (const char* broken : {"1 | A | l", "0 | A", "A | 0 | l"})
    EXPECT_THROW(parseDesigners("d", broken), BankError) << broken;
  EXPECT_THROW(parseDesigners("d", "0 | " + std::string(65, 'x') + " | l"), BankError);
}

}  // namespace
}  // namespace corvane::bank
