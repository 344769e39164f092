#include "control/ParameterText.h"

#include <gtest/gtest.h>

#include <cctype>
#include <cmath>
#include <limits>
#include <string>

#include "core/ParameterBank.h"
#include "core/Rack.h"

namespace corvane {
namespace {

constexpr int kProEq = 65, kMaster = 97;  // insert indices
constexpr int kMasterWidth = 240, kMasterGain = 242, kMasterBalance = 241, kMeasurementPoint = 243;

std::string shown(int id, double value) {
  char text[kTextBytes];
  parameterDisplay(id, value, text);
  return text;
}

double typed(int id, const char* text, int insertIndex = 0) {
  double value = -1.0;
  return valueFromTyped(id, insertIndex, text, &value) ? value : -1.0;
}

double searched(int id, const char* text) {
  double value = -1.0;
  parameterFromText(id, text, &value);
  return value;
}

TEST(ParameterText, ShowsEveryKindOfId) {
  EXPECT_EQ(shown(0, 1.0), "On");
  EXPECT_EQ(shown(0, 0.49), "Off");
  EXPECT_EQ(shown(224, 1.0 / 15.0), "Master Control");
  EXPECT_EQ(shown(256, 113 / 256.0), "De-esser");
  EXPECT_EQ(shown(256, 0.9023), "-");
  EXPECT_EQ(shown(17, 0.0), "A");
  EXPECT_EQ(shown(305, 1.0), "I");
  EXPECT_EQ(shown(18, 1.0), "Mute");
  EXPECT_EQ(shown(307, 0.0), "-");
  EXPECT_EQ(shown(116, 1.0), "Ext AUX");
  EXPECT_EQ(shown(116, 0.0), "Input");
  EXPECT_EQ(shown(149, 1.0), "Monitor");
  EXPECT_EQ(shown(kMeasurementPoint, 0.0), "In");
  EXPECT_EQ(shown(272, 0.257), "InsertX:0.26");
  EXPECT_EQ(shown(411, 0.5), "InsertY:0.50");
  EXPECT_EQ(shown(423, 0.1), "-20.00");
  EXPECT_EQ(shown(423, 0.00005), "-oo");
  EXPECT_EQ(shown(43, 0.5), "");
  EXPECT_EQ(shown(9000, 0.5), "");
}

TEST(ParameterText, NoValueOverrunsTheText) {
  for (double value : {-1.0, 2.0, 1e300, -1e300, std::numeric_limits<double>::infinity(), std::nan("")})
    for (int id = 0; id < kIdentifiers; ++id)
      EXPECT_LT(shown(id, value).size(), std::size_t{kTextBytes}) << id;
}

TEST(ParameterText, SearchFindsWordsByTheirBeginningAndNumbersFromBelow) {
  EXPECT_EQ(decodeVariant(searched(224, "Mast")), 1);
  EXPECT_EQ(decodeInsertIndex(searched(304, "Tidal")), 115);
  EXPECT_EQ(decodePosition(searched(49, "C")), 2);
  EXPECT_EQ(searched(kMasterWidth, "300"), 1.0);
  EXPECT_EQ(searched(kMasterWidth, "-1"), 0.0);
  const double half = searched(kMasterWidth, "50.3");  // shown in whole per cent
  EXPECT_EQ(shown(kMasterWidth, half), "51\n%");
  EXPECT_EQ(shown(kMasterWidth, half - 0.001), "50\n%") << "the first one that has gone past";
  EXPECT_EQ(searched(kMeasurementPoint, "nowhere"), 0.0);
  double untouched = 0.3;
  EXPECT_FALSE(parameterFromText(43, "1", &untouched));
  EXPECT_EQ(untouched, 0.3);
}

TEST(ParameterText, TypedTextsTakeTheModulesOwnEntryAndRefuseWhatDoesNotFit) {
  EXPECT_DOUBLE_EQ(typed(kMasterBalance, "20L"), 0.3);
  EXPECT_DOUBLE_EQ(typed(kMasterBalance, "0 %"), 0.5);
  EXPECT_NEAR(typed(kMasterGain, "0 dB"), 0.7511,
              1e-4);  // the default is the fader's 0 dB cut to four places
  EXPECT_EQ(typed(kMasterBalance, "60R"), -1.0);
  EXPECT_EQ(typed(kMasterGain, "loud"), -1.0);
  EXPECT_EQ(typed(kMasterGain, " "), -1.0);
  EXPECT_EQ(typed(43, "1"), -1.0);
}

TEST(ParameterText, TypesPositionsAndSwitchesAreTakenByName) {
  EXPECT_EQ(typed(112, "fet clamper"), 2 / 15.0);
  EXPECT_EQ(typed(192, "BrickWall"), 7 / 15.0);
  EXPECT_EQ(typed(16, "Pre 80s"), 4 / 15.0);
  EXPECT_EQ(typed(256, "De-hummer"), 114 / 255.0);
  EXPECT_EQ(typed(256, "-"), 0.0);
  EXPECT_EQ(typed(112, "Opto Clumper"), -1.0);
  EXPECT_EQ(typed(112, "3"), -1.0);
  EXPECT_EQ(typed(113, "i"), 1.0);
  EXPECT_EQ(typed(113, "J"), -1.0);
  EXPECT_EQ(typed(115, "Solo"), 1.0);
  EXPECT_EQ(typed(115, "off"), 0.0);
  EXPECT_EQ(typed(116, "ext aux"), 1.0);
  EXPECT_EQ(typed(116, "1"), 1.0);
  EXPECT_EQ(typed(0, "Off"), 0.0);
  EXPECT_EQ(typed(kMeasurementPoint, "post"), 2 / 3.0);
}

TEST(ParameterText, OffEmptiesAPlaceAndEverySwitchKnowsOnAndOff) {
  for (const Place& place : kRack)
    for (const char* off : {"off", "Off", "OFF"})
      EXPECT_EQ(typed(place.parameterBase, off), 0.0) << place.prefix;
  EXPECT_EQ(searched(112, "Off"), 0.0) << "a host's road: no word fits";
  for (int id = 0; id < kParameters; ++id) {
    const int place = placeOfParameter(id);
    const bool bare =
        place >= kFixedPlaces && id - kRack[static_cast<std::size_t>(place)].parameterBase >= kFirstOwnOffset;
    if (parameterSteps(id) != 1 || !(parameterKind(id) & kKindStored) || bare) continue;
    EXPECT_EQ(typed(id, "On"), 1.0) << id;
    EXPECT_EQ(typed(id, "oFF"), 0.0) << id;
  }
}

// the default, the ends and a third of the way: enough to meet every form a display has
TEST(ParameterText, WhatADisplayShowsCanBeTypedBackInAnyCase) {
  for (const ModuleFamily* family : moduleFamilies())
    for (const Row& row : family->rows) {
      if (row.offset < kFirstOwnOffset) continue;
      const int id = kRack[kInsertX].parameterBase + row.offset;
      const int module = family->firstInsertIndex + family->variants.front().type - 1;
      for (const double p : {row.defaultValue, 0.0, 0.3, 1.0}) {
        char text[kTextBytes] = "", again[kTextBytes] = "";
        parameterDisplay(id, module, p, text);
        if (text[0] == '\0' || std::string(text) == "undef") continue;
        for (const bool upper : {false, true}) {
          std::string entered = text;
          for (char& c : entered) c = static_cast<char>(upper ? std::toupper(c) : std::tolower(c));
          const double value = typed(id, entered.c_str(), module);
          ASSERT_GE(value, 0.0) << row.name << " refuses its own " << entered;
          parameterDisplay(id, module, value, again);
          EXPECT_STREQ(again, text) << row.name << " at " << p;
        }
      }
    }
}

TEST(ParameterText, EveryModuleOfAnInsertIsFoundByItsName) {
  for (int index = 1; index < 256; ++index) {
    if (!familyOfInsertIndex(index)) continue;
    EXPECT_EQ(decodeInsertIndex(typed(304, insertName(index))), index) << insertName(index);
  }
}

TEST(ParameterText, AnInsertTakesTheTextsOfTheModuleInIt) {
  constexpr int kPrm02 = 273, kPrm20 = 291;
  EXPECT_DOUBLE_EQ(typed(kPrm02, "20L", kMaster), 0.3);
  EXPECT_EQ(typed(kPrm02, "20L"), -1.0) << "empty place";
  EXPECT_EQ(typed(kPrm02, "0.25"), 0.25);
  EXPECT_EQ(typed(kPrm02, "1.25"), -1.0);
  EXPECT_EQ(typed(kPrm20, "0.5", kMaster), 0.5) << "an offset that the module does not use";
  char text[kTextBytes];
  parameterDisplay(kPrm02, kMaster, 0.3, text);
  EXPECT_STREQ(text, "20L");
  parameterDisplay(kPrm02, 0, 0.3, text);
  EXPECT_STREQ(text, "InsertX:0.30");
  parameterDisplay(256, kProEq, 113 / 255.0, text);
  EXPECT_STREQ(text, "De-esser");
}

}  // namespace
}  // namespace corvane
