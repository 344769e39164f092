#include "core/ParameterBank.h"
#include "corvane/Automation.h"
#include "corvane/StripRunner.h"
#include "tests/apps/CommandRig.h"

namespace corvane::rig {
namespace {

using Automation = CommandLineTest;
constexpr int kMasterGain = 242;

TEST_F(Automation, LandsOnTheFirstBlockBoundaryAtOrAfterItsTime) {
  constexpr std::size_t kBlock = 100;
  write("in.wav", {48000, {Channel(1000, 0.5F)}});
  // 400 samples are 1/120 s: a time before, on and behind that boundary
  const std::pair<const char*, std::size_t> cases[] = {
      {"0.0083", 4 * kBlock}, {"0.00833333333333333", 4 * kBlock}, {"0.0084", 5 * kBlock}, {"0", 0}};
  for (const auto& [time, first] : cases) {
    writeBytes("a.csv", std::string(time) + ",Mstr:Mute,1\n");  // a mute acts at once, with no glide
    ASSERT_EQ(render("in.wav", "out.wav",
                     emptyStripWith({"--set", "Mstr:Type=Master Control", "--set", "Mstr:Gain=-40", "--block",
                                     "100", "--automation", at("a.csv")}))
                  .code,
              0);
    const Channel output = read("out.wav").channels[0];
    const auto passed = std::find(output.begin(), output.end(), 0.5F);
    EXPECT_EQ(passed - output.begin(), static_cast<std::ptrdiff_t>(first)) << time;
    EXPECT_EQ(std::count(passed, output.end(), 0.5F), output.end() - passed) << "and stays";
  }
}

TEST_F(Automation, KeepsTheOrderOfTheFileWithinOneTime) {
  writeBytes(
      "a.csv",
      "# a fader\r\nseconds,name,value\r\n 2.5 , \"Mstr:Gain\" , 0.25\r\n\r\n1,242,0.5\r\n1,242,0.75\r\n");
  const auto points = cli::readAutomation(at("a.csv"), [](std::string_view) { return kMasterGain; });
  ASSERT_EQ(points.size(), 3U);
  EXPECT_EQ(points[0].value, 0.5);
  EXPECT_EQ(points[1].value, 0.75) << "the later row is the one that stays";
  EXPECT_EQ(points[2].seconds, 2.5);
}

// A person's edits

struct PersonsEdit : CommandLineTest {
  double held(int place, int offset) const { return strip.setting().value(base(place) + offset); }
  int position(int place) const { return decodePosition(held(place, kPositionOffset)); }
  static int base(int place) { return kRack[static_cast<std::size_t>(place)].parameterBase; }

  cli::StripRunner strip;
};

TEST_F(PersonsEdit, MovesAPlaceAndShiftsThoseBetween) {
  strip.edit(base(2) + kPositionOffset, 6 / 8.0);
  const int expected[] = {0, 1, 6, 2, 3, 4, 5, 7, 8};
  for (int place = 0; place < kPlaces; ++place) EXPECT_EQ(position(place), expected[place]) << place;
  strip.edit(base(2) + kPositionOffset, 2 / 8.0);
  for (int place = 0; place < kPlaces; ++place) EXPECT_EQ(position(place), place) << "there and back";
}

TEST_F(PersonsEdit, BringsTheDefaultsOfANewFamilyIntoAnInsertAndKeepsThemWithinOne) {
  constexpr int kCeiling = 18;
  const auto limiter = [](int type) {
    return (familyOfKind(ModuleKind::limiter).firstInsertIndex + type - 1) / 255.0;
  };
  strip.edit(base(kInsertX), limiter(1));
  EXPECT_EQ(held(kInsertX, kCeiling), parameterDefault(210));
  strip.edit(base(kInsertX) + kCeiling, 0.125);
  strip.edit(base(kInsertX), limiter(2));
  EXPECT_EQ(held(kInsertX, kCeiling), 0.125) << "another variant of the family";
  cli::Setting stored = strip.setting();
  stored.store(base(kInsertX), 1 / 255.0);
  strip.load(stored);
  EXPECT_EQ(held(kInsertX, kCeiling), 0.125) << "a stored value knows no rule";
}

TEST_F(PersonsEdit, LeavesOneMonitorOn) {
  strip.edit(base(2) + kMonitorOffset, 1.0);
  strip.edit(base(4) + kMonitorOffset, 1.0);
  EXPECT_EQ(held(2, kMonitorOffset), 0.0);
  EXPECT_EQ(held(4, kMonitorOffset), 1.0);
}

}  // namespace
}  // namespace corvane::rig
