#pragma once

#include <cstdint>

#include "audition/Sound.h"

namespace corvane::audition {

// Notes of instruments that no package of the distribution records dry: enough of attack, decay, noise and
// dynamics that a setting meets what it will meet. `force` 0..1 is how hard a note is played; it moves level
// and brightness.

struct Note {
  double hz, seconds, force;
};

enum class Pluck { bass, steel, nylon, electric };
/// A string that is plucked: a delay line with losses, excited by noise of the plectrum.
Sound plucked(Pluck kind, Note note, std::uint32_t seed);

Sound synthBass(Note note);
Sound drumMachineKick(double force);
Sound piano(Note note, std::uint32_t seed);
/// A struck tine: one tone modulates the phase of another, the more the harder the key.
Sound electricPiano(Note note);
Sound organ(Note note);
/// Two saws a few cents apart behind a low-pass that closes.
Sound synthLead(Note note);
Sound synthPad(Note note);
/// Six desks of a section, each with its own vibrato and bow.
Sound strings(Note note, std::uint32_t seed);
Sound brass(Note note, std::uint32_t seed);
Sound saxophone(Note note, std::uint32_t seed);
Sound triangle(Note note);
Sound shaker(double seconds, std::uint32_t seed);

/// An amplifier that is driven, and the loudspeaker behind it.
Sound overdriven(const Sound& sound, double driveDb);

}  // namespace corvane::audition
