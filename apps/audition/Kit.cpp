#include "audition/Kit.h"

#include <cmath>
#include <string_view>

#include "audition/Instruments.h"
#include "audition/Material.h"

namespace corvane::audition {

namespace {

constexpr double kStepSeconds = 60.0 / 96.0 / 4.0;  // a sixteenth; 32 of them fill a material

/// A drum in three forces.
struct Drum {
  Sound hard, medium, soft;
};

/// Strokes of one drum on sixteenths: X hard, x medium, o soft, anything else a rest.
void play(Sound& into, const Drum& drum, std::string_view strokes, double gain = 1.0) {
  for (std::size_t step = 0; step < strokes.size(); ++step) {
    const double seconds = static_cast<double>(step) * kStepSeconds;
    if (strokes[step] == 'X') mix(into, drum.hard, seconds, gain);
    if (strokes[step] == 'x') mix(into, drum.medium, seconds, gain);
    if (strokes[step] == 'o') mix(into, drum.soft, seconds, gain);
  }
}

Sound empty() { return Sound(frames(kMaterialSeconds), 0.0); }

Drum readForces(const std::filesystem::path& folder, const std::string& name) {
  return {readSound(folder / (name + "-Hard.wav")), readSound(folder / (name + "-Med.wav")),
          readSound(folder / (name + "-Soft.wav"))};
}
Drum pearl(const SoundFolders& where, const std::string& name) {
  return readForces(where.kits / "The Black Pearl 1.0", name);
}
Drum hand(const SoundFolders& where, const std::string& name) {
  return readForces(where.kits / "Gimme A Hand 1.0", name);
}

/// One recording at three levels.
Drum ofOne(const Sound& hard) {
  Drum drum{hard, hard, hard};
  scale(drum.medium, 0.6), scale(drum.soft, 0.35);
  return drum;
}
Drum electric(const SoundFolders& where, const char* file) {
  return ofOne(readSound(where.kits / "ElectricEmpireKit" / file));
}
Drum djembe(const SoundFolders& where, const char* file, double speed) {
  return ofOne(resampled(readSound(where.kits / "circAfrique v4" / file), speed));
}

constexpr std::string_view kKickStrokes = "X.....x.X..o....X.....x.X.....o.";
constexpr std::string_view kSnareStrokes = "....X..o.o..X..o....X..o....X.ox";
constexpr std::string_view kHatStrokes = "X.o.x.o.X.o.x.ooX.o.x.o.X.o.x.o.";

/// How loud a microphone hears the three drums that always play.
struct Shares {
  double kick, snare, hats;
};

Sound kitHeard(const SoundFolders& where, const Shares& shares) {
  Sound out = empty();
  play(out, pearl(where, "PearlKick"), kKickStrokes, shares.kick);
  play(out, pearl(where, "PearlSnare"), kSnareStrokes, shares.snare);
  play(out, pearl(where, "SabianHatClosed"), kHatStrokes, shares.hats);
  play(out, pearl(where, "SabianHatOpen"), "..............x...............X.", shares.hats);
  return out;
}

}  // namespace

// A microphone in a kit hears the kit.
Sound kick(const SoundFolders& where) { return kitHeard(where, {.kick = 1.0, .snare = 0.02, .hats = 0.01}); }
Sound kickWithSnare(const SoundFolders& where) {
  return kitHeard(where, {.kick = 1.0, .snare = 0.15, .hats = 0.03});
}
Sound snare(const SoundFolders& where) { return kitHeard(where, {.kick = 0.03, .snare = 1.0, .hats = 0.04}); }
Sound snareWithHats(const SoundFolders& where) {
  return kitHeard(where, {.kick = 0.03, .snare = 1.0, .hats = 0.3});
}
Sound hats(const SoundFolders& where) { return kitHeard(where, {.kick = 0.0, .snare = 0.05, .hats = 1.0}); }

Sound kick808(const SoundFolders&) {
  Sound out = empty();
  play(out, {drumMachineKick(1.0), drumMachineKick(0.7), drumMachineKick(0.45)}, kKickStrokes);
  return out;
}

Sound toms(const SoundFolders& where) {
  Sound out = kitHeard(where, {.kick = 0.0, .snare = 0.02, .hats = 0.0});
  play(out, pearl(where, "PearlTom1"), "X.x.o.........x.X.xo..........x.");
  play(out, pearl(where, "PearlTom2"), "......X.x...........X.x.........");
  play(out, pearl(where, "PearlTomFloor"), "..........X.x...........X.x.X...");
  return out;
}

Sound overheads(const SoundFolders& where) {
  Sound out = kitHeard(where, {.kick = 0.25, .snare = 0.5, .hats = 0.5});
  play(out, pearl(where, "SabianCrash"), "X...............................", 0.8);
  play(out, pearl(where, "PaisteRide"), "....x.x.x.o.x.x.x.o.x.x.x.o.x.x.", 0.7);
  mix(out, roomOf(out, 0.4), 0.0, 0.08);
  return out;
}

Sound roomMicrophone(const SoundFolders& where) {
  const Sound direct = fullKit(where);
  Sound out = roomOf(direct, 0.9);
  mix(out, direct, 0.0, 0.3);
  return out;
}

Sound ride(const SoundFolders& where) {
  Sound out = empty();
  play(out, pearl(where, "PaisteRide"), "X...x.x.X...x.x.X...x.x.X...x.x.");
  play(out, pearl(where, "PaisteBell"), "............x...............x...");
  play(out, pearl(where, "SabianCrash"), "................X...............");
  return out;
}

Sound fullKit(const SoundFolders& where) {
  Sound out = kitHeard(where, {.kick = 1.0, .snare = 0.9, .hats = 0.45});
  play(out, pearl(where, "SabianCrash"), "X...............................", 0.35);
  play(out, pearl(where, "PearlTomFloor"), ".............................x.X", 0.7);
  mix(out, roomOf(out, 0.4), 0.0, 0.05);
  return out;
}

Sound electricLoop(const SoundFolders& where) {
  Sound out = empty();
  play(out, electric(where, "EE_Kick_Hard_1.flac"), "X..x....X.x.....X..x....X.x...x.");
  play(out, electric(where, "EE_Snare_1.flac"), "....X.......X......xX.......X...", 0.9);
  play(out, electric(where, "EE_Hat_Cl_Bs.flac"), "x.xox.xox.xox.xox.xox.xox.xox.xx", 0.5);
  play(out, electric(where, "EE_Conga_1.flac"), "......o..o....x.......o..o....x.", 0.5);
  return out;
}

Sound bongos(const SoundFolders& where) {
  Sound out = empty();
  play(out, hand(where, "BongoHi"), "X.oxo.xoX.oxo.xoX.oxo.xoX.oxoxXo");
  play(out, hand(where, "BongoLo"), "....X.......X.......X.......X...");
  return out;
}

Sound congas(const SoundFolders& where) {
  Sound out = empty();
  play(out, djembe(where, "Djembe1 Tone.wav", 0.85), "x..x....x..x..XXx..x....x..x..XX");
  play(out, djembe(where, "Djembe1 Slap.wav", 0.85), "......X...............X.........");
  play(out, djembe(where, "Djembe2 Bass.wav", 0.85), "X...........x...X...........x...");
  return out;
}

Sound tabla(const SoundFolders& where) {
  Sound out = empty();
  play(out, djembe(where, "Djembe3 Tone.wav", 1.3), "X.xoX.xo..xoX.xxX.xoX.xo..xoX.Xx");
  play(out, djembe(where, "Djembe3 Bass.wav", 1.2), "X.......X.......X.....x.X.......");
  return out;
}

Sound shakerGroove(const SoundFolders&) {
  Sound out = empty();
  play(out, {shaker(0.12, 5), ofOne(shaker(0.10, 6)).medium, ofOne(shaker(0.08, 7)).soft},
       "XoxoxoxoXoxoxoxoxoxoxoxo"
       "Xoxoxoxo");
  return out;
}

Sound tambourine(const SoundFolders& where) {
  Sound out = empty();
  play(out, hand(where, "Tambourine"), "o.x.X.x.o.x.X.xoo.x.X.x.o.x.X.xx");
  return out;
}

Sound triangleGroove(const SoundFolders&) {
  Sound out = empty();
  const Sound open = triangle({1760.0, 0.9, 1.0});
  play(out, ofOne(open), "X...o.x.X...o.x.X...o.x.X..oo.x.");
  return out;
}

Sound claps(const SoundFolders& where) {
  Sound out = empty();
  play(out, hand(where, "HandClap"), "....X.......X..o....X.......X.xo");
  return out;
}

}  // namespace corvane::audition
