#pragma once

#include <span>
#include <string>
#include <vector>

#include "corvane/session/Session.h"

namespace corvane::cli::session {

using Arguments = std::vector<std::string>;

/// One command of a session. Help, docs/session.md and the check of arguments all read this.
struct Command {
  const char* name;
  const char* arguments;  ///< words; [optional]; the last may stand for several: TEXT...
  const char* help;       ///< what it does
  const char* answer;     ///< what its answer line holds
  const char* refused;    ///< when it answers an error; "" where it never does
  std::string (*run)(Session&, const Arguments&);

  std::string usage() const;  ///< name and arguments
};

std::span<const Command> commands();
/// Throws Failure with the nearest one.
const Command& commandNamed(const std::string& name);

/// The answer line of a command with its arguments. Throws Failure for what is refused; then nothing has
/// changed.
std::string answerTo(Session& session, const std::vector<std::string>& words);

}  // namespace corvane::cli::session
