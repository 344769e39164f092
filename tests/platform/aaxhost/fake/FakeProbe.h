#pragma once

#include <atomic>
#include <cstdint>
#include <string>
#include <vector>

#include "platform/aax/AAX.h"

/// What the made-up plug-in shows to its tests, beside the contract: found by the name `fakeProbe`.
struct FakeProbe {
  std::vector<std::string> (*takeLog)();  ///< control calls since the last time, in order
  std::atomic<bool> logging = true;
  std::atomic<long> torn = 0;           ///< halves of a private field seen together, by timer or render
  std::atomic<long> splitPairs = 0;     ///< blocks in which "gain" and "twin" differed
  std::atomic<long> commands = 0;       ///< sum of the commands that reached the process function
  std::atomic<long> processors = 0;     ///< objects alive in private fields
  std::atomic<long> calls = 0;          ///< of the process function
  std::atomic<long> lastCount = 0;      ///< records in the last of them
  std::atomic<long> commandToSend = 0;  ///< the next timer hands it over
  std::atomic<bool> misaligned = false;
  std::atomic<double> tempo = 0.0;  ///< at the last block, -1 with no transport
  std::atomic<std::int64_t> ticks = 0;
  std::atomic<bool> playing = false;
  std::atomic<double> rate = 0.0;
};
using FakeProbeEntry = FakeProbe* (*)();

inline constexpr AAX_CFieldIndex kFakeShared = 20, kFakeProcessor = 21, kFakeLarge = 22;

/// Private field 20: one half is render's, one control's, each written whole.
struct FakeShared {
  std::int64_t blocks[200];
  std::int64_t commands[200];  ///< all equal; 0 for none; render takes them back to 0
};
