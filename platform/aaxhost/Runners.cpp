#include "platform/aaxhost/Runners.h"

#include <algorithm>
#include <chrono>

namespace corvane::aaxhost {

namespace {
using Clock = std::chrono::steady_clock;

Clock::duration period(double seconds) {
  return std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(seconds));
}
}  // namespace

OfflineRunner::OfflineRunner(double sampleRateHz, double timerSeconds)
    : samplesPerTimer(std::max(1.0, sampleRateHz * timerSeconds)) {}

void OfflineRunner::run(std::span<const Seat> seats) {
  const bool due = untilTimer <= 0.0;
  std::int32_t frames = 0;
  for (const Seat& seat : seats) {
    seat.instance->idle();
    if (due) seat.instance->timer();
    frames = std::max(frames, seat.block.frames);
  }
  while (untilTimer <= 0.0) untilTimer += samplesPerTimer;
  untilTimer -= frames;
  render(seats);
}

void OfflineRunner::run(Instance& instance, const Block& block) {
  const Seat seat{&instance, block};
  run({&seat, 1});
}

TimerThread::TimerThread(std::vector<Instance*> instances, double timerSeconds)
    : all(std::move(instances)), seconds(timerSeconds), thread([this] {
        for (auto next = Clock::now(); going; std::this_thread::sleep_until(next += period(seconds)))
          for (Instance* instance : all) {
            instance->idle();
            instance->timer();
          }
      }) {}

TimerThread::~TimerThread() {
  going = false;
  thread.join();
}

AudioThread::AudioThread(double sampleRateHz, int frames, std::function<void()> render)
    : work(std::move(render)), seconds(frames / sampleRateHz), thread([this] {
        for (auto next = Clock::now(); going; std::this_thread::sleep_until(next += period(seconds))) {
          ++begun;
          work();
          next = std::max(next, Clock::now() - period(seconds));  // what was missed is not made up for
        }
      }) {}

AudioThread::~AudioThread() {
  going = false;
  thread.join();
}

}  // namespace corvane::aaxhost
