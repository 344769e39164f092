#include <cmath>
#include <complex>
#include <nlohmann/json.hpp>
#include <numbers>

#include "corvane/StartOptions.h"
#include "corvane/measure/Measure.h"
#include "tests/apps/CommandRig.h"

namespace corvane::rig {
namespace {

using Plot = CommandLineTest;
constexpr double kRateHz = 48000.0;

/// A strip with nothing in it but what the arguments put in.
cli::StripRunner stripWith(const std::vector<std::string>& sets) {
  cli::StripRunner strip(kRateHz);
  cli::applyArguments(strip, {"Pre:Type=-", "Flt:Type=-", "Comp:Type=-", "EQ:Type=-"}, {});
  cli::applyArguments(strip, sets, {});
  return strip;
}

std::vector<cli::ResponsePoint> responseOf(const std::vector<std::string>& sets) {
  cli::StripRunner strip = stripWith(sets);
  return cli::measureResponse(strip, kRateHz, -18.0);
}

const cli::ResponsePoint& nearest(const std::vector<cli::ResponsePoint>& points, double hz) {
  return *std::ranges::min_element(points, {}, [&](const auto& p) { return std::abs(std::log(p.hz / hz)); });
}

TEST_F(Plot, AnEmptyStripIsFlatStraightAndClean) {
  for (const auto& point : responseOf({})) {  // the same samples come out: what is left is rounding of sums
    EXPECT_NEAR(point.gainDb, 0.0, 1e-6) << point.hz;
    EXPECT_NEAR(point.phaseDegrees, 0.0, 1e-6) << point.hz;
  }
  cli::StripRunner strip = stripWith({});
  for (const auto& point : cli::measureDynamics(strip, kRateHz, 1000.0))
    EXPECT_NEAR(point.outputDb, point.inputDb, 1e-5) << "32-bit floats carry the level to 7 digits";
  const auto harmonics = cli::measureHarmonics(strip, kRateHz, 1000.0, -12.0);
  ASSERT_EQ(harmonics.size(), 10U);
  EXPECT_NEAR(harmonics[0].levelDb, -12.0, 1e-5);
  for (const auto& harmonic : std::span(harmonics).subspan(1))
    EXPECT_LT(harmonic.levelDb, -140.0) << "a float's own rounding is at -150 dB";
}

TEST_F(Plot, ABellHasItsGainAtItsFrequency) {
  const auto points = responseOf({"EQ:Type=Lumenband", "EQ:Analog=0", "EQ:HM Freq=2k", "EQ:HM Gain=6"});
  // two bells at one frequency, of 1.25 times the gain, in the Normal shape of 1.125, the second against the
  // first
  EXPECT_NEAR(nearest(points, 2000.0).gainDb, 6.0 * 1.25 * 1.125 * (1.0 - 0.17), 0.01);
  EXPECT_NEAR(nearest(points, 20.0).gainDb, 0.0, 0.1);
  EXPECT_NEAR(points.front().hz, 20.0, 1e-9);
  EXPECT_NEAR(points.back().hz, 20000.0, 1e-6);
}

// What is linear answers a sweep as it answers an impulse: two roads to one curve.
TEST_F(Plot, ASweepTellsWhatAnImpulseTells) {
  const std::vector<std::string> sets{"Flt:Type=Basic Filters", "Flt:HPF Freq=100", "Flt:LPF Freq=8k"};
  cli::StripRunner strip = stripWith(sets);
  std::vector<float> impulse(48000, 0.0F);
  impulse[4800] = 0.25F;  // when all that glides has come to rest
  for (std::size_t k = 0; k < impulse.size(); k += 64)
    strip.processBlock(&impulse[k], nullptr, &impulse[k], 64, false);
  for (const auto& point : responseOf(sets)) {
    if (point.gainDb < -40.0) continue;
    std::complex<double> sum = 0.0;
    for (std::size_t n = 4800; n < impulse.size(); ++n)
      sum += static_cast<double>(impulse[n]) / 0.25 *
             std::polar(1.0, -2.0 * std::numbers::pi * point.hz * static_cast<double>(n - 4800) / kRateHz);
    EXPECT_NEAR(point.gainDb, 20.0 * std::log10(std::abs(sum)), 0.1) << point.hz;
  }
}

TEST_F(Plot, ACompressorsSlopeIsItsRatio) {
  cli::StripRunner strip =
      stripWith({"Comp:Type=VCA Clamper", "Comp:Threshold=-30", "Comp:Ratio=4", "Comp:Makeup Gain=0"});
  const auto points = cli::measureDynamics(strip, kRateHz, 1000.0);
  const auto output = [&](double inputDb) {
    return points[static_cast<std::size_t>(inputDb - cli::kQuietestDb)].outputDb;
  };
  EXPECT_NEAR(output(-50.0) - output(-60.0), 10.0, 0.1) << "below the threshold nothing happens";
  EXPECT_NEAR((output(0.0) - output(-10.0)) / 10.0, 1.0 / 4.0, 0.03);
  const auto burst = [&] {
    cli::StripRunner fresh = stripWith({"Comp:Type=VCA Clamper", "Comp:Threshold=-30", "Comp:Ratio=4"});
    return cli::measureBurst(fresh, kRateHz, 1000.0);
  }();
  const auto gainAt = [&](double ms) {
    return std::ranges::min_element(burst, {}, [&](const auto& p) { return std::abs(p.milliseconds - ms); })
        ->gainDb;
  };
  EXPECT_LT(gainAt(cli::kBurstMs - 10.0), gainAt(-50.0) - 6.0) << "loud is held down";
  EXPECT_GT(gainAt(burst.back().milliseconds), gainAt(cli::kBurstMs - 10.0) + 3.0) << "and comes back";
}

TEST_F(Plot, HarmonicsComeFromTheSaturatorAndGoWithIt) {
  const auto distortion = [](const std::vector<std::string>& sets) {
    cli::StripRunner strip = stripWith(sets);
    return cli::totalDistortion(cli::measureHarmonics(strip, kRateHz, 1000.0, -3.0));
  };
  EXPECT_GT(distortion({"Lim:Type=Saturator", "Lim:Ceiling=-12"}), 0.01);
  EXPECT_LT(distortion({}), 1e-6);
}

TEST_F(Plot, PrintsTheNumbersThatItDraws) {
  const Answer csv =
      run({"plot", "dynamics", "--preset", "Default", "--compare", "3", "--csv", "-o", this->at("d.png")});
  ASSERT_EQ(csv.code, 0) << csv.err;
  EXPECT_TRUE(csv.out.starts_with("curve,input_db,output_db\n\"Default\",-60,"));
  EXPECT_EQ(std::count(csv.out.begin(), csv.out.end(), '\n'), 1 + 2 * 61);
  EXPECT_TRUE(bytes("d.png").starts_with("\x89PNG"));
  const Answer json = run({"plot", "harmonics", "--tone", "8000", "--json"});
  ASSERT_EQ(json.code, 0) << json.err;
  const auto curves = nlohmann::json::parse(json.out).at("curves");
  ASSERT_EQ(curves.size(), 1U);
  EXPECT_EQ(curves[0].at("points").size(), 2U) << "8 and 16 kHz; half the rate has none";
  EXPECT_EQ(curves[0].at("points")[1].at("hz"), 16000.0);
  ASSERT_EQ(run({"plot", "response", "--phase", "-o", this->at("r.svg")}).code, 0);
  ASSERT_EQ(run({"plot", "dynamics", "--burst", "-o", this->at("b.svg"), "--size", "800x800"}).code, 0);
}

TEST_F(Plot, RefusesWhatItCannotDraw) {
  const auto expectRefused = [&](std::vector<std::string> arguments, const std::string& words) {
    arguments.insert(arguments.begin(), "plot");
    const Answer answer = run(arguments);
    EXPECT_EQ(answer.code, 2) << words;
    EXPECT_NE(answer.err.find(words), std::string::npos) << answer.err;
    EXPECT_TRUE(names().empty());
  };
  expectRefused({"response"}, "plot needs one of -o FILE, --json and --csv");
  expectRefused({"response", "-o", this->at("x.jpg")}, "must end in .png or .svg");
  expectRefused({"response", "-o", this->at("x.png"), "--size", "1x1"}, "--size 1x1: must be WIDTHxHEIGHT");
  expectRefused({"response", "--csv", "--compare", "Nobodys"}, "--compare Nobodys: ");
  expectRefused({"dynamics", "--csv", "--level", "-6"}, "see `corvane plot dynamics --help`");
  expectRefused({}, "see `corvane plot --help`");
}

}  // namespace
}  // namespace corvane::rig
