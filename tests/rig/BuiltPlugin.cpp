#include <cstdlib>

namespace {

// Programs of the build folder are not beside the bundle; a place that a person names comes first.
[[maybe_unused]] const int told = setenv("CORVANE_PLUGIN", CORVANE_BUNDLE, 0);

}  // namespace
