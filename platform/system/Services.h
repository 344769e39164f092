#pragma once

#include "platform/system/Clock.h"
#include "platform/system/Desktop.h"
#include "platform/system/SettingsStore.h"
#include "platform/system/Trace.h"
#include "platform/system/UserFolders.h"

namespace corvane::platform {

/// What the control side needs of the machine, each piece replaceable.
struct Services {
  UserFolders folders;
  SettingsStore& settings;
  Clock& clock;
  Desktop& desktop;
  Trace& trace;
};

/// The machine itself. The trace goes to the file that CORVANE_TRACE names when this is first called.
const Services& systemServices();

}  // namespace corvane::platform
