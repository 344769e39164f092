#include <clocale>
#include <ctime>
#include <random>

#include "tests/lv2/Settings.h"

// Hosts that call things in orders of their own, or leave us alone for a long time.

namespace corvane::lv2 {
namespace {

class Lv2Life : public ::testing::Test {
 protected:
  Binary binary;
  const Floats x = programme(2400);
};

TEST_F(Lv2Life, ActivationAndStateMayComeInAnyOrder) {
  RawStrip model(binary);
  fillRackUncoloured(model, 5);
  rest(model);
  const Floats expected = model.render(x);
  const Saved saved = model.save();
  using Step = void (*)(RawStrip&, const Saved&);
  const auto restoreIt = [](RawStrip& strip, const Saved& state) {
    EXPECT_EQ(strip.restore(state), LV2_STATE_SUCCESS);
  };
  const auto activateIt = [](RawStrip& strip, const Saved&) { strip.activate(); };
  const auto deactivateIt = [](RawStrip& strip, const Saved&) { strip.descriptor.deactivate(strip.handle); };
  const auto runIt = [](RawStrip& strip, const Saved&) { strip.render(programme(700), 100); };
  const std::vector<std::vector<Step>> orders{
      {},  // no activation at all
      {activateIt, activateIt},
      {restoreIt, activateIt},
      {activateIt, restoreIt},
      {activateIt, runIt, restoreIt},
      {restoreIt, runIt, restoreIt, deactivateIt, activateIt},
      {activateIt, deactivateIt, deactivateIt},
  };
  for (std::size_t k = 0; k < orders.size(); ++k) {
    RawStrip strip(binary);
    strip.controls = model.controls;
    for (const Step step : orders[k]) step(strip, saved);
    rest(strip);
    EXPECT_EQ(strip.render(x), expected) << "order " << k;
  }
}

TEST_F(Lv2Life, InstancesComeAndGoInAnyOrder) {
  std::mt19937 dice(9);
  RawStrip model(binary);
  fillRackUncoloured(model, 2);
  const Floats expected = model.render(x);
  std::vector<std::unique_ptr<RawStrip>> alive;
  for (int round = 0; round < 60; ++round) {
    if (alive.size() < 4 || dice() % 2 == 0) {
      alive.push_back(std::make_unique<RawStrip>(binary, 48000.0, dice() % 2 == 0));
      fillRackUncoloured(*alive.back(), 2);
      if (dice() % 2 == 0) {
        EXPECT_EQ(alive.back()->render(x), expected);
      }
    } else {
      alive.erase(alive.begin() + static_cast<long>(dice() % alive.size()));
    }
  }
}

TEST(Lv2Library, ComesAndGoes) {
  Floats sounds[2];
  for (Floats& sound : sounds) {
    const Binary binary;
    RawStrip strip(binary);
    fillRackUncoloured(strip, 2);
    sound = strip.render(programme(2400));
  }
  EXPECT_EQ(sounds[0], sounds[1]);
}

TEST_F(Lv2Life, HearsNothingOfTheHostsLocale) {
  RawStrip model(binary);
  fillRackUncoloured(model, 5);
  rest(model);
  const Floats expected = model.render(x);
  const Saved saved = model.save();
  const std::string before = std::setlocale(LC_ALL, nullptr);
  std::setlocale(LC_ALL, "de_DE.UTF-8");  // where it is not installed the test still holds
  {
    RawStrip strip(binary);
    strip.controls = model.controls;
    EXPECT_EQ(strip.restore(saved), LV2_STATE_SUCCESS);
    rest(strip);
    EXPECT_EQ(strip.render(x), expected);
    for (const auto& [key, property] : saved.properties)
      EXPECT_EQ(strip.save().properties.at(key).bytes, property.bytes);
  }
  std::setlocale(LC_ALL, before.c_str());
}

double cpuSeconds() {
  timespec now{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) + 1e-9 * static_cast<double>(now.tv_nsec);
}

TEST_F(Lv2Life, SixtySecondsOfSilenceGrowNoDearer) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
  GTEST_SKIP() << "what instrumented code costs says nothing";
#endif
  constexpr double kRateHz = 22050.0;
  for (const bool alone : {false, true}) {
    RawStrip aged(binary, kRateHz), fresh(binary, kRateHz);
    for (RawStrip* strip : {&aged, &fresh}) {
      fillRack(*strip, 0);
      if (alone)  // nothing before the limiter: its silence is exact
        for (const char* place : {"pre", "flt", "gate", "comp", "eq"})
          strip->control(place + std::string("_type")) = 0.0f;
      strip->render(programme(22050));
    }
    const Floats silence(441, 0.0f);
    Floats out(441);
    for (RawStrip* strip : {&aged, &fresh}) strip->connect(silence.data(), out.data());
    for (int block = 0; block < 59 * 50; ++block) aged.run(441);
    // side by side and the quickest of many: other programs share the machine
    double last = 1.0, first = 1.0;
    for (int block = 0; block < 50; ++block)
      for (const auto& [strip, quickest] : {std::pair{&fresh, &first}, {&aged, &last}}) {
        const double start = cpuSeconds();
        strip->run(441);
        *quickest = std::min(*quickest, cpuSeconds() - start);
      }
    EXPECT_LE(last, 1.2 * first) << (alone ? "a limiter" : "all") << ": " << last / first;
  }
}

}  // namespace
}  // namespace corvane::lv2
