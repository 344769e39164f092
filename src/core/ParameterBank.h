#pragma once

namespace corvane {

// One flat numbering for everything that can be set or read from outside: parameters, meters, editor tags.
// Names, defaults and steps of own parameters come from the families' tables.

inline constexpr int kProcessId = 0;
inline constexpr int kTotalReductionMeterId = 423;
inline constexpr int kIdentifiers = 819;  // ids 0 .. 818 have an identifier string

/// Bits of `parameterKind`.
inline constexpr int kKindAnnounced = 1;  // announced to the host
inline constexpr int kKindMeter = 2;      // read only
inline constexpr int kKindStored = 8;     // part of presets, state and undo

/// 9 for a host parameter, 2 for a meter, 0 for everything else.
int parameterKind(int id);
/// Composed name, "_dev_ %d" for an id without a use. `text`: kTextBytes.
void parameterName(int id, char* text);
/// Steps told to hosts: 1 for a switch, 8 position, 15 variant, 256 insert index, 0 continuous.
int parameterSteps(int id);
/// Normalised default; 0 for anything that has none.
double parameterDefault(int id);

/// "%d: %s" of id and name, cut to 31 characters; lives as long as the library. `id`: 0 .. 818.
const char* parameterIdentifier(int id);
/// Id of an identifier string, or -1.
int parameterIdOf(const char* identifier);

}  // namespace corvane
