#pragma once

#include "core/ModuleFamily.h"

namespace corvane {
extern const ModuleFamily kGateFamily;
}
