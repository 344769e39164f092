#include <fmt/format.h>
#include <malloc.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>

#include "tests/rig/SystemCallGuard.h"
#include "tests/soak/Controls.h"
#include "tests/soak/Strips.h"

// Ten live strips at 96 kHz, one audio thread, a timer thread, and three threads that move parameters, choose
// presets, take back, store and restore, for as long as one likes. Fails for what is ours; a block that came
// late because the machine had other work is told and no fault.

namespace corvane::soak {
namespace {

constexpr std::size_t kControlThreads = 3;
constexpr int kLaps = 8;                         // memory is compared at their ends, when control rests
constexpr double kLargestGrowthBytes = 1 << 20;  // in use by the program, from the first lap's end
constexpr double kLargestRssBytes = 16 << 20;    // held of the system: pages come in pieces
constexpr double kLargestDifference = 1e-6;      // -120 dB: filters keep a residue of what they heard
constexpr double kShare = 0.999;
constexpr auto kStuck = std::chrono::seconds(30);

struct Memory {
  double inUse = 0.0, rss = 0.0;  ///< bytes
};

Memory memoryNow() {
  std::ifstream statm("/proc/self/statm");
  double pages = 0.0, resident = 0.0;
  statm >> pages >> resident;
  const auto heap = mallinfo2();
  return {static_cast<double>(heap.uordblks + heap.hblkhd),
          resident * static_cast<double>(sysconf(_SC_PAGESIZE))};
}

class Soak {
 public:
  Soak(double soakSeconds, std::uint64_t soakSeed)
      : seconds(soakSeconds),
        seed(soakSeed),
        library(aaxhost::Library::load(std::getenv("CORVANE_PLUGIN"))),
        strips(library, static_cast<unsigned>(soakSeed)) {}

  int run() {
    fmt::print("soak: {} strips, {} Hz, blocks of {}, {} s, seed {}\n", Strips::kCount, kRateHz, kFrames,
               seconds, seed);
    std::fflush(stdout);
    runLaps();
    judgeRender();
    judgeMemory();
    const double difference = differenceFromNew(strips, library);
    fmt::print("afterwards, beside a new strip   {:.1e} of full scale\n", difference);
    expect(difference <= kLargestDifference, "a strip does not sound as a new one with the same state");
    fmt::print("{}\n", failures == 0 ? "ok" : fmt::format("FAILED: {}", failures));
    return failures == 0 ? 0 : 1;
  }

 private:
  void runLaps() {
    bool prepared = false;
    const aaxhost::TimerThread timer(strips.pointers());
    const aaxhost::AudioThread audio(kRateHz, kFrames, [this, prepared]() mutable {
      if (!prepared) watched = rig::SystemCallGuard::begin();
      prepared = true;
      strips.renderBlock();
    });
    for (int lap = 0; lap < kLaps; ++lap) {
      runLap(lap);
      ends.push_back(memoryNow());
    }
  }

  void runLap(int lap) {
    using Clock = std::chrono::steady_clock;
    std::vector<std::unique_ptr<ControlThread>> controls;
    for (std::size_t k = 0; k < kControlThreads; ++k)
      controls.push_back(std::make_unique<ControlThread>(
          strips.pointers(), seed * 1000 + static_cast<std::uint64_t>(lap) * kControlThreads + k));
    const auto end = Clock::now() + std::chrono::duration<double>(seconds / kLaps);
    long lastBlocks = strips.blocks, lastOperations = operations;
    auto lastMove = Clock::now();
    while (Clock::now() < end) {
      std::this_thread::sleep_for(std::chrono::milliseconds(20));
      long now = operations;
      for (const auto& control : controls) now += control->operations();
      if (strips.blocks != lastBlocks && now != lastOperations) {
        lastBlocks = strips.blocks, lastOperations = now, lastMove = Clock::now();
      } else if (Clock::now() - lastMove > kStuck) {
        fmt::print("FAILED: nothing has moved for {} s: the threads wait for each other\n", kStuck.count());
        std::fflush(stdout);
        std::_Exit(1);
      }
    }
    for (const auto& control : controls) {
      const std::string fault = control->finish();
      expect(fault.empty(), fmt::format("lap {}: {}", lap + 1, fault));
      operations += control->operations();
    }
  }

  void judgeRender() {
    const BlockTimes &wall = strips.wallTimes(), &thread = strips.threadTimes();
    const RenderFaults& faults = strips.faults();
    fmt::print("blocks                           {}, deadline {:.3f} ms; {} operations of control\n",
               wall.blocks(), kDeadlineMs, operations);
    fmt::print("by the clock                     worst {:.3f} ms, 99.9 % within {:.3f} ms, {} late\n",
               wall.worstMs(), wall.withinMs(kShare), wall.longerThan(kDeadlineMs));
    fmt::print("by the thread's own time         worst {:.3f} ms, 99.9 % within {:.3f} ms\n",
               thread.worstMs(), thread.withinMs(kShare));
    fmt::print("allocations and locks            {}\n", faults.guarded.load());
    if (watched)
      fmt::print("system calls                     {}\n", faults.systemCalls.load());
    else
      fmt::print("system calls                     not watched: this kernel cannot\n");
    fmt::print("blocks with no number            {}\n", faults.notFinite.load());
    expect(wall.blocks() > 0 && operations > 0, "nothing was done");
    expect(thread.withinMs(kShare) < kDeadlineMs, "99.9 % of the blocks take longer than their sound lasts");
    expect(faults.guarded == 0, "the render road allocates or locks");
    expect(faults.systemCalls == 0,
           fmt::format("the render road calls the system, first number {}", faults.firstCall.load()));
    expect(faults.notFinite == 0, "samples that are no number");
  }

  void judgeMemory() {
    const double growth = ends.back().inUse - ends.front().inUse, rss = ends.back().rss - ends.front().rss;
    fmt::print("memory since the first lap       {:+.0f} kB in use, {:+.0f} kB held\n", growth / 1024,
               rss / 1024);
    expect(growth <= kLargestGrowthBytes && rss <= kLargestRssBytes, "memory grows");
  }

  void expect(bool good, const std::string& otherwise) {
    if (good) return;
    ++failures;
    fmt::print("fault: {}\n", otherwise);
  }

  const double seconds;
  const std::uint64_t seed;
  const std::shared_ptr<aaxhost::Library> library;
  Strips strips;
  std::atomic<bool> watched = false;
  std::vector<Memory> ends;
  long operations = 0;
  int failures = 0;
};

}  // namespace
}  // namespace corvane::soak

int main(int argc, char** argv) {
  double seconds = 300.0;
  std::uint64_t seed = 1;
  CLI::App app("Ten live strips under everything that people and hosts do");
  app.add_option("--seconds", seconds)->capture_default_str()->check(CLI::PositiveNumber);
  app.add_option("--seed", seed)->capture_default_str();
  CLI11_PARSE(app, argc, argv);
  return corvane::soak::Soak(seconds, seed).run();
}
