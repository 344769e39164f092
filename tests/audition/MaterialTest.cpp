#include <gtest/gtest.h>

#include <cmath>

#include "audition/Instruments.h"
#include "audition/Material.h"

namespace corvane::audition {
namespace {

TEST(Material, FollowsWhatTheMicrophonePointsAt) {
  EXPECT_EQ(materialFor("Drums", "Snare@ak414"), "snare");
  EXPECT_EQ(materialFor("Drums", "No Snr on Kick"), "kick and snare");
  EXPECT_EQ(materialFor("Drums", "Less HH on Snr"), "snare and hats");
  EXPECT_EQ(materialFor("Drums", "OH More Snr"), "overheads");
  EXPECT_EQ(materialFor("Drums", "Room Mics G.Snr"), "room");
  EXPECT_EQ(materialFor("Drums", "Toms Bus"), "toms");
  EXPECT_EQ(materialFor("Drums", "Rock Buss"), "full kit");
  EXPECT_EQ(materialFor("Vocals", "Female Warm"), "voice");
  EXPECT_EQ(materialFor("Vocals", "Male Bckgrnd"), "choir");
  EXPECT_EQ(materialFor("Vocals", "Male Rock"), "low voice");
  EXPECT_EQ(materialFor("", "Bass Init"), "electric bass");
}

// Only what needs no recorded kit: that package is the audition's alone.
TEST(Material, StandsAtItsLevelWithRoomAboveThePeaks) {
  MaterialShelf shelf{SoundFolders{}};
  for (const char* name : {"synth bass", "electric guitar", "voice", "808 kick"}) {
    const Sound& sound = shelf.get(name);
    EXPECT_EQ(sound.size(), frames(kMaterialSeconds)) << name;
    const double lufs = loudness(sound), peakDb = truePeakDb(sound);
    EXPECT_LT(peakDb, kHeadroomDb + 0.01) << name;
    EXPECT_LT(lufs, kLevelLufs + 0.01) << name;
    EXPECT_TRUE(std::abs(lufs - kLevelLufs) < 0.01 || std::abs(peakDb - kHeadroomDb) < 0.01) << name;
    EXPECT_GT(lufs, -26.0) << name << ": sounds most of the time";
  }
}

TEST(Material, PluckedStringSoundsAtThePitchAsked) {
  for (const double hz : {41.2, 196.0, 440.0}) {
    const Sound note = plucked(hz < 60.0 ? Pluck::bass : Pluck::steel, {hz, 1.0, 0.8}, 1);
    double best = 0.0, bestHz = 0.0;
    for (double at = 0.94 * hz; at < 1.06 * hz; at *= 1.001) {
      double re = 0.0, im = 0.0;
      for (std::size_t n = 0; n < note.size(); ++n) {
        const double angle = 6.283185307179586 * at * static_cast<double>(n) / kRateHz;
        re += note[n] * std::cos(angle), im += note[n] * std::sin(angle);
      }
      if (re * re + im * im > best) best = re * re + im * im, bestHz = at;
    }
    EXPECT_NEAR(bestHz / hz, 1.0, 0.006) << hz << " Hz, ten cents";
  }
}

}  // namespace
}  // namespace corvane::audition
