#pragma once

#include <algorithm>
#include <memory>

#include "core/CorvaneMonoEffect.h"
#include "core/ModuleFamily.h"
#include "core/Rack.h"
#include "tests/rig/Signals.h"

namespace corvane::rig {

/// One module on a bench, with the ids of its fixed place or, for insert modules, of InsX. Driven as the rack
/// does: rate, type, defaults, reset, then blocks in place.
class ModuleRig {
 public:
  ModuleRig(const ModuleFamily& moduleFamily, int type, double rateHz = 48000.0)
      : family(moduleFamily), place(placeOf(moduleFamily)), rate(rateHz) {
    module = family.make(place.parameterBase, place.meterBase, place.tagBase);
    if (family.kind != ModuleKind::special) set(kTypeOffset, type / 15.0);
    module->setSampleRate(rateHz);
    module->enable();
    module->setDefaults();
    module->reset();
  }

  /// Normalised value of a parameter by offset.
  void set(int offset, double p) { module->setParameter(place.parameterBase + offset, p); }
  /// Physical value of an own parameter by offset, through the row's taper.
  void setPhysical(int offset, double value) {
    set(offset, findRow(family, offset)->taper.normalised(value));
  }
  /// To the targets of all parameters, states cleared.
  void reset() { module->reset(); }

  double meter(int offset) {
    double value = -1.0;
    module->getMeter(place.meterBase + offset, &value);
    return value;
  }

  /// Output of the mono form for `x`, keyed by `key` on pair 1 (or `x` itself), in blocks of `block`.
  Samples runMono(const Samples& x, const Samples* key = nullptr, int block = kBlockFrames) {
    return run(x, x, key ? *key : x, key ? *key : x, block, false).first;
  }
  /// Both outputs of the two-channel form.
  std::pair<Samples, Samples> runPair(const Samples& left, const Samples& right, int block = kBlockFrames) {
    return run(left, right, left, right, block, true);
  }

  const ModuleFamily& family;
  const Place& place;
  double rate;
  std::unique_ptr<StripEffect> module;
  /// What the last run left in pair 1, for modules that write the key.
  Samples keyOut;

 private:
  static const Place& placeOf(const ModuleFamily& f) {
    for (const Place& p : kRack)
      if (p.kind == f.kind) return p;
    return kRack[kInsertX];
  }

  std::pair<Samples, Samples> run(const Samples& a, const Samples& b, const Samples& c, const Samples& d,
                                  int block, bool pair) {
    double audio[4][kBlockFrames];
    double* table[8] = {audio[0], audio[1], audio[2], audio[3]};
    const Samples* sources[4] = {&a, &b, &c, &d};
    std::pair<Samples, Samples> out{Samples(a.size()), Samples(a.size())};
    keyOut.assign(a.size(), 0.0);
    for (std::size_t at = 0; at < a.size();) {
      const std::size_t n =
          std::min({static_cast<std::size_t>(block), a.size() - at, std::size_t{kBlockFrames}});
      for (int k = 0; k < 4; ++k) std::copy_n(sources[k]->begin() + static_cast<long>(at), n, audio[k]);
      if (pair)
        module->processBlock(table, table, static_cast<int>(n));
      else
        module->processBlockMono(table, table, static_cast<int>(n));
      std::copy_n(audio[0], n, out.first.begin() + static_cast<long>(at));
      std::copy_n(audio[1], n, out.second.begin() + static_cast<long>(at));
      std::copy_n(audio[2], n, keyOut.begin() + static_cast<long>(at));
      at += n;
    }
    return out;
  }
};

}  // namespace corvane::rig
