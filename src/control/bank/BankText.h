#pragma once

#include <array>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "core/Rack.h"

namespace corvane::bank {

// The factory bank as text. One file for each category:
//
//   category 0 Drums
//
//   preset Smacka 808 BD
//     designer Tape Room            # by name or row number of designers.txt
//     Pre: Pre 60s                  # modules in the order of the chain; the other places are empty behind
//     them
//       Gain -3 dB                  # what leaves its default, as a person would type it
//     InsX: De-esser
//       Freq 6k
//     raw Pre:Type 0.1333           # a stored number as it stands, by its name in the bank; also 113/255
//
//   preset Snare
//     designer 3
//     like Drums Init               # all values of an earlier preset, instead of modules
//
// A preset without modules and without `like` is the default setting. `#` starts a comment.

/// What is wrong with a file of the bank, and where.
struct BankError : std::runtime_error {
  BankError(const std::string& file, int line, const std::string& what)
      : std::runtime_error(file + ":" + std::to_string(line) + ": " + what) {}
};

struct BankPreset {
  std::string name;
  int category = -1;  ///< none
  int designer = -1;
  std::array<double, kParameters> values{};  ///< normalised, by id
};

struct BankFile {
  std::string categoryName;  ///< empty for a file without a category
  int category = -1;
  std::vector<BankPreset> presets;
};

struct DesignerRow {
  std::string name, link;
};

/// Rows "number | name | link", numbered from 0 without a gap; names and links hold 64 characters.
std::vector<DesignerRow> parseDesigners(const std::string& file, std::string_view text);

/// Presets of one file, in its order. `earlier`: what `like` may name.
BankFile parseBank(const std::string& file, std::string_view text, const std::vector<DesignerRow>& designers,
                   const std::vector<BankPreset>& earlier);

/// A run of places that one file fills.
struct PlaceRun {
  int first, last;
  std::string file;  ///< without the extension
  int line;
};

/// Rows "first-last file" or "place file"; no gap, no overlap, from 0.
std::vector<PlaceRun> parsePlaces(const std::string& file, std::string_view text);

}  // namespace corvane::bank
