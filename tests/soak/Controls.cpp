#include "tests/soak/Controls.h"

#include <fmt/format.h>

#include <chrono>

namespace corvane::soak {

namespace {

constexpr AAX_CTypeID kState = AAX_TypeID("All ");
constexpr std::size_t kStateBytes = 19217;
constexpr float kMeterOffset = 0.1f, kNoMeter = 1.2345678f;
constexpr std::size_t kPlainMeters = 3;

EditorDesk& deskOf(const aaxhost::Instance& strip) {
  EditorDesk* desk = nullptr;
  std::uint32_t written = 0;
  if (strip.effectParameters().GetCustomData(EditorDesk::kCustomDataId, sizeof desk, &desk, &written) !=
      AAX_SUCCESS)
    throw aaxhost::HostError("the library has no desk of the window");
  return *desk;
}

}  // namespace

ControlThread::ControlThread(std::vector<aaxhost::Instance*> all, std::uint64_t seed)
    : strips(std::move(all)), random(seed), thread([this] { work(); }) {}

ControlThread::~ControlThread() { finish(); }

std::string ControlThread::finish() {
  going = false;
  if (thread.joinable()) thread.join();
  return fault;
}

void ControlThread::work() {
  while (going) {
    operateOn(*strips[static_cast<std::size_t>(chance(static_cast<int>(strips.size())))]);
    ++done;
    std::this_thread::sleep_for(std::chrono::microseconds(chance(2000)));
  }
}

void ControlThread::wrong(const std::string& what) {
  if (fault.empty()) fault = what;
}

double ControlThread::value() {
  switch (chance(8)) {
    case 0: return 0.0;
    case 1: return 1.0;
    default: return static_cast<double>(chance(10001)) / 10000.0;
  }
}

void ControlThread::operateOn(aaxhost::Instance& strip) {
  const int what = chance(100);
  if (what < 70) return moveParameter(strip);
  if (what < 85) {
    const aaxhost::Instance::ControlScope turn(strip);
    return atWindow(deskOf(strip));
  }
  if (what < 90) return keepState(strip);
  readMeters(strip);
}

/// Mostly a host's automation; a person's edit as often as people manage.
void ControlThread::moveParameter(aaxhost::Instance& strip) {
  const auto& parameters = strip.parameters();
  const std::string& id =
      parameters[static_cast<std::size_t>(chance(static_cast<int>(parameters.size())))].id;
  const AAX_Result result = chance(4) ? strip.automate(id, value()) : strip.edit(id, value());
  if (result != AAX_SUCCESS) wrong(fmt::format("{} cannot be moved: {}", id, result));
}

void ControlThread::atWindow(EditorDesk& desk) {
  switch (chance(10)) {
    case 0: return desk.undo();
    case 1: return desk.redo();
    case 2: return desk.nextPreset();
    case 3: return desk.switchMemory(chance(2) != 0);
    case 4: return desk.copyMemory();
    case 5: return desk.edit(chance(360), value());
    default: break;
  }
  constexpr int kPresets = 235;
  if (!desk.selectPreset({0, 0, chance(kPresets)})) wrong(desk.problem());
}

void ControlThread::keepState(aaxhost::Instance& strip) {
  aaxhost::Chunk& place = kept[static_cast<std::size_t>(chance(static_cast<int>(kept.size())))];
  if (place.data.empty() || chance(2)) {
    if (strip.getChunk(kState, &place) != AAX_SUCCESS || place.data.size() != kStateBytes)
      wrong(fmt::format("a state has {} bytes", place.data.size()));
  } else if (const AAX_Result result = strip.setChunk(place); result != AAX_SUCCESS) {
    wrong(fmt::format("a state that a strip gave is refused: {}", result));
  }
}

/// A reading is whole or it is outside of what a meter can show.
void ControlThread::readMeters(aaxhost::Instance& strip) {
  const auto& meters = strip.library().description().meters;
  for (std::size_t k = 0; k < meters.size(); ++k) {
    float reading = -1.0f;
    strip.meter(meters[k].id, &reading);
    const bool none = reading == 0.0f || reading == kNoMeter;
    const bool shown =
        k < kPlainMeters ? reading >= 0.0f : reading >= kMeterOffset && reading <= 1.0f + kMeterOffset;
    if (!none && !shown) wrong(fmt::format("meter {} of {} reads {}", k, meters[k].name, reading));
  }
  if (strip.latencySamples() != 0) wrong(fmt::format("latency of {} samples", strip.latencySamples()));
}

}  // namespace corvane::soak
