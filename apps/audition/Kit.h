#pragma once

#include "audition/Sound.h"

namespace corvane::audition {

struct SoundFolders;

// Two bars of recorded drums at 96 beats a minute, with soft and hard strokes. What a single microphone would
// hear, before levelling.

Sound kick(const SoundFolders&);
Sound kick808(const SoundFolders&);
Sound kickWithSnare(const SoundFolders&);
Sound snare(const SoundFolders&);
Sound snareWithHats(const SoundFolders&);
Sound hats(const SoundFolders&);
Sound toms(const SoundFolders&);
Sound overheads(const SoundFolders&);
Sound roomMicrophone(const SoundFolders&);
Sound ride(const SoundFolders&);
Sound fullKit(const SoundFolders&);
Sound electricLoop(const SoundFolders&);
Sound bongos(const SoundFolders&);
Sound congas(const SoundFolders&);
Sound tabla(const SoundFolders&);
Sound shakerGroove(const SoundFolders&);
Sound tambourine(const SoundFolders&);
Sound triangleGroove(const SoundFolders&);
Sound claps(const SoundFolders&);

}  // namespace corvane::audition
