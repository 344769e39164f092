#pragma once

#include <string_view>

namespace corvane {

// The text side of the bank: what a value reads like, and what a person's text means. Everything that shows
// or takes a value comes through here: host, window, command line, factory bank. `text` to write: kTextBytes.
// [any]

/// Display of any id of the bank, without a host's unit; empty for an id without a display.
void parameterDisplay(int id, double value, char* text);

/// As above, but own parameters of an insert read as the module with `insertIndex` shows them.
void parameterDisplay(int id, int insertIndex, double value, char* text);

/// General search: walks the display of `id` for the value that fits `text`. Good for rising displays.
/// Answers with the nearest end for a number out of range and with 0 for a word that fits nothing, so the
/// result is always in 0..1; false, and `value` as it was, only for an id that is no parameter.
bool parameterFromText(int id, const char* text, double* value);

/// What a person types, by one road for all: the module's own entry where it has one, the general search
/// otherwise, but strict. False, and `value` as it was, for a text that fits nothing. What a display shows
/// can be typed back, in any case; variants and modules go by name, "off" empties a place; switches also
/// take on, off, 1 and 0; zeros may have a unit ("0 dB"). Own parameters of an insert take the bare value
/// 0..1.
bool valueFromTyped(int id, const char* text, double* value);

/// As above, with the module of `insertIndex` in the insert that `id` belongs to: its own parameters take
/// that module's texts. An index without a module takes the bare value.
bool valueFromTyped(int id, int insertIndex, const char* text, double* value);

/// Id of a parameter by its name in the bank ("Comp:Threshold"), or -1.
int parameterIdOfName(std::string_view name);

}  // namespace corvane
