#pragma once

#include "audition/Sound.h"

namespace corvane::audition {

struct SoundFolders;

// Phrases of instruments and voices with loud and soft passages and some rest between, before levelling.

Sound electricBass(const SoundFolders&);
Sound uprightBass(const SoundFolders&);
Sound synthBassPhrase(const SoundFolders&);
Sound electricGuitar(const SoundFolders&);
Sound drivenGuitar(const SoundFolders&);
Sound nylonGuitar(const SoundFolders&);
Sound steelGuitar(const SoundFolders&);
Sound strummedGuitar(const SoundFolders&);
Sound pianoPhrase(const SoundFolders&);
Sound electricPianoPhrase(const SoundFolders&);
Sound organPhrase(const SoundFolders&);
Sound synthPhrase(const SoundFolders&);
Sound padPhrase(const SoundFolders&);
Sound stringSection(const SoundFolders&);
Sound brassSection(const SoundFolders&);
Sound orchestra(const SoundFolders&);
Sound trumpet(const SoundFolders&);
Sound trombone(const SoundFolders&);
Sound altoSaxophone(const SoundFolders&);
Sound tenorSaxophone(const SoundFolders&);
Sound saxophoneInWind(const SoundFolders&);
Sound voice(const SoundFolders&);
Sound lowVoice(const SoundFolders&);
Sound choir(const SoundFolders&);

}  // namespace corvane::audition
