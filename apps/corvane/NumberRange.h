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

/// An option that takes a number of a range, with a decimal point in every locale.
inline CLI::Option* addNumber(CLI::App& command, const std::string& name, double& target, double low,
                              double high, const std::string& help) {
  const auto take = [&target](const std::string& text) { target = numberOf(text).value_or(target); };
  return command.add_option_function<std::string>(name, take, help)
      ->check(within(low, high))
      ->default_str(shortest(target));
}

}  // namespace corvane::cli
