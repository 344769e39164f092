#include "corvane/StartOptions.h"
#include "tests/apps/CommandRig.h"
#include "tests/rig/DirectStrip.h"

namespace corvane::rig {
namespace {

using HostRoad = CommandLineTest;

// Both roads start with the first unit of their preamps: the program in a process of its own, and no other
// test of this one makes a processor directly.
TEST_F(HostRoad, GivesTheBitsOfTheProcessorAlone) {
  constexpr std::size_t kFrames = 20000, kBlock = 100, kTail = 480;
  constexpr int kThreshold = 130, kInsXType = 256;
  const Channel left = noise(kFrames, 1), right = noise(kFrames, 2), key = noise(8000, 3, 0.9F);
  write("in.wav", {48000, {left, right}});
  write("key.wav", {48000, {key}});
  writeBytes("a.csv",
             "0.05,Comp:Threshold,0.1\n0.1,InsX:Type,0.05\n0.2,Comp:Threshold,0.7\n0.3,0,0\n0.35,0,1\n");
  const std::vector<std::string> sets{"Pre:Type=Pre 60s",        "Pre:Drive=4",
                                      "Comp:Side Chain=Ext AUX", "Comp:Type=FET Clamper",
                                      "Comp:Threshold=-33.33",   "Lim:Type=BrickWall",
                                      "InsX:Type=De-esser",      "InsX:Position=B",
                                      "EQ:Type=Lumenband",       "Mstr:Type=Master Control"};
  std::string command = std::string(CORVANE_PROGRAM) + " render -q '" + at("in.wav") + "' -o '" +
                        at("out.wav") + "' --block 100 --tail 0.01 --bypass 0.15:0.19 --key '" +
                        at("key.wav") + "' --automation '" + at("a.csv") + "' --raw Comp:Ratio=0.123456789";
  for (const std::string& set : sets) command += " --set '" + set + "'";
  ASSERT_EQ(shell(command), 0);

  cli::StripRunner asked;
  cli::applyArguments(asked, sets, {"Comp:Ratio=0.123456789"});
  const cli::Setting setting = asked.setting();
  std::vector<Channel> expected;
  for (const Channel& channel : {left, right}) {
    DirectStrip strip(48000.0);
    for (int id = 0; id < kParameters; ++id) strip.set(id, setting.value(id));
    Channel in = channel, keyed = key;
    in.resize(kFrames + kTail), keyed.resize(kFrames + kTail);
    Channel out(in.size());
    for (std::size_t n = 0; n < in.size(); n += kBlock) {
      if (n == 2400) strip.set(kThreshold, 0.1);
      if (n == 4800) strip.set(kInsXType, 0.05);
      if (n == 9600) strip.set(kThreshold, 0.7);
      if (n == 14400) strip.set(0, 0.0);
      if (n == 16800) strip.set(0, 1.0);
      strip.process(&in[n], &keyed[n], &out[n], static_cast<int>(std::min(kBlock, in.size() - n)),
                    n >= 7200 && n < 9120);
    }
    expected.push_back(std::move(out));
  }
  const Sound output = read("out.wav");
  ASSERT_EQ(output.frames(), kFrames + kTail);
  for (std::size_t c = 0; c < 2; ++c) {
    EXPECT_NE(output.channels[c], expected[1 - c]);
    const auto [at, other] = std::ranges::mismatch(output.channels[c], expected[c]);
    EXPECT_TRUE(at == output.channels[c].end())
        << "channel " << c << ", frame " << at - output.channels[c].begin() << ": " << *at << ", must be "
        << *other;
  }
}

}  // namespace
}  // namespace corvane::rig
