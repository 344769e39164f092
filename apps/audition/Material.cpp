#include "audition/Material.h"

#include <array>
#include <vector>

#include "audition/Kit.h"
#include "audition/Phrases.h"
#include "corvane/Failure.h"
#include "corvane/Words.h"

namespace corvane::audition {

namespace {

struct Rule {
  const char* category;  ///< "" for all
  const char* word;      ///< in the preset's name, lower case
  const char* material;
};

// The first that fits counts: what a microphone is pointed at comes before what it should not hear.
constexpr Rule kRules[] = {
    {"Drums", "less hh on snr", "snare and hats"},
    {"Drums", "hh supprs", "snare and hats"},
    {"Drums", "no snr on kick", "kick and snare"},
    {"Drums", "room", "room"},
    {"Drums", "crush mic", "room"},
    {"Drums", "oh ", "overheads"},
    {"Drums", "ohs", "overheads"},
    {"Drums", " oh", "overheads"},
    {"Drums", "overhead", "overheads"},
    {"Drums", "cymbal", "ride"},
    {"Drums", "808", "808 kick"},
    {"Drums", "sub", "kick"},
    {"Drums", "kick", "kick"},
    {"Drums", "kck", "kick"},
    {"Drums", "snare", "snare"},
    {"Drums", "snr", "snare"},
    {"Drums", "sn blues", "snare"},
    {"Drums", "hihat", "hats"},
    {"Drums", "hi-hat", "hats"},
    {"Drums", "hh ", "hats"},
    {"Drums", "tom", "toms"},
    {"Drums", "bongo", "bongos"},
    {"Drums", "conga", "congas"},
    {"Drums", "tbl", "tabla"},
    {"Drums", "cabassa", "shaker"},
    {"Drums", "pandeiro", "tambourine"},
    {"Drums", "tamb", "tambourine"},
    {"Drums", "triangle", "triangle"},
    {"Drums", "clap", "claps"},
    {"Drums", "loop", "electric loop"},
    {"Drums", "hip hop", "electric loop"},
    {"Drums", "breaks", "electric loop"},
    {"Drums", "", "full kit"},
    {"Bass", "synth", "synth bass"},
    {"Bass", "sub", "synth bass"},
    {"Bass", "walking", "upright bass"},
    {"Bass", "", "electric bass"},
    {"Guitar", "overdrive", "driven guitar"},
    {"Guitar", "grunge", "driven guitar"},
    {"Guitar", "nylon", "nylon guitar"},
    {"Guitar", "strumming", "strummed guitar"},
    {"Guitar", "acoustic", "strummed guitar"},
    {"Guitar", "piezo", "steel guitar"},
    {"Guitar", "steel", "steel guitar"},
    {"Guitar", "ac gtr", "steel guitar"},
    {"Guitar", "", "electric guitar"},
    {"Keys", "rhodes", "electric piano"},
    {"Keys", "electric", "electric piano"},
    {"Keys", "organ", "organ"},
    {"Keys", "pad", "pad"},
    {"Keys", "snth", "synth"},
    {"Keys", "synth", "synth"},
    {"Keys", "moog", "synth"},
    {"Keys", "", "piano"},
    {"Strings", "brass", "brass section"},
    {"Strings", "orch", "orchestra"},
    {"Strings", "", "strings"},
    {"Wind", "trumpet", "trumpet"},
    {"Wind", "trombone", "trombone"},
    {"Wind", "horn", "trombone"},
    {"Wind", "tenore", "tenor saxophone"},
    {"Wind", "less wind", "saxophone in wind"},
    {"Wind", "", "alto saxophone"},
    {"Vocals", "rap", "low voice"},
    {"Vocals", "choir", "choir"},
    {"Vocals", "back", "choir"},
    {"Vocals", "bck", "choir"},
    {"Vocals", "bgv", "choir"},
    {"Vocals", "female", "voice"},
    {"Vocals", "male", "low voice"},
    {"Vocals", "", "voice"},
    {"Special", "de-", "voice"},
    {"Special", "iphone", "voice"},
    {"Special", "transient", "full kit"},
    {"Special", "", "mix"},
    {"", "drums init", "full kit"},
    {"", "bass init", "electric bass"},
    {"", "guitar init", "electric guitar"},
    {"", "keys init", "piano"},
    {"", "strings init", "strings"},
    {"", "wind init", "alto saxophone"},
    {"", "vocal init", "voice"},
    {"", "", "mix"},
};

struct Entry {
  const char* name;
  Sound (*make)(const SoundFolders&);
};

Sound mixOfAll(const SoundFolders& where) {
  Sound all(frames(kMaterialSeconds), 0.0);
  mix(all, levelled(fullKit(where)), 0.0, 1.0);
  mix(all, levelled(electricBass(where)), 0.0, 0.7);
  mix(all, levelled(pianoPhrase(where)), 0.0, 0.45);
  mix(all, levelled(voice(where)), 0.0, 0.8);
  return all;
}

// clang-format off
constexpr Entry kEntries[] = {
    {"kick", kick}, {"808 kick", kick808}, {"kick and snare", kickWithSnare},
    {"snare", snare}, {"snare and hats", snareWithHats}, {"hats", hats}, {"toms", toms},
    {"overheads", overheads}, {"room", roomMicrophone}, {"ride", ride}, {"full kit", fullKit},
    {"electric loop", electricLoop}, {"bongos", bongos}, {"congas", congas}, {"tabla", tabla},
    {"shaker", shakerGroove}, {"tambourine", tambourine}, {"triangle", triangleGroove}, {"claps", claps},
    {"electric bass", electricBass}, {"upright bass", uprightBass}, {"synth bass", synthBassPhrase},
    {"electric guitar", electricGuitar}, {"driven guitar", drivenGuitar}, {"nylon guitar", nylonGuitar},
    {"steel guitar", steelGuitar}, {"strummed guitar", strummedGuitar},
    {"piano", pianoPhrase}, {"electric piano", electricPianoPhrase}, {"organ", organPhrase},
    {"synth", synthPhrase}, {"pad", padPhrase},
    {"strings", stringSection}, {"brass section", brassSection}, {"orchestra", orchestra},
    {"trumpet", trumpet}, {"trombone", trombone}, {"alto saxophone", altoSaxophone},
    {"tenor saxophone", tenorSaxophone}, {"saxophone in wind", saxophoneInWind},
    {"voice", voice}, {"low voice", lowVoice}, {"choir", choir}, {"mix", mixOfAll},
};
// clang-format on

}  // namespace

std::string materialFor(const std::string& category, const std::string& preset) {
  const std::string name = cli::lowerCase(preset);
  for (const Rule& rule : kRules)
    if (category == rule.category && name.find(rule.word) != std::string::npos) return rule.material;
  return "mix";
}

std::string commonMaterial(const std::string& category) {
  if (category == "Special") return "mix";
  return materialFor(category, "");
}

const Sound& MaterialShelf::get(const std::string& name) {
  const auto at = made.find(name);
  return at != made.end() ? at->second : made.emplace(name, make(name)).first->second;
}

Sound MaterialShelf::make(const std::string& name) {
  for (const Entry& entry : kEntries)
    if (name == entry.name) {
      Sound sound = entry.make(folders);
      sound.resize(frames(kMaterialSeconds), 0.0);
      return levelled(std::move(sound));
    }
  cli::fail("no material \"{}\"", name);
}

}  // namespace corvane::audition
