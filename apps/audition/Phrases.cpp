#include "audition/Phrases.h"

#include <array>
#include <cmath>
#include <functional>
#include <span>
#include <vector>

#include "audition/Instruments.h"
#include "audition/Material.h"

namespace corvane::audition {

namespace {

/// A note of a phrase; `key` counts semitones from A4.
struct Event {
  double seconds;
  int key;
  double length, force;
};

double hzOf(int key) { return 440.0 * std::exp2(key / 12.0); }

using Player = std::function<Sound(Note, std::uint32_t seed)>;

Sound played(std::span<const Event> events, const Player& player) {
  Sound out(frames(kMaterialSeconds), 0.0);
  std::uint32_t seed = 1;
  for (const Event& event : events)
    mix(out, player({hzOf(event.key), event.length, event.force}, seed += 7), event.seconds);
  return out;
}

Player pluckedPlayer(Pluck kind) {
  return [kind](Note note, std::uint32_t seed) { return plucked(kind, note, seed); };
}

Event shifted(Event event, int keys) { return {event.seconds, event.key + keys, event.length, event.force}; }

template <std::size_t kCount>
std::array<Event, kCount> shifted(std::array<Event, kCount> events, int keys) {
  for (Event& event : events) event = shifted(event, keys);
  return events;
}

// E1 is 41 semitones below A4.
constexpr auto kBassLine = std::to_array<Event>({
    {0.0, -41, 0.55, 0.9},
    {0.625, -41, 0.28, 0.5},
    {0.94, -38, 0.28, 0.7},
    {1.25, -36, 0.55, 0.8},
    {1.875, -34, 0.3, 0.6},
    {2.19, -36, 0.3, 1.0},
    {2.5, -41, 0.9, 0.9},
    {3.44, -29, 0.2, 0.6},
    {3.75, -31, 0.5, 0.8},
    {4.375, -36, 0.5, 0.45},
});
constexpr auto kMelody = std::to_array<Event>({
    {0.0, -9, 0.55, 0.8},
    {0.6, -5, 0.5, 0.6},
    {1.15, -2, 0.9, 1.0},
    {2.2, 0, 0.3, 0.7},
    {2.5, -2, 0.3, 0.5},
    {2.85, -5, 0.75, 0.75},
    {3.8, -7, 0.35, 0.5},
    {4.15, -9, 0.8, 0.9},
});

/// A strum over the strings of a chord, from `seconds`.
void strum(std::vector<Event>& into, double seconds, std::span<const int> keys, double length, double force) {
  double at = seconds;
  for (const int key : keys) {
    into.push_back({at, key, length, force});
    at += 0.012;
  }
}
constexpr std::array kChordE{-29, -22, -17, -13, -10, -5}, kChordA{-24, -17, -12, -8, -5, 0},
    kChordG{-26, -22, -19, -14, -10, -2};

std::vector<Event> strums() {
  std::vector<Event> events;
  strum(events, 0.0, kChordE, 1.1, 0.9), strum(events, 0.625, kChordE, 0.5, 0.4);
  strum(events, 0.94, kChordE, 0.5, 0.6), strum(events, 1.25, kChordA, 1.1, 0.9);
  strum(events, 2.19, kChordA, 0.4, 0.45), strum(events, 2.5, kChordG, 1.1, 1.0);
  strum(events, 3.125, kChordG, 0.5, 0.5), strum(events, 3.75, kChordE, 1.1, 0.8);
  return events;
}

std::vector<Event> arpeggio() {
  std::vector<Event> events;
  const std::array<std::span<const int>, 3> chords{kChordE, kChordA, kChordG};
  for (int n = 0; n < 15; ++n) {
    const std::span<const int> chord = chords[static_cast<std::size_t>(n / 5)];
    static constexpr std::size_t kOrder[] = {0, 3, 4, 5, 2};
    events.push_back({n * 0.3125, chord[kOrder[static_cast<std::size_t>(n % 5)]], 1.2,
                      n % 5 == 0 ? 0.95 : 0.45 + 0.1 * (n % 3)});
  }
  return events;
}

constexpr auto kPianoChords = std::to_array<Event>({
    {0.0, -33, 1.2, 0.8}, {0.0, -9, 1.2, 0.7},   {0.0, -5, 1.2, 0.65},  {0.0, -2, 1.2, 0.7},
    {0.94, 3, 0.5, 0.5},  {1.25, -36, 1.2, 0.7}, {1.25, -12, 1.2, 0.5}, {1.25, -4, 1.2, 0.5},
    {1.25, 0, 1.2, 0.6},  {1.9, 7, 0.5, 0.9},    {2.2, 5, 0.5, 0.4},    {2.5, -31, 1.2, 1.0},
    {2.5, -7, 1.2, 0.9},  {2.5, -3, 1.2, 0.85},  {2.5, 2, 1.2, 0.95},   {3.75, -33, 1.2, 0.35},
    {3.75, -9, 1.2, 0.3}, {3.75, -5, 1.2, 0.3},  {3.75, 3, 1.2, 0.4},
});
constexpr auto kLongChords = std::to_array<Event>({
    {0.0, -21, 2.3, 0.6},
    {0.0, -14, 2.3, 0.55},
    {0.0, -9, 2.3, 0.6},
    {0.0, -5, 2.3, 0.5},
    {2.4, -24, 1.3, 1.0},
    {2.4, -12, 1.3, 0.9},
    {2.4, -8, 1.3, 0.9},
    {2.4, 0, 1.3, 1.0},
    {3.8, -26, 1.15, 0.4},
    {3.8, -14, 1.15, 0.35},
    {3.8, -10, 1.15, 0.35},
    {3.8, -2, 1.15, 0.4},
});

/// What a quiet room and a preamp leave under every recording.
void addRoomTone(Sound& sound, double db) {
  mix(sound, lowPassed(noise(kMaterialSeconds, 99), 6000.0), 0.0, fromDb(db));
}

Sound spoken(const SoundFolders& where, double speed) {
  Sound out(frames(kMaterialSeconds), 0.0);
  struct Word {
    const char* file;
    double seconds, db;
  };
  // Loud and soft words, and a breath before each.
  static constexpr Word kWords[] = {{"Front_Center.wav", 0.1, 0.0},
                                    {"Side_Left.wav", 1.45, -7.0},
                                    {"Rear_Right.wav", 2.7, 1.5},
                                    {"Front_Left.wav", 3.9, -3.0}};
  for (const Word& word : kWords) {
    const double at = word.seconds / (speed < 1.0 ? 1.0 : speed);
    mix(out, resampled(readSound(where.voices / word.file), speed), at, fromDb(word.db));
    Sound breath = highPassed(shaker(0.22, 31), 1000.0);
    mix(out, breath, std::max(at - 0.1, 0.0), 0.012);
  }
  addRoomTone(out, -66.0);
  return out;
}

}  // namespace

Sound electricBass(const SoundFolders&) { return played(kBassLine, pluckedPlayer(Pluck::bass)); }

Sound uprightBass(const SoundFolders&) {
  std::vector<Event> walk;
  walk.reserve(8);
  static constexpr int kKeys[] = {-36, -32, -29, -27, -26, -29, -31, -34};
  for (int n = 0; n < 8; ++n) walk.push_back({n * 0.625, kKeys[n], 0.6, n % 2 == 0 ? 0.85 : 0.6});
  Sound out = played(walk, pluckedPlayer(Pluck::bass));
  mix(out, highPassed(lowPassed(out, 300.0), 80.0), 0.0, 0.6);  // a body of wood
  return out;
}

Sound synthBassPhrase(const SoundFolders&) {
  return played(kBassLine, [](Note note, std::uint32_t) { return synthBass(note); });
}

Sound electricGuitar(const SoundFolders&) {
  std::vector<Event> events;
  static constexpr std::array kTop{-13, -10, -5, -2};
  for (int beat = 0; beat < 8; ++beat) {  // short chords off the beat, single notes between
    strum(events, beat * 0.625 + 0.3125, kTop, 0.16, beat % 3 == 2 ? 1.0 : 0.65);
    if (beat % 2 == 0)
      events.push_back({beat * 0.625, kMelody[static_cast<std::size_t>(beat)].key, 0.45, 0.8});
  }
  Sound out = played(events, pluckedPlayer(Pluck::electric));
  addRoomTone(out, -62.0);
  return out;
}

Sound drivenGuitar(const SoundFolders&) {
  std::vector<Event> events;
  static constexpr std::array kFifthE{-29, -22, -17}, kFifthG{-26, -19, -14}, kFifthA{-24, -17, -12};
  strum(events, 0.0, kFifthE, 1.1, 1.0), strum(events, 1.25, kFifthE, 0.25, 0.7);
  strum(events, 1.56, kFifthG, 0.8, 0.9), strum(events, 2.5, kFifthA, 1.1, 1.0);
  strum(events, 3.75, kFifthG, 0.3, 0.6), strum(events, 4.06, kFifthE, 0.8, 0.9);
  return overdriven(played(events, pluckedPlayer(Pluck::electric)), 22.0);
}

Sound nylonGuitar(const SoundFolders&) { return played(arpeggio(), pluckedPlayer(Pluck::nylon)); }
Sound steelGuitar(const SoundFolders&) { return played(arpeggio(), pluckedPlayer(Pluck::steel)); }
Sound strummedGuitar(const SoundFolders&) { return played(strums(), pluckedPlayer(Pluck::steel)); }

Sound pianoPhrase(const SoundFolders&) { return played(kPianoChords, piano); }

Sound electricPianoPhrase(const SoundFolders&) {
  return played(kPianoChords, [](Note note, std::uint32_t) { return electricPiano(note); });
}

Sound organPhrase(const SoundFolders&) {
  return played(kLongChords, [](Note note, std::uint32_t) { return organ(note); });
}

Sound synthPhrase(const SoundFolders&) {
  return played(shifted(kMelody, -12), [](Note note, std::uint32_t) { return synthLead(note); });
}

Sound padPhrase(const SoundFolders&) {
  return played(kLongChords, [](Note note, std::uint32_t) { return synthPad(note); });
}

Sound stringSection(const SoundFolders&) { return played(kLongChords, strings); }
Sound brassSection(const SoundFolders&) { return played(kLongChords, brass); }

Sound orchestra(const SoundFolders& where) {
  Sound out = stringSection(where);
  mix(out, brassSection(where), 0.0, 0.5);
  mix(out, roomOf(out, 1.4), 0.0, 0.15);
  return out;
}

Sound trumpet(const SoundFolders&) { return played(kMelody, brass); }
Sound trombone(const SoundFolders&) { return played(shifted(kMelody, -17), brass); }
Sound altoSaxophone(const SoundFolders&) { return played(shifted(kMelody, -2), saxophone); }
Sound tenorSaxophone(const SoundFolders&) { return played(shifted(kMelody, -12), saxophone); }

Sound saxophoneInWind(const SoundFolders& where) {
  Sound out = altoSaxophone(where);
  Sound gusts = lowPassed(lowPassed(noise(kMaterialSeconds, 55), 90.0), 90.0);
  for (std::size_t n = 0; n < gusts.size(); ++n)
    gusts[n] *= 0.6 + 0.4 * std::sin(2.7 * static_cast<double>(n) / kRateHz);
  mix(out, gusts, 0.0, 3.0);
  return out;
}

Sound voice(const SoundFolders& where) { return spoken(where, 1.0); }
Sound lowVoice(const SoundFolders& where) { return spoken(where, 0.84); }

Sound choir(const SoundFolders& where) {
  Sound out(frames(kMaterialSeconds), 0.0);
  for (auto [speed, seconds] : {std::pair{1.0, 0.0}, {1.01, 0.02}, {0.99, 0.035}, {0.85, 0.01}, {0.9, 0.03}})
    mix(out, spoken(where, speed), seconds, 0.4);
  mix(out, roomOf(out, 0.8), 0.0, 0.1);
  return out;
}

}  // namespace corvane::audition
