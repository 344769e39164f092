#include <gtest/gtest.h>

#include <cstdlib>
#include <random>

#include "tests/rig/ModuleRig.h"
#include "tests/rig/RenderGuard.h"

// What every module owes the rack, tried on all families and variants of the catalogue.

namespace corvane {
namespace {

using namespace rig;

struct Stand {
  const ModuleFamily* family;
  Variant variant;
};

std::vector<Stand> allStands() {
  std::vector<Stand> stands;
  for (const ModuleFamily* family : moduleFamilies())
    for (const Variant& variant : family->variants) stands.push_back({family, variant});
  return stands;
}

class EveryModule : public ::testing::TestWithParam<Stand> {
 protected:
  const ModuleFamily& family() const { return *GetParam().family; }
  int type() const { return GetParam().variant.type; }
  bool isPreamp() const { return family().kind == ModuleKind::preamp; }
  /// The converter draws its jitter behind the hiss of each block, so its noise follows the blocks.
  bool drawsByBlock() const { return isPreamp() && type() == 5; }

  /// Two rigs that must sound alike. Preamps differ from unit to unit and repeat after sixteen.
  std::pair<std::unique_ptr<ModuleRig>, std::unique_ptr<ModuleRig>> twins() const {
    auto first = std::make_unique<ModuleRig>(family(), type());
    if (isPreamp())
      for (int unit = 0; unit < 15; ++unit) family().make(0, 0, 0);
    return {std::move(first), std::make_unique<ModuleRig>(family(), type())};
  }
};

std::string standName(const ::testing::TestParamInfo<Stand>& info) {
  std::string name;
  for (const char c : std::string(info.param.variant.name))
    if (std::isalnum(static_cast<unsigned char>(c))) name += c;
  return name;
}

INSTANTIATE_TEST_SUITE_P(Catalogue, EveryModule, ::testing::ValuesIn(allStands()), standName);

/// Loud, harsh, then nothing: noise, a +20 dBFS square, silence, single impulses.
Samples harshProgramme(double rateHz) {
  Samples x = noise(1.0, 0.03, rateHz);
  Samples square = constant(10.0, 0.03, rateHz);
  for (std::size_t n = 0; n < square.size(); ++n)
    if (n / 50 % 2 == 1) square[n] = -10.0;
  x = joined(joined(x, square), silence(0.03, rateHz));
  Samples clicks = silence(0.03, rateHz);
  for (std::size_t n = 0; n < clicks.size(); n += 301) clicks[n] = n % 2 == 0 ? 1.0 : -1.0;
  return joined(x, clicks);
}

void expectSound(const Samples& y, double bound, const std::string& where) {
  for (const double v : y) {
    ASSERT_TRUE(std::isfinite(v)) << where;
    ASSERT_NE(std::fpclassify(v), FP_SUBNORMAL) << where;
    ASSERT_LT(std::abs(v), bound) << where;
  }
}

TEST_P(EveryModule, SurvivesAStormOfParametersWithoutAllocating) {
  for (const double rateHz : {44100.0, 96000.0, 384000.0}) {
    ModuleRig rig(family(), type(), rateHz);
    const Samples x = harshProgramme(rateHz);
    std::mt19937 engine(7);
    std::uniform_real_distribution<double> draw(0.0, 1.0);
    const auto value = [&] {
      const double p = draw(engine);
      return p < 0.1 ? 0.0 : p > 0.9 ? 1.0 : p;
    };
    double audio[4][kBlockFrames];
    double* table[8] = {audio[0], audio[1], audio[2], audio[3]};
    Samples y(x.size());
    const RenderGuard guard;
    for (std::size_t at = 0; at < x.size(); at += kBlockFrames) {
      const std::size_t n = std::min<std::size_t>(kBlockFrames, x.size() - at);
      for (auto& channel : audio) std::copy_n(x.begin() + static_cast<long>(at), n, channel);
      for (int change = 0; change < 3; ++change) {
        const auto pick =
            static_cast<std::size_t>(draw(engine) * static_cast<double>(family().rows.size() + 2));
        if (pick < family().rows.size())
          rig.set(family().rows[pick].offset, value());
        else
          rig.set(pick == family().rows.size() ? kSideChainOffset : kMonitorOffset, value());
      }
      rig.module->processBlockMono(table, table, static_cast<int>(n));
      std::copy_n(audio[0], n, y.begin() + static_cast<long>(at));
    }
    rig.module->resetMeters(), rig.module->disable(), rig.module->enable(), rig.module->reset();
    rig.module->setSampleRate(48000.0), rig.module->setDefaults();
    EXPECT_EQ(guard.violations(), 0);
    // 160 dB: four bells of +22 dB on a +20 dBFS square with +30 dB in front stay well below
    expectSound(y, 1e8, "at " + std::to_string(rateHz));
  }
}

TEST_P(EveryModule, ComesToRestInSilenceWithoutDenormals) {
  ModuleRig rig(family(), type());
  Samples y = rig.runMono(joined(noise(1.0, 0.2, 48000.0), silence(3.0, 48000.0)));
  expectSound(y, 100.0, "default setting");
  // below -100 dBFS after three seconds, whatever the module's memory
  y.erase(y.begin(), y.end() - 4800);
  EXPECT_LT(peak(y), 1e-5);
}

TEST_P(EveryModule, GivesTheSameForAnySubBlock) {
  if (drawsByBlock()) return;
  const Samples x = noise(0.5, 0.1, 48000.0);
  for (const int block : {1, 23}) {
    const auto [whole, cut] = twins();
    const Samples expected = whole->runMono(x);
    EXPECT_EQ(cut->runMono(x, nullptr, block), expected) << "blocks of " << block;
    // 1e-12: the sound has the same bits; a level is followed in runs, which start where a block starts
    EXPECT_NEAR(whole->meter(0), cut->meter(0), 1e-12);
    EXPECT_NEAR(whole->meter(1), cut->meter(1), 1e-12);
  }
}

TEST_P(EveryModule, TwoChannelFormOfEqualChannelsIsTheMonoForm) {
  const Samples x = noise(0.5, 0.2, 48000.0);
  const auto [mono, pair] = twins();
  const Samples expected = mono->runMono(x);
  const auto [left, right] = pair->runPair(x, x);
  for (std::size_t n = 0; n < x.size(); ++n) {
    // 1e-9: balance and width of the master stand at unity to ten digits
    ASSERT_NEAR(left[n], expected[n], 1e-9) << n;
    // the second channel of a preamp has tolerances of its own
    if (!isPreamp()) {
      ASSERT_NEAR(right[n], expected[n], 1e-9) << n;
    }
  }
}

TEST_P(EveryModule, DisabledPassesBitForBitWithBothMetersMoving) {
  ModuleRig rig(family(), type());
  rig.module->disable();
  const Samples x = noise(0.5, 0.05, 48000.0);
  EXPECT_EQ(rig.runMono(x), x);
  EXPECT_GT(rig.meter(0), 0.2);
  EXPECT_EQ(rig.meter(0), rig.meter(1));
}

TEST_P(EveryModule, NoFramesChangeNothing) {
  const auto [rig, twin] = twins();
  const Samples x = noise(0.5, 0.02, 48000.0);
  double audio[4][kBlockFrames] = {};
  double* table[8] = {audio[0], audio[1], audio[2], audio[3]};
  rig->runMono(x), twin->runMono(x);
  for (int n = 0; n < 100; ++n) rig->module->processBlockMono(table, table, 0);
  EXPECT_EQ(rig->runMono(x), twin->runMono(x));
}

// The strip as a whole

TEST(WholeStrip, RecoversFromPoisonInOneSecond) {
  for (const Stand& stand : allStands()) {
    CorvaneMonoEffect poisoned, clean;
    const int index = stand.family->firstInsertIndex + stand.variant.type - 1;
    const auto run = [&](CorvaneMonoEffect& effect, std::vector<float> x) {
      const float* in[4] = {x.data(), nullptr, nullptr, nullptr};
      float* out[2] = {x.data(), nullptr};
      effect.processFloat(in, out, static_cast<int>(x.size()));
      return x;
    };
    const Samples tone = noise(0.25, 1.2, 48000.0);
    std::vector<float> bad(4800);
    const float values[] = {NAN, INFINITY, -INFINITY, 3.4e38f, -3.4e38f, 1e-40f, 1.0f};
    for (std::size_t n = 0; n < bad.size(); ++n) bad[n] = values[n % std::size(values)];
    for (CorvaneMonoEffect* effect : {&poisoned, &clean}) {
      effect->setParameter(256, index / 255.0);
      effect->setSampleRate(48000.0);
    }
    run(clean, std::vector<float>(bad.size(), 0.0f));
    const std::vector<float> worst = run(poisoned, bad);
    const std::vector<float> a = run(poisoned, {tone.begin(), tone.end()}),
                             b = run(clean, {tone.begin(), tone.end()});
    for (std::size_t n = 0; n < a.size(); ++n) ASSERT_TRUE(std::isfinite(a[n])) << stand.variant.name;
    // followers of the strip's own compressor may still be on their way: levels agree within 12 dB
    double levelA = 0.0, levelB = 0.0;
    for (std::size_t n = a.size() - 4800; n < a.size(); ++n) levelA += a[n] * a[n], levelB += b[n] * b[n];
    // The cell of this limiter darkens by at most 0.06 of the ceiling per sample, so that a finite sample of
    // 10^38 shuts it until the next reset. That law is its sound; what it must not do is give a not-a-number.
    // The filters' low-pass at its upper stop is damped so strongly that a pole beside half the rate forgets
    // 22 dB per second, and 10^38 is 760 dB.
    const bool falls =
        std::string(stand.variant.name) != "Opto Lim" && stand.family->kind != ModuleKind::filters;
    if (falls && levelB > 0.0) {
      EXPECT_GT(levelA / levelB, 1.0 / 16.0) << stand.variant.name;
    }
  }
}

TEST(WholeStrip, RenderRoadNeitherAllocatesNorLocks) {
  CorvaneMonoEffect effect;
  std::vector<float> x(512), key(512, 0.1f);
  std::mt19937 engine(11);
  std::uniform_int_distribution<int> anyId(0, 423);
  std::uniform_real_distribution<double> anyValue(0.0, 1.0);
  const auto stands = allStands();
  const RenderGuard guard;
  for (int block = 0; block < 400; ++block) {
    for (int change = 0; change < 20; ++change) effect.setParameter(anyId(engine), anyValue(engine));
    const Stand& stand = stands[static_cast<std::size_t>(block) % stands.size()];
    effect.setParameter(block % 2 ? 256 : 304,
                        (stand.family->firstInsertIndex + stand.variant.type - 1) / 255.0);
    for (float& sample : x) sample = static_cast<float>(anyValue(engine) - 0.5);
    const float* in[4] = {x.data(), nullptr, block % 3 ? key.data() : nullptr, nullptr};
    float* out[2] = {x.data(), nullptr};
    if (block % 50 == 49) effect.setSampleRate(block % 100 == 99 ? 48000.0 : 96000.0);
    if (block % 31 == 30)
      effect.processBypassedFloat(in, out, block % 512);
    else
      effect.processFloat(in, out, block % 512);
    double value = 0.0;
    for (int id = 361; id <= 423; ++id) effect.getMeter(id, &value);
  }
  EXPECT_EQ(guard.violations(), 0);
}

TEST(WholeStrip, OutputDoesNotDependOnTheHostsBlocks) {
  const Samples source = noise(0.5, 0.3, 48000.0);
  const auto render = [&](int block) {
    CorvaneMonoEffect effect;
    effect.setSampleRate(48000.0);
    effect.setParameter(16, 1 / 15.0);  // the plain gain: coloured preamps draw noise by block
    for (int id : {192, 224, 80}) effect.setParameter(id, 1 / 15.0);
    std::vector<float> x(source.begin(), source.end());
    for (std::size_t at = 0; at < x.size();) {
      const int n = static_cast<int>(std::min<std::size_t>(static_cast<std::size_t>(block), x.size() - at));
      const float* in[4] = {x.data() + at, nullptr, nullptr, nullptr};
      float* out[2] = {x.data() + at, nullptr};
      effect.processFloat(in, out, n);
      at += static_cast<std::size_t>(n);
    }
    return x;
  };
  const auto expected = render(64);
  for (const int block : {1, 200, 512, 8192}) EXPECT_EQ(render(block), expected) << block;
}

TEST(RenderGuard, CatchesAnAllocation) {
  const RenderGuard guard;
  std::vector<int> taken(static_cast<std::size_t>(std::rand() % 2 + 1));
  EXPECT_GT(guard.violations(), 0);
}

}  // namespace
}  // namespace corvane
