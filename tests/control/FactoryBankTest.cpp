#include "control/FactoryBank.h"

#include <gtest/gtest.h>

#include <array>
#include <map>
#include <string>
#include <vector>

#include "core/ParameterBank.h"
#include "core/Rack.h"

namespace corvane {
namespace {

struct Preset {
  std::array<double, kParameters> values{};
  std::string name;
  std::int32_t category = -1, designer = -1;
};

Preset preset(int index) {
  Preset p;
  char name[kPresetNameBytes];
  std::int32_t group[2] = {-1, -1};
  factoryPreset(index, p.values.data(), name, group);
  p.name = name;
  p.category = group[0];
  p.designer = group[1];
  return p;
}

using Changes = std::map<int, double>;

Changes changesAgainstDefault(const Preset& p) {
  const Preset start = preset(0);
  Changes changes;
  for (int id = 0; id < kParameters; ++id)
    if (p.values[static_cast<std::size_t>(id)] != start.values[static_cast<std::size_t>(id)])
      changes[id] = p.values[static_cast<std::size_t>(id)];
  return changes;
}

TEST(FactoryBank, StartsFromTheDefaultsOfTheBank) {
  const Preset start = preset(0);
  EXPECT_EQ(start.name, "Default");
  for (int id = 0; id < kParameters; ++id)
    EXPECT_EQ(start.values[static_cast<std::size_t>(id)], parameterDefault(id)) << id;
  for (int index : {233, 234, 235, 100000, -1}) {
    EXPECT_EQ(preset(index).name, "Init") << index;
    EXPECT_EQ(preset(index).values, start.values) << index;
  }
}

TEST(FactoryBank, StartingPointsChangeNothingButTheirModules) {
  struct Told {
    int index;
    std::string name;
    Changes changes;
  };
  const std::vector<Told> told{
      {1, "Let's start from scratc", {{16, 0.0625}, {48, 0.0}, {112, 0.0}, {144, 0.0}, {224, 0.0625}}},
      {2, "Drums Init", {{16, 0.1875}, {80, 0.125}, {192, 0.0625}, {224, 0.0625}}},
      {113, "Bass Init", {{16, 0.1875}, {112, 0.0625}, {144, 0.125}, {192, 0.0625}, {224, 0.0625}}},
      {133, "Guitar Init", {{16, 0.125}, {112, 0.0625}, {192, 0.0625}, {224, 0.0625}}},
      {151, "Keys Init", {{192, 0.0625}, {224, 0.0625}}},
      {169, "Strings Init", {{112, 0.1875}, {192, 0.0625}, {224, 0.0625}}},
      {175, "Wind Init", {{16, 0.125}, {112, 0.0625}, {144, 0.1875}, {192, 0.0625}, {224, 0.0625}}},
      {184,
       "Vocal Init",
       {{16, 0.1875},
        {112, 0.0625},
        {144, 0.125},
        {193, 0.75},
        {225, 0.875},
        {256, 113 / 255.0},
        {257, 0.625},
        {272, 0.636716},
        {273, 0.636716},
        {274, 0.5},
        {275, 0.5}}},
      {219,
       "Special Init",
       {{16, 0.3125}, {48, 0.125}, {80, 0.0625}, {112, 0.1875}, {192, 0.125}, {224, 0.0625}}},
  };
  for (const Told& each : told) {
    const Preset p = preset(each.index);
    EXPECT_EQ(p.name, each.name);
    EXPECT_EQ(changesAgainstDefault(p), each.changes) << each.name;
    EXPECT_EQ(p.category, -1) << each.name;
    EXPECT_EQ(p.designer, kHouseDesigner) << each.name;
  }
}

TEST(FactoryBank, ToldEntriesStandAtTheirPlaces) {
  const Preset kick = preset(3);
  EXPECT_EQ(kick.name, "Smacka 808 BD");
  EXPECT_EQ(kick.category, 0);
  EXPECT_EQ(kick.designer, 17);
  const std::array<int, 9> kickPositions{0, 4, 5, 6, 1, 2, 3, 7, 8};
  const std::array<double, 9> kickTypes{0.1333, 0, 0, 0, 0.0625, 0.0625, 0.0625, 0, 0};
  const Preset saturation = preset(231);
  EXPECT_EQ(saturation.name, "Saturation");
  EXPECT_EQ(saturation.category, 7);
  EXPECT_EQ(saturation.designer, 0);
  const std::array<int, 9> saturationPositions{0, 4, 5, 6, 7, 8, 3, 2, 1};
  const std::array<double, 9> saturationTypes{0.2667, 0, 0, 0, 0, 0, 0.0667, 0.0196, 0.0118};
  for (std::size_t place = 0; place < kPlaces; ++place) {
    const auto type = static_cast<std::size_t>(kRack[place].parameterBase);
    EXPECT_EQ(kick.values[type], kickTypes[place]) << place;
    EXPECT_EQ(kick.values[type + 1], kickPositions[place] / 8.0) << place;
    EXPECT_EQ(saturation.values[type], saturationTypes[place]) << place;
    EXPECT_EQ(saturation.values[type + 1], saturationPositions[place] / 8.0) << place;
  }
  EXPECT_EQ(preset(11).name, "Kick Ac");
  EXPECT_EQ(preset(11).values[192], 0.3555);
  for (auto [index, name] : {std::pair{193, "Rap Vocal"}, {195, "Smooth"}}) {
    EXPECT_EQ(preset(index).name, name);
    EXPECT_EQ(preset(index).values[256], 0.9023);
    EXPECT_EQ(kindOfInsertIndex(decodeInsertIndex(0.9023)), -1);
  }
}

TEST(FactoryBank, EveryCategoryHasItsNumberOfPresetsFromFirstToLast) {
  struct Category {
    std::string name;
    std::size_t count;
    std::string first, last;
  };
  const std::vector<Category> told{{"Drums", 111, "Smacka 808 BD", "Extra Presence"},
                                   {"Bass", 18, "Driven 5-string", "Bass"},
                                   {"Guitar", 18, "Guit Reggae", "Telefunky"},
                                   {"Keys", 18, "Smooth Snth", "Organ Saturator"},
                                   {"Strings", 6, "Orch Huge", "Strings"},
                                   {"Wind", 8, "Dirty Horn", "Sax Fattener"},
                                   {"Vocals", 32, "HiFi Vocal", "BGV Male"},
                                   {"Special", 12, "iPhone restore", "Transient Distorted"}};
  std::vector<std::vector<std::string>> names(told.size());
  int without = 0;
  for (int index = 0; index < 233; ++index) {
    const Preset p = preset(index);
    if (p.category < 0)
      ++without;
    else
      names[static_cast<std::size_t>(p.category)].push_back(p.name);
  }
  EXPECT_EQ(without, 10);
  ASSERT_EQ(factoryCategories().size(), told.size());
  for (std::size_t k = 0; k < told.size(); ++k) {
    EXPECT_EQ(factoryCategories()[k], told[k].name);
    EXPECT_EQ(names[k].size(), told[k].count);
    EXPECT_EQ(names[k].front(), told[k].first);
    EXPECT_EQ(names[k].back(), told[k].last);
  }
}

TEST(FactoryBank, EveryPresetIsASettingThatTheStripCanTake) {
  for (int index = 0; index < kFactoryPlaces; ++index) {
    const Preset p = preset(index);
    int positions = 0;
    for (const Place& place : kRack)
      positions |= 1 << decodePosition(p.values[static_cast<std::size_t>(place.parameterBase) + 1]);
    EXPECT_EQ(positions, 0x1ff) << p.name;
    for (double value : p.values) EXPECT_TRUE(value >= 0.0 && value <= 1.0) << p.name;
    EXPECT_TRUE(p.designer >= 0 && p.designer < static_cast<int>(factoryDesigners().size())) << p.name;
  }
  EXPECT_STREQ(factoryDesigners()[kHouseDesigner].name, "");
  EXPECT_EQ(factoryDesigners()[5].portrait, 90006);
}

TEST(FactoryBank, LeavesAloneWhatNobodyAskedFor) {
  std::array<double, kParameters> values;
  values.fill(7.0);
  factoryPreset(3, values.data(), nullptr, nullptr);
  EXPECT_EQ(values[43], 7.0) << "an id without a use";
  EXPECT_EQ(values[272], 0.0) << "a parameter of an empty insert";
  std::int32_t group[2] = {-5, -5};
  factoryPreset(0, nullptr, nullptr, group);
  EXPECT_EQ(group[0], -5) << "a preset without a category";
}

}  // namespace
}  // namespace corvane
