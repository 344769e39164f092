#pragma once

#include "corvane/session/Commands.h"

namespace corvane::cli::session {

// What each command does: its arguments, as many as it takes, to its answer line. Throws Failure for what is
// refused; then nothing has changed.

std::string setValue(Session& session, const Arguments& arguments);
std::string editValue(Session& session, const Arguments& arguments);
std::string getValue(Session& session, const Arguments& arguments);
std::string storedValue(Session& session, const Arguments& arguments);
std::string textOfValue(Session& session, const Arguments& arguments);
std::string setBypass(Session& session, const Arguments& arguments);

std::string selectPreset(Session& session, const Arguments& arguments);
std::string nextPreset(Session& session, const Arguments& arguments);
std::string previousPreset(Session& session, const Arguments& arguments);
std::string selection(Session& session, const Arguments& arguments);
std::string settingName(Session& session, const Arguments& arguments);
std::string isModified(Session& session, const Arguments& arguments);
std::string memory(Session& session, const Arguments& arguments);
std::string copyMemory(Session& session, const Arguments& arguments);
std::string undo(Session& session, const Arguments& arguments);
std::string redo(Session& session, const Arguments& arguments);
std::string canUndo(Session& session, const Arguments& arguments);
std::string canRedo(Session& session, const Arguments& arguments);
std::string copySetting(Session& session, const Arguments& arguments);
std::string pasteSetting(Session& session, const Arguments& arguments);
std::string savePreset(Session& session, const Arguments& arguments);
std::string loadPreset(Session& session, const Arguments& arguments);
std::string saveState(Session& session, const Arguments& arguments);
std::string loadState(Session& session, const Arguments& arguments);

std::string runSound(Session& session, const Arguments& arguments);
std::string waitTime(Session& session, const Arguments& arguments);
std::string positions(Session& session, const Arguments& arguments);
std::string meters(Session& session, const Arguments& arguments);
std::string help(Session& session, const Arguments& arguments);

}  // namespace corvane::cli::session
