#include <cmath>
#include <nlohmann/json.hpp>

#include "core/ParameterBank.h"
#include "tests/apps/CommandRig.h"

namespace corvane::rig {
namespace {

constexpr std::size_t kFadeFrames = 184;  // of the strip's crossfade, at any rate

class Render : public CommandLineTest {
 protected:
  /// What comes out of `in.wav`.
  Sound rendered(const std::vector<std::string>& more) {
    const Answer answer = render("in.wav", "out.wav", more);
    EXPECT_EQ(answer.code, 0) << answer.err;
    return read("out.wav");
  }
};

TEST_F(Render, IsTheSameWhateverTheBlock) {
  write("in.wav", {48000, {noise(20000)}});
  const auto busy = [](const char* block) {  // limiters work per sub-block: whole sub-blocks must agree
    return emptyStripWith({"--set", "Lim:Type=VCA Lim", "--set", "Lim:Ceiling=-20", "--block", block});
  };
  const Sound sub = rendered(busy("64"));
  for (const char* block : {"512", "8192", "65536"}) EXPECT_EQ(rendered(busy(block)).channels, sub.channels);
  const auto fader = [](const char* block) {
    return emptyStripWith({"--set", "Mstr:Type=Master Control", "--set", "Mstr:Gain=-6", "--block", block});
  };
  const Sound one = rendered(fader("1"));
  for (const char* block : {"7", "64", "200", "8192"})
    EXPECT_EQ(rendered(fader(block)).channels, one.channels);
  EXPECT_NE(one.channels[0], read("in.wav").channels[0]) << "the fader did something";
}

TEST_F(Render, BypassFadesOutAndThenIsTheInputBitForBit) {
  write("in.wav", {48000, {noise(9600)}});
  const Channel input = read("in.wav").channels[0];
  const Channel output = rendered(emptyStripWith({"--set", "Mstr:Type=Master Control", "--set",
                                                  "Mstr:Gain=-20", "--block", "100", "--bypass", "0.05:0.1"}))
                             .channels[0];
  constexpr std::size_t kFrom = 2400, kTo = 4800;
  const auto equalFrom = [&](std::size_t from, std::size_t to) {
    return std::equal(input.begin() + static_cast<std::ptrdiff_t>(from),
                      input.begin() + static_cast<std::ptrdiff_t>(to),
                      output.begin() + static_cast<std::ptrdiff_t>(from));
  };
  EXPECT_TRUE(equalFrom(kFrom + kFadeFrames, kTo)) << "idle";
  EXPECT_FALSE(equalFrom(kFrom + kFadeFrames - 20, kFrom + kFadeFrames - 1)) << "the fade lasts till there";
  for (std::size_t i = kTo + kFadeFrames; i < input.size(); ++i)
    EXPECT_NEAR(output[i], 0.1F * input[i], 1e-3F) << "back at -20 dB, frame " << i;
  for (const float processOff : {0.0F})
    EXPECT_EQ(rendered({"--raw", "0=" + std::to_string(processOff), "--block", "64"}).channels[0].back(),
              input.back());
}

TEST_F(Render, GivesEachChannelAStripOfItsOwn) {
  const std::vector<std::string> limited =
      emptyStripWith({"--set", "Lim:Type=VCA Lim", "--set", "Lim:Ceiling=-20"});
  const Channel left = noise(5000, 1), right = noise(5000, 2, 0.05F);
  std::vector<Channel> alone;
  for (const Channel& channel : {left, right}) {
    write("in.wav", {44100, {channel}});
    alone.push_back(rendered(limited).channels[0]);
  }
  write("in.wav", {44100, {left, right}});
  const Sound both = rendered(limited);
  EXPECT_EQ(both.rateHz, 44100);
  EXPECT_EQ(both.channels, alone) << "the loud side does not turn the other down";
}

TEST_F(Render, KeysOnTheKeyFileAndOnSilenceBehindItsEnd) {
  write("in.wav", {48000, {noise(24000, 1, 0.3F), noise(24000, 2, 0.3F)}});
  write("key.wav", {48000, {noise(12000, 3, 0.9F)}});
  const auto limited =
      emptyStripWith({"--set", "Lim:Type=VCA Lim", "--set", "Lim:Ceiling=-30", "--set", "Lim:Release=10",
                      "--set", "Lim:Side Chain=Ext AUX", "--key", at("key.wav")});
  const Sound output = rendered(limited), input = read("in.wav");
  const auto energy = [](const Channel& x, std::size_t from, std::size_t to) {
    double sum = 0.0;
    for (std::size_t i = from; i < to; ++i) sum += static_cast<double>(x[i]) * static_cast<double>(x[i]);
    return sum;
  };
  for (std::size_t c = 0; c < 2; ++c) {
    EXPECT_LT(energy(output.channels[c], 6000, 12000), 0.1 * energy(input.channels[c], 6000, 12000));
    // 10 dB of release time after the key's end nothing is left of the reduction
    EXPECT_NEAR(energy(output.channels[c], 20000, 24000) / energy(input.channels[c], 20000, 24000), 1.0,
                0.05);
  }
}

TEST_F(Render, TellsOfARateThatTheStripDoesNotRunAt) {
  write("in.wav", {22050, {noise(2205)}});
  const Answer answer = render("in.wav", "out.wav");
  EXPECT_EQ(answer.code, 0);
  EXPECT_EQ(answer.err, "note: " + at("in.wav") +
                            ": 22050 Hz is outside 44100 to 384000 Hz; the strip works as if at 44100 Hz\n");
  EXPECT_EQ(read("out.wav").rateHz, 22050);
  write("in.wav", {384000, {noise(3840)}});
  EXPECT_EQ(render("in.wav", "out.wav").err, "");
}

TEST_F(Render, AppendsTheTail) {
  write("in.wav", {48000, {noise(1000)}});
  EXPECT_EQ(rendered({"--tail", "0.01"}).frames(), 1480U);
}

TEST_F(Render, WritesEveryMeterAndALogOfEachBlock) {
  write("in.wav", {48000, {noise(1000), noise(1000, 2)}});
  ASSERT_EQ(
      render("in.wav", "out.wav", {"--meters", at("m.json"), "--meter-log", at("l.csv"), "--block", "100"})
          .code,
      0);
  const auto file = nlohmann::json::parse(bytes("m.json")).at("files").at(0);
  ASSERT_EQ(file.at("channels").size(), 2U);
  for (const auto& meters : file.at("channels")) {
    EXPECT_EQ(meters.size(), 62U) << "361 to 423 without the one that reads nothing";
    EXPECT_GT(meters.at("Pre:InMeter").get<double>(), 0.0);
    EXPECT_EQ(meters.at("InsX:Mtr0").get<double>(), 0.0);
  }
  const std::string log = bytes("l.csv");
  EXPECT_EQ(std::count(log.begin(), log.end(), '\n'), 1 + 10 * 2);
}

TEST_F(Render, DrawsAPictureAlsoOfNothing) {
  for (const std::size_t frames : {std::size_t{0}, std::size_t{1}, std::size_t{50000}}) {
    write("in.wav", {48000, {noise(frames)}});
    ASSERT_EQ(render("in.wav", "out.wav", {"--picture", at("p.png")}).code, 0);
    EXPECT_TRUE(bytes("p.png").starts_with("\x89PNG"));
    ASSERT_EQ(render("in.wav", "out.wav", {"--picture", at("p.svg")}).code, 0);
    EXPECT_NE(bytes("p.svg").find("</svg>"), std::string::npos);
  }
}

// Pixels across and down, as the head of a PNG tells them.
std::pair<int, int> pixelsOf(const std::string& png) {
  const auto word = [&](std::size_t at) {
    int value = 0;
    for (std::size_t k = 0; k < 4; ++k) value = value << 8 | static_cast<unsigned char>(png.at(at + k));
    return value;
  };
  return {word(16), word(20)};
}

TEST_F(Render, DrawsThePictureInTheSizeAskedForUnderThePresetsName) {
  write("in.wav", {48000, {noise(5000)}});
  const auto picture = [&](std::vector<std::string> more) {
    more.insert(more.end(), {"--preset", "HiFi Vocal", "--picture", at("p.png")});
    EXPECT_EQ(render("in.wav", "out.wav", more).code, 0);
    return bytes("p.png");
  };
  EXPECT_EQ(pixelsOf(picture({})), std::pair(1920, 1200));
  const std::string small = picture({"--picture-size", "960x600"});
  EXPECT_EQ(pixelsOf(small), std::pair(960, 600));
  EXPECT_EQ(pixelsOf(picture({"--picture-size", "800x1200"})), std::pair(800, 1200));
  EXPECT_EQ(picture({"--picture-size", "960x600", "--picture-title", "HiFi Vocal"}), small);
  EXPECT_NE(picture({"--picture-size", "960x600", "--picture-title", "A voice"}), small);
}

TEST_F(Render, DoesNotDependOnTheNumberOfJobs) {
  // Strips differ by the order in which a process makes them, so each run is a process of its own.
  std::string inputs;
  for (int k = 0; k < 6; ++k) {
    const std::string name = "in" + std::to_string(k) + ".wav";
    // long ones first: later files would overtake them
    write(name, {48000, std::vector<Channel>(1 + static_cast<std::size_t>(k % 2),
                                             noise(k == 0 ? 40000 : 2000, static_cast<std::uint32_t>(k)))});
    inputs += " '" + at(name) + "'";
  }
  for (const char* jobs : {"1", "4"})
    ASSERT_EQ(shell(std::string(CORVANE_PROGRAM) + " render -q" + inputs + " --out-dir '" + at(jobs) +
                    "' --jobs " + jobs),
              0);
  for (int k = 0; k < 6; ++k) {
    const std::string name = "/in" + std::to_string(k) + ".wav";
    EXPECT_EQ(bytes("1" + name), bytes("4" + name)) << name;
  }
}

}  // namespace
}  // namespace corvane::rig
