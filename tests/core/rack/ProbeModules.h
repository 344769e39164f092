#pragma once

#include <map>
#include <string>
#include <vector>

#include "core/ModuleFamily.h"
#include "core/Rack.h"

// A catalogue of probes in place of the real families: every module notes what the rack asks of it.

namespace corvane::probe {

class ProbeModule final : public StripEffect {
 public:
  ProbeModule(const char* familyName, int parameters, int meters, int tags)
      : StripEffect(parameters, meters, tags), name(familyName) {
    all.push_back(this);
  }
  ~ProbeModule() override { std::erase(all, this); }

  void reset() override { note("reset"); }
  void setSampleRate(double hz) override {
    sampleRate = hz;
    note("rate");
  }
  void setParameter(int id, double value) override {
    received[id] = value;
    note("set " + std::to_string(id));
  }
  void setDefaults() override { note("defaults"); }
  void processBlock(double**, double**, int) override { note("pair"); }
  void processBlockMono(double** in, double** out, int frames) override {
    blocks.push_back(frames);
    keys.insert(keys.end(), in[2], in[2] + frames);
    order.push_back(this);
    for (int i = 0; i < frames; ++i) out[0][i] = out[1][i] = in[0][i] * gain + offset;
  }
  void getMeter(int id, double* value) override {
    if (id == meterBase + 2) *value = reduction;
  }
  void resetMeters() override { note("meters"); }
  void enable() override { active = 1; }
  void disable() override { active = 0; }

  bool isActive() const { return active == 1; }
  double rate() const { return sampleRate; }
  int base() const { return parameterBase; }

  std::string name;
  std::vector<std::string> calls;
  std::vector<int> blocks;
  std::vector<double> keys;
  std::map<int, double> received;
  double gain = 1.0, offset = 0.0, reduction = 0.0;

  static inline std::vector<ProbeModule*> all;    ///< in order of construction
  static inline std::vector<ProbeModule*> order;  ///< who got a block, in turn

 private:
  void note(std::string call) { calls.push_back(std::move(call)); }
};

}  // namespace corvane::probe
