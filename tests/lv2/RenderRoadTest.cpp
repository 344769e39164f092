#include <unistd.h>

#include <array>
#include <random>

#include "tests/lv2/Settings.h"
#include "tests/rig/SystemCallGuard.h"

// Nothing on the way of the sound may wait. RawStrip watches every run of every test for allocations and
// locks; here it is shown that it would see them, and that the system is not called either.

namespace corvane::lv2 {
namespace {

class Lv2RenderRoad : public ::testing::Test {
 protected:
  /// Blocks of any length while knobs, types, orders and states change.
  bool storm(RawStrip& strip, const Saved& state, int calls, bool withState) {
    std::mt19937 dice(21);
    strip.connect(x.data(), y.data(), x.data());
    for (int call = 0; call < calls; ++call) {
      for (int change = 0; change < 4; ++change) {
        const std::size_t k = dice() % strip.controls.size();
        const Scale& scale = strip.all.controls[k].scale;
        const float at = static_cast<float>(dice() % 1001) / 1000.0f;
        strip.controls[k] = scale.lowest + at * (scale.highest - scale.lowest);
      }
      if (withState && call % 50 == 0) strip.restore(state);
      strip.run(static_cast<std::uint32_t>(dice() % 300));
      for (const float sample : y)
        if (!std::isfinite(sample)) return false;
    }
    return true;
  }
  Binary binary;
  Floats x = programme(300), y = Floats(300);
};

TEST_F(Lv2RenderRoad, TheWatchReachesTheLoadedLibrary) {
  RawStrip strip(binary);
  const rig::RenderGuard guard;
  static_cast<void>(strip.save());
  EXPECT_GT(guard.locks(), 0);
  const int before = guard.allocations();
  strip.descriptor.cleanup(strip.descriptor.instantiate(&strip.descriptor, 48000.0, LV2_BUNDLE "/",
                                                        std::array<const LV2_Feature*, 1>{nullptr}.data()));
  EXPECT_GT(guard.allocations(), before + 100);
}

TEST_F(Lv2RenderRoad, NoStormAllocatesOrLocks) {
  RawStrip strip(binary, 48000.0, true);
  EXPECT_TRUE(storm(strip, strip.save(), 2000, true));
  EXPECT_EQ(strip.violations, 0);
}

TEST_F(Lv2RenderRoad, NoStormCallsTheSystem) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
  GTEST_SKIP() << "the sanitizer calls the system itself";
#endif
  RawStrip strip(binary, 48000.0, true);
  const Saved state = strip.save();
  if (!rig::SystemCallGuard::begin()) GTEST_SKIP() << "this kernel does not let calls be watched";
  {
    const rig::SystemCallGuard watch;
    getppid();
    ASSERT_GE(watch.caught(), 0) << "the watch sees nothing";
  }
  const rig::SystemCallGuard watch;
  const bool finite = storm(strip, state, 2000, false);
  EXPECT_EQ(watch.caught(), -1);
  EXPECT_TRUE(finite);
}

}  // namespace
}  // namespace corvane::lv2
