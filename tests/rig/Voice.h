#pragma once

#include <sndfile.h>

#include "tests/rig/Signals.h"

namespace corvane::rig {

/// The recorded voice of the package alsa-utils, "front centre", mono at 48 kHz; empty where it is missing.
inline Samples recordedVoice() {
  SF_INFO info{};
  SNDFILE* file = sf_open("/usr/share/sounds/alsa/Front_Center.wav", SFM_READ, &info);
  if (!file) return {};
  Samples voice(static_cast<std::size_t>(info.frames * info.channels));
  voice.resize(static_cast<std::size_t>(sf_readf_double(file, voice.data(), info.frames) * info.channels));
  sf_close(file);
  return info.channels == 1 && info.samplerate == 48000 ? voice : Samples{};
}

}  // namespace corvane::rig
