#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace corvane::cli::session {

/// The words of one line. Blanks part them; "double quotes" keep blanks, with \" and \\ inside; a word that
/// begins with # starts a comment. Throws Failure for a quote that is not closed.
std::vector<std::string> wordsOf(std::string_view line);

/// A word as `wordsOf` reads it back: in quotes where it needs them.
std::string asWord(const std::string& word);

}  // namespace corvane::cli::session
