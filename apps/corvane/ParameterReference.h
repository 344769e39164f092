#pragma once

#include <string>

namespace corvane::cli {

/// The printed reference of all parameters in Markdown: places, heads, then a table for each family of
/// modules. Everything in it is read from the tables that the strip itself reads.
std::string parameterReference();

}  // namespace corvane::cli
