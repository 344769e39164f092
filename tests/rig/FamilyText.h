#pragma once

#include <string>

#include "core/ModuleFamily.h"

namespace corvane::rig {

/// What a family's panel shows for the parameter at `offset`.
inline std::string shownBy(const ModuleFamily& family, int offset, double p) {
  char text[kTextBytes] = "untouched";
  valueText(family, offset, p, text);
  return text;
}

}  // namespace corvane::rig
