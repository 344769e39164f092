#include "corvane/session/Line.h"

#include "corvane/Failure.h"

namespace corvane::cli::session {

namespace {

constexpr std::string_view kBlanks = " \t\r\n\v\f";

bool isBlank(char c) { return kBlanks.find(c) != kBlanks.npos; }

/// What stands between two quotes; `at` is behind the first and ends behind the second.
std::string insideQuotes(std::string_view line, std::size_t& at) {
  std::string text;
  for (; at < line.size(); ++at) {
    if (line[at] == '"') return ++at, text;
    if (line[at] == '\\' && at + 1 < line.size() && (line[at + 1] == '"' || line[at + 1] == '\\')) ++at;
    text += line[at];
  }
  refuse("a quote is not closed");
}

}  // namespace

std::vector<std::string> wordsOf(std::string_view line) {
  std::vector<std::string> words;
  for (std::size_t at = 0; at < line.size();) {
    if (isBlank(line[at])) {
      ++at;
      continue;
    }
    if (line[at] == '#') break;
    std::string word;
    while (at < line.size() && !isBlank(line[at]))
      if (line[at] == '"')
        word += insideQuotes(line, ++at);
      else
        word += line[at++];
    words.push_back(std::move(word));
  }
  return words;
}

std::string asWord(const std::string& word) {
  if (!word.empty() && word.find_first_of(" \t\r\n\v\f\"") == word.npos && word.front() != '#') return word;
  std::string text = "\"";
  for (const char c : word) {
    if (c == '"' || c == '\\') text += '\\';
    text += c;
  }
  return text + '"';
}

}  // namespace corvane::cli::session
