#include <cstdlib>

namespace {

[[maybe_unused]] const bool told = [] {
  // Programs of the build folder are not beside the bundle; a place that a person names comes first.
  setenv("CORVANE_PLUGIN", CORVANE_BUNDLE, 0);
  // The plug-in reads and writes a user's settings and presets: not those of whoever builds.
  setenv("HOME", CORVANE_BUILD_HOME, 1);
  unsetenv("XDG_CONFIG_HOME");
  return true;
}();

}  // namespace
