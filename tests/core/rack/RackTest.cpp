#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <numeric>

#include "core/CorvaneMonoEffect.h"
#include "core/ParameterBank.h"
#include "tests/core/rack/ProbeModules.h"

namespace corvane {
namespace {

using probe::ProbeModule;
using Floats = std::vector<float>;

constexpr int kCompBase = 112, kLimBase = 192, kInsXBase = 256;

/// A strip of probes and a float host around it.
class Strip : public ::testing::Test {
 protected:
  Strip() {
    effect = std::make_unique<CorvaneMonoEffect>();
    forget();
  }

  void forget() {
    for (ProbeModule* module : ProbeModule::all)
      module->calls.clear(), module->blocks.clear(), module->keys.clear();
    ProbeModule::order.clear();
  }

  /// The fixed places' modules are made first, in order of the rack.
  static ProbeModule& fixed(int place) { return *ProbeModule::all[static_cast<std::size_t>(place)]; }
  /// Module of InsX by family name; `nth` among the family's variants.
  static ProbeModule& pooled(const std::string& name, int nth = 0) {
    for (ProbeModule* module : ProbeModule::all)
      if (module->name == name && module->base() == kInsXBase && nth-- == 0) return *module;
    throw std::logic_error("no such probe");
  }

  Floats run(Floats in, const Floats* key = nullptr, bool bypassed = false) {
    Floats out(in.size(), -99.0f);
    const float* inputs[4] = {in.data(), nullptr, key ? key->data() : nullptr, nullptr};
    float* outputs[2] = {out.data(), nullptr};
    if (bypassed)
      effect->processBypassedFloat(inputs, outputs, static_cast<int>(in.size()));
    else
      effect->processFloat(inputs, outputs, static_cast<int>(in.size()));
    return out;
  }
  static Floats ramp(std::size_t n) {
    Floats x(n);
    std::iota(x.begin(), x.end(), 1.0f);
    return x;
  }
  static std::vector<std::string> names() {
    std::vector<std::string> out;
    for (const ProbeModule* module : ProbeModule::order) out.push_back(module->name);
    return out;
  }
  void insertX(int index) { effect->setParameter(kInsXBase, index / 255.0); }
  double meter(int id) {
    double value = -1.0;
    effect->getMeter(id, &value);
    return value;
  }

  std::unique_ptr<CorvaneMonoEffect> effect;
};

using Names = std::vector<std::string>;

TEST_F(Strip, MakesEveryModuleOnceFixedPlacesFirst) {
  // 7 fixed; in this catalogue each insert's pool holds 21
  EXPECT_EQ(ProbeModule::all.size(), 7u + 2u * 21u);
  EXPECT_EQ(fixed(3).name, "comp");
  EXPECT_EQ(ProbeModule::all[7]->base(), kInsXBase);
  EXPECT_EQ(ProbeModule::all[7 + 21]->base(), 304);
  EXPECT_DOUBLE_EQ(pooled("flt", 2).received.at(kInsXBase), 3 / 15.0) << "a pooled module knows its variant";
  EXPECT_TRUE(pooled("dee").received.empty()) << "the special ones have none";
  effect.reset();
  EXPECT_TRUE(ProbeModule::all.empty());
}

TEST_F(Strip, CutsABlockIntoSubBlocksOf64AndKeepsEverySample) {
  const Floats in = ramp(200);
  EXPECT_EQ(run(in), in);
  EXPECT_EQ(fixed(0).blocks, (std::vector<int>{64, 64, 64, 8}));
  for (std::size_t n : {0u, 1u, 8192u}) EXPECT_EQ(run(ramp(n)), ramp(n));
}

TEST_F(Strip, RunsPlacesInOrderOfPosition) {
  run(ramp(8));
  EXPECT_EQ(names(), (Names{"pre", "flt", "gate", "comp", "eq", "lim", "mstr"}));
  forget();
  effect->setParameter(17, 1.0);   // Pre to the ninth place
  effect->setParameter(305, 0.0);  // InsY to the first
  effect->setParameter(304, 113 / 255.0);
  run(ramp(8));
  EXPECT_EQ(names(), (Names{"dee", "flt", "gate", "comp", "eq", "lim", "mstr", "pre"}));
}

TEST_F(Strip, TwoPlacesOnOnePositionLeaveTheLaterUntilRepaired) {
  effect->setParameter(17, 1 / 8.0);  // Pre onto the filters' position
  run(ramp(8));
  EXPECT_EQ(names().front(), "flt");
  EXPECT_EQ(names().size(), 6u);
  forget();
  effect->setParameter(49, 0.0);
  run(ramp(8));
  EXPECT_EQ(names(), (Names{"flt", "pre", "gate", "comp", "eq", "lim", "mstr"}));
  forget();
  effect->setParameter(17, 1.2);  // beyond the ninth position: dropped
  run(ramp(8));
  EXPECT_EQ(names().size(), 7u);
}

TEST_F(Strip, KeyFallsBackToTheMainInput) {
  const Floats main = ramp(70), key(70, 0.5f);
  run(main);
  EXPECT_EQ(fixed(0).keys, std::vector<double>(main.begin(), main.end()));
  forget();
  run(main, &key);
  EXPECT_EQ(fixed(0).keys, std::vector<double>(70, 0.5));
}

TEST_F(Strip, SoloWinsOverMuteAndMuteComesBackAfterIt) {
  effect->setParameter(kLimBase + 2, 1.0);
  EXPECT_FALSE(fixed(5).isActive());
  effect->setParameter(kCompBase + 3, 1.0);
  for (int place = 0; place < kFixedPlaces; ++place) EXPECT_EQ(fixed(place).isActive(), place == 3);
  effect->setParameter(kCompBase + 3, 0.0);
  for (int place = 0; place < kFixedPlaces; ++place) EXPECT_EQ(fixed(place).isActive(), place != 5);
}

TEST_F(Strip, MonitorCutsTheChainBehindItsModule) {
  fixed(5).reduction = 0.5;
  run(ramp(8));
  forget();
  effect->setParameter(kCompBase + 5, 1.0);
  run(ramp(8));
  EXPECT_EQ(names().back(), "comp");
  EXPECT_DOUBLE_EQ(meter(kTotalReductionMeterId), 0.5) << "the limiter's last reading stands";
  effect->setParameter(80 + 5, 1.0);  // the last one set is heard, until the whole mask is 0
  forget(), run(ramp(8));
  EXPECT_EQ(names().back(), "gate");
  effect->setParameter(80 + 5, 0.0);
  forget(), run(ramp(8));
  EXPECT_EQ(names().back(), "gate");
  effect->setParameter(kCompBase + 5, 0.0);
  forget(), run(ramp(8));
  EXPECT_EQ(names().back(), "mstr");
}

TEST_F(Strip, TypePositionMuteAndSoloStayInTheRack) {
  for (int offset : {1, 2, 3}) effect->setParameter(kCompBase + offset, 0.0);
  EXPECT_TRUE(fixed(3).calls.empty());
  for (int offset : {0, 4, 5, 16}) effect->setParameter(kCompBase + offset, 0.0);
  EXPECT_EQ(fixed(3).calls, (Names{"set 112", "set 116", "set 117", "set 128"}));
  forget();
  effect->setParameter(393, 1.0);  // a write to a meter is a command to its module
  EXPECT_EQ(fixed(6).calls, (Names{"set 393"}));
}

TEST_F(Strip, ReductionsInSeriesMultiply) {
  fixed(3).reduction = 0.5, fixed(5).reduction = 0.5;
  run(ramp(8));
  EXPECT_DOUBLE_EQ(meter(kTotalReductionMeterId), 0.75);
  pooled("comp").reduction = 0.5, pooled("gate").reduction = 0.5;
  insertX(33);  // a gate does not count
  run(ramp(8));
  EXPECT_DOUBLE_EQ(meter(kTotalReductionMeterId), 0.75);
  insertX(49);
  run(ramp(8));
  EXPECT_DOUBLE_EQ(meter(kTotalReductionMeterId), 0.875);
  double untouched = 7.0;
  EXPECT_FALSE(effect->getMeter(422, &untouched));
  EXPECT_FALSE(effect->getMeter(16, &untouched));
  EXPECT_EQ(untouched, 7.0);
}

TEST_F(Strip, MeterThatIsNoNumberReads0) {
  fixed(3).reduction = std::numeric_limits<double>::quiet_NaN();
  EXPECT_EQ(meter(377), 0.0);
}

// Inserts

TEST_F(Strip, VariantOfOneKindKeepsTheSettingsOfTheInsert) {
  insertX(49);
  effect->setParameter(kInsXBase + 16, 0.625);
  effect->setParameter(kInsXBase + 4, 1.0);
  insertX(51);
  ProbeModule& next = pooled("comp", 2);
  EXPECT_EQ(next.received.at(kInsXBase + 16), 0.625);
  EXPECT_EQ(next.received.at(kInsXBase + 4), 1.0);
  EXPECT_EQ(next.calls.front(), "rate");
  EXPECT_EQ(next.calls.back(), "reset");
  EXPECT_EQ(std::ranges::count(next.calls, "defaults"), 0);
}

TEST_F(Strip, ModuleOfAnotherKindGetsItsDefaultsAndTheBanksSideChain) {
  insertX(49);
  effect->setParameter(kInsXBase + 4, 1.0);
  insertX(113);
  EXPECT_EQ(pooled("dee").calls, (Names{"rate", "defaults", "set 260", "set 261", "reset"}));
  EXPECT_EQ(pooled("dee").received.at(kInsXBase + 4), 1.0);
  insertX(114);  // special to special: defaults all the same
  EXPECT_EQ(pooled("deh").calls, (Names{"rate", "defaults", "set 260", "set 261", "reset"}));
}

TEST_F(Strip, IndexInForceResetsMetersAndNothingElse) {
  insertX(49);
  forget();
  insertX(49);
  EXPECT_EQ(pooled("comp").calls, (Names{"meters"}));
}

TEST_F(Strip, IndexWithoutAModuleLeavesThePlaceEmpty) {
  insertX(49);
  effect->setParameter(kInsXBase, 0.9023);
  forget();
  EXPECT_EQ(run(ramp(8)), ramp(8));
  EXPECT_EQ(names().size(), 7u);
  EXPECT_EQ(meter(399), 0.0);
}

TEST_F(Strip, ModuleSwitchedInRunsAtTheRateSetWhileItWasOut) {
  EXPECT_TRUE(effect->setSampleRate(96000.0));
  insertX(65);
  EXPECT_EQ(pooled("eq").rate(), 96000.0);
  EXPECT_EQ(fixed(0).rate(), 96000.0);
  forget();
  EXPECT_TRUE(effect->setSampleRate(96000.0));
  EXPECT_TRUE(fixed(0).calls.empty()) << "the same rate again does nothing";
  EXPECT_FALSE(effect->setSampleRate(22050.0));
  EXPECT_EQ(fixed(0).rate(), 44100.0);
  EXPECT_FALSE(effect->setSampleRate(768000.0));
  EXPECT_EQ(fixed(0).rate(), 384000.0);
}

TEST_F(Strip, MutedPlaceMutesWhatIsSwitchedIntoIt) {
  effect->setParameter(kInsXBase + 2, 1.0);
  insertX(49);
  EXPECT_FALSE(pooled("comp").isActive());
}

// On, off and bypass

TEST_F(Strip, ProcessOffFadesIn184SamplesAndThenTheOutputIsTheInput) {
  fixed(0).gain = 0.0;  // processed signal is silence, so the output shows the share of the dry one
  const Floats in(400, 1.0f);
  run(in);
  effect->setParameter(kProcessId, 0.0);
  const Floats fading = run(in);
  const auto dryFrom = std::ranges::find(fading, 1.0f) - fading.begin();
  EXPECT_EQ(dryFrom, 184 - 1);
  EXPECT_TRUE(std::ranges::is_sorted(fading));
  EXPECT_EQ(meter(kTotalReductionMeterId), 0.0);
  forget();
  EXPECT_EQ(run(ramp(300)), ramp(300));
  EXPECT_TRUE(ProbeModule::order.empty()) << "an idle strip runs no module";
  EXPECT_EQ(fixed(2).calls, (Names{"meters"}));

  effect->setParameter(kProcessId, 1.0);
  const Floats back = run(in);
  EXPECT_EQ(std::ranges::find(back, 0.0f) - back.begin(), 184 - 1);
}

TEST_F(Strip, BypassFadesOutPassesBitForBitAndFadesBackIn) {
  fixed(0).gain = 0.0;
  const Floats in(400, 1.0f);
  run(in);
  const Floats fading = run(in, nullptr, true);
  EXPECT_LT(fading.front(), 0.01f);
  EXPECT_EQ(fading.back(), 1.0f);
  Floats odd{1e-40f, std::numeric_limits<float>::infinity(), -0.0f, 3.0f};
  EXPECT_EQ(run(odd, nullptr, true), odd);
  const Floats back = run(in);
  EXPECT_GT(back.front(), 0.99f);
  EXPECT_EQ(back.back(), 0.0f);
}

TEST_F(Strip, BypassWhileOffStartsNoFade) {
  effect->setParameter(kProcessId, 0.0);
  run(Floats(400, 1.0f));
  forget();
  run(ramp(64), nullptr, true);
  EXPECT_TRUE(ProbeModule::order.empty());
}

TEST_F(Strip, FirstBlockHasNoFade) {
  fixed(0).gain = 0.0;
  EXPECT_EQ(run(Floats(10, 1.0f)), Floats(10, 0.0f));
}

TEST_F(Strip, SamplesThatAreNotFiniteEnterAs0) {
  const float inf = std::numeric_limits<float>::infinity();
  const float nan = std::numeric_limits<float>::quiet_NaN();
  const Floats in{1.0f, nan, inf, -inf, 2.0f};
  EXPECT_EQ(run(in, &in), (Floats{1.0f, 0.0f, 0.0f, 0.0f, 2.0f}));
  EXPECT_EQ(fixed(0).keys, (std::vector<double>{1.0, 0.0, 0.0, 0.0, 2.0}));
}

TEST_F(Strip, SurvivesMissingBuffersAndAbsurdValues) {
  effect->processFloat(nullptr, nullptr, 64);
  effect->setParameter(kProcessId, 0.0);
  run(Floats(400, 1.0f));
  effect->processFloat(nullptr, nullptr, 64);
  for (int id : {0, 16, 17, 18, 256, 257, 300, 360, 500, -3, 100000})
    for (double value : {std::numeric_limits<double>::quiet_NaN(), 1e300, -5.0})
      effect->setParameter(id, value);
  run(ramp(64));
}

TEST_F(Strip, TellsNoLatencyAndHalfASecond) {
  EXPECT_EQ(effect->getLatencySamples(), 0);
  effect->setSampleRate(96000.0);
  EXPECT_EQ(effect->getHalfSecondSamples(), 48000);
}

}  // namespace
}  // namespace corvane
