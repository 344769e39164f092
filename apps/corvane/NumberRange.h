#pragma once

#include <CLI/CLI.hpp>

#include "corvane/Words.h"

namespace corvane::cli {

/// The range of a number on the command line, with our words for a number outside.
inline CLI::Validator within(double low, double high) {
  return CLI::Validator(
      [=](const std::string& text) {
        const auto number = numberOf(text);
        if (number && *number >= low && *number <= high) return std::string();
        return "\"" + text + "\" is not a number from " + shortest(low) + " to " + shortest(high);
      },
      "");
}

}  // namespace corvane::cli
