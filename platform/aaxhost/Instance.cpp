#include "platform/aaxhost/Instance.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <unordered_map>

#include "platform/aaxhost/HostSide.h"
#include "platform/aaxhost/PrivateFields.h"
#include "platform/aaxhost/RenderContext.h"

namespace corvane::aaxhost {

namespace {

constexpr std::uint32_t kLargestChunk = 64 << 20;  // far above any state; more is a wrong number
constexpr int kMostRounds = 1000;                  // a rule that answers a rule takes a few
constexpr std::size_t kChunkHeader = offsetof(AAX_SPlugInChunk, fData);
constexpr std::size_t kSeatsPerCall = 64;  // records of one call of a process function stand on the stack

void check(AAX_Result result, const char* what) {
  if (result != AAX_SUCCESS) throw HostError(std::string(what) + " failed with " + std::to_string(result));
}

template <typename T>
std::unique_ptr<T> made(T* (*factory)(), const char* what) {
  std::unique_ptr<T> object(factory ? factory() : nullptr);
  if (factory && !object) throw HostError(std::string("the factory of the ") + what + " made nothing");
  return object;
}

/// Memory of a chunk with room for `bytes` of data.
class ChunkMemory {
 public:
  explicit ChunkMemory(std::size_t bytes)
      : words((std::max(sizeof(AAX_SPlugInChunk), kChunkHeader + bytes) + 3) / 4),
        chunk(new (words.data()) AAX_SPlugInChunk{}) {}
  AAX_SPlugInChunk* get() const { return chunk; }
  char* data() { return reinterpret_cast<char*>(words.data()) + kChunkHeader; }

 private:
  std::vector<std::int32_t> words;
  AAX_SPlugInChunk* const chunk;
};

}  // namespace

// Members go in reverse order: window and direct data first, then what stands in the private fields, then the
// parameters object that frees them, then the library.
struct Instance::State {
  State(std::shared_ptr<Library> from, double rate, Mode hostMode);
  std::vector<ParameterInfo> listParameters() const;

  const std::shared_ptr<Library> library;
  const Mode mode;
  double sampleRateHz;
  HostSide host;
  std::unique_ptr<AAX_IEffectParameters> parameters;
  std::unique_ptr<PrivateFields> fields;
  std::unique_ptr<AAX_IEffectDirectData> directData;
  std::unique_ptr<AAX_IEffectGUI> gui;
  std::unique_ptr<RenderContext> context;
  std::vector<ParameterInfo> infos;
  std::string bypass;
};

Instance::State::State(std::shared_ptr<Library> from, double rate, Mode hostMode)
    : library(std::move(from)),
      mode(hostMode),
      sampleRateHz(rate),
      host(library->description(), static_cast<float>(rate)) {
  if (!std::isfinite(rate) || rate <= 0.0) throw HostError("the sample rate must be above 0 Hz");
  const Description& told = library->description();
  parameters = made(told.createParameters, "parameters object");
  if (!parameters) throw HostError("there is no factory of the parameters object");
  check(parameters->Initialize(&host, &host), "initialising the parameters object");
  directData = made(told.createDirectData, "direct data");
  if (directData) check(directData->Initialize(&host, parameters.get()), "initialising the direct data");
  gui = made(told.createGui, "window");
  if (gui) check(gui->Initialize(&host, parameters.get()), "initialising the window");
  fields = std::make_unique<PrivateFields>(told, *parameters, mode);
  context = std::make_unique<RenderContext>(told, host, *fields, mode);
  infos = listParameters();
  AAX_CString text;
  if (parameters->GetMasterBypassParameter(&text) == AAX_SUCCESS) bypass = text.Get();
  host.serve(*parameters, gui.get());
}

std::vector<ParameterInfo> Instance::State::listParameters() const {
  std::int32_t count = 0;
  check(parameters->GetNumberOfParameters(&count), "counting the parameters");
  std::vector<ParameterInfo> list;
  for (std::int32_t k = 0; k < count; ++k) {
    ParameterInfo info;
    AAX_CString text;
    check(parameters->GetParameterIDFromIndex(k, &text), "asking for a parameter's identifier");
    info.id = text.Get();
    check(parameters->GetParameterName(info.id.c_str(), &text), "asking for a parameter's name");
    info.name = text.Get();
    AAX_CBoolean automatable = 0;
    parameters->GetParameterIsAutomatable(info.id.c_str(), &automatable);
    info.automatable = automatable != 0;
    parameters->GetParameterNumberOfSteps(info.id.c_str(), &info.steps);
    parameters->GetParameterDefaultNormalizedValue(info.id.c_str(), &info.defaultValue);
    list.push_back(std::move(info));
  }
  return list;
}

Instance::ControlScope::ControlScope(const Instance& instance) : held(instance) { held.state->host.enter(); }
Instance::ControlScope::~ControlScope() { held.state->host.leave(); }

Instance::Instance(std::shared_ptr<Library> library, double sampleRateHz, Mode mode) try
    : state(std::make_unique<State>(std::move(library), sampleRateHz, mode)) {
  const ControlScope first(*this);  // its end sends every value
} catch (const HostError& error) {
  throw HostError(std::string("the instance cannot be made: ") + error.what());
}

Instance::~Instance() = default;

const Library& Instance::library() const { return *state->library; }
Mode Instance::mode() const { return state->mode; }
const std::vector<ParameterInfo>& Instance::parameters() const { return state->infos; }
const std::string& Instance::bypassId() const { return state->bypass; }
AAX_IEffectParameters& Instance::effectParameters() const { return *state->parameters; }
AAX_IEffectGUI* Instance::effectGui() const { return state->gui.get(); }

AAX_Result Instance::value(const std::string& id, double* normalised) const {
  const ControlScope turn(*this);
  return state->parameters->GetParameterNormalizedValue(id.c_str(), normalised);
}

AAX_Result Instance::text(const std::string& id, double normalised, std::string* shown,
                          std::int32_t maxLength) const {
  const ControlScope turn(*this);
  AAX_CString text;
  const AAX_Result result =
      state->parameters->GetParameterStringFromValue(id.c_str(), normalised, &text, maxLength);
  if (result == AAX_SUCCESS) *shown = text.Get();
  return result;
}

AAX_Result Instance::automate(const std::string& id, double normalised) {
  const ControlScope turn(*this);
  return state->host.automate(id, normalised);
}

AAX_Result Instance::edit(const std::string& id, double normalised) {
  const ControlScope turn(*this);
  if (const AAX_Result result = touch(id); result != AAX_SUCCESS) return result;
  const AAX_Result result = set(id, normalised);
  const AAX_Result released = release(id);
  return result != AAX_SUCCESS ? result : released;
}

AAX_Result Instance::touch(const std::string& id) {
  const ControlScope turn(*this);
  return state->parameters->TouchParameter(id.c_str());
}

AAX_Result Instance::set(const std::string& id, double normalised) {
  if (std::isnan(normalised)) return AAX_ERROR_INVALID_INTERNAL_DATA;
  const ControlScope turn(*this);
  return state->parameters->SetParameterNormalizedValue(id.c_str(), std::clamp(normalised, 0.0, 1.0));
}

AAX_Result Instance::release(const std::string& id) {
  const ControlScope turn(*this);
  return state->parameters->ReleaseParameter(id.c_str());
}

AAX_Result Instance::setBypass(bool on) { return automate(state->bypass, on ? 1.0 : 0.0); }

int Instance::idle() {
  const ControlScope turn(*this);
  return state->host.answerRequests();
}

bool Instance::settle() {
  const ControlScope turn(*this);
  for (int rounds = 0; rounds < kMostRounds; ++rounds)
    if (idle() == 0) return true;
  return false;
}

int Instance::waitingRequests() const {
  const ControlScope turn(*this);
  return state->host.waitingRequests();
}

AAX_Result Instance::timer() {
  const ControlScope turn(*this);
  const AAX_Result first =
      state->directData ? state->directData->TimerWakeup(state->fields.get()) : AAX_Result{AAX_SUCCESS};
  const AAX_Result second = state->gui ? state->gui->TimerWakeup() : AAX_Result{AAX_SUCCESS};
  return first != AAX_SUCCESS ? first : second;
}

std::vector<AAX_CTypeID> Instance::chunkIds() const {
  const ControlScope turn(*this);
  std::int32_t count = 0;
  std::vector<AAX_CTypeID> ids;
  if (state->parameters->GetNumberOfChunks(&count) != AAX_SUCCESS) return ids;
  for (std::int32_t k = 0; k < count; ++k) {
    AAX_CTypeID id = 0;
    if (state->parameters->GetChunkIDFromIndex(k, &id) == AAX_SUCCESS) ids.push_back(id);
  }
  return ids;
}

AAX_Result Instance::getChunk(AAX_CTypeID id, Chunk* chunk) const {
  const ControlScope turn(*this);
  std::uint32_t size = 0;
  if (const AAX_Result result = state->parameters->GetChunkSize(id, &size); result != AAX_SUCCESS)
    return result;
  if (size > kLargestChunk) return AAX_ERROR_INCORRECT_CHUNK_SIZE;
  const Description& told = state->library->description();
  const auto word = [&told](AAX_EProperty property) {
    return static_cast<AAX_CTypeID>(told.property(property));
  };
  ChunkMemory memory(size);
  AAX_SPlugInChunk& header = *memory.get();
  header.fSize = static_cast<std::int32_t>(size);
  header.fManufacturerID = word(AAX_eProperty_ManufacturerID);
  header.fProductID = word(AAX_eProperty_ProductID);
  header.fPlugInID = word(AAX_eProperty_PlugInID_Native);
  header.fChunkID = id;
  if (const AAX_Result result = state->parameters->GetChunk(id, &header); result != AAX_SUCCESS)
    return result;
  if (header.fSize < 0 || static_cast<std::uint32_t>(header.fSize) > size)
    return AAX_ERROR_INCORRECT_CHUNK_SIZE;
  chunk->id = header.fChunkID;
  chunk->version = header.fVersion;
  chunk->manufacturer = header.fManufacturerID;
  chunk->product = header.fProductID;
  chunk->plugIn = header.fPlugInID;
  chunk->name.assign(header.fName, strnlen(header.fName, sizeof header.fName));
  chunk->data.assign(memory.data(), memory.data() + header.fSize);
  return AAX_SUCCESS;
}

AAX_Result Instance::setChunk(const Chunk& chunk) {
  if (chunk.data.size() > kLargestChunk) return AAX_ERROR_INCORRECT_CHUNK_SIZE;
  ChunkMemory memory(chunk.data.size());
  AAX_SPlugInChunk& header = *memory.get();
  header.fSize = static_cast<std::int32_t>(chunk.data.size());
  header.fVersion = chunk.version;
  header.fManufacturerID = chunk.manufacturer;
  header.fProductID = chunk.product;
  header.fPlugInID = chunk.plugIn;
  header.fChunkID = chunk.id;
  chunk.name.copy(header.fName, sizeof header.fName - 1);
  std::copy(chunk.data.begin(), chunk.data.end(), memory.data());
  const ControlScope turn(*this);
  return state->parameters->SetChunk(chunk.id, &header);
}

AAX_Result Instance::meter(AAX_CTypeID id, float* value) const {
  return state->host.GetCurrentMeterValue(id, value);
}

std::int32_t Instance::latencySamples() const {
  std::int32_t samples = 0;
  state->host.GetSignalLatency(&samples);
  return samples;
}

double Instance::sampleRate() const {
  const ControlScope turn(*this);
  return state->sampleRateHz;
}

AAX_Result Instance::setSampleRate(double hz) {
  if (!std::isfinite(hz) || hz <= 0.0) return AAX_ERROR_INVALID_INTERNAL_DATA;
  const ControlScope turn(*this);
  state->sampleRateHz = hz;
  state->host.setSampleRate(static_cast<float>(hz));
  return AAX_SUCCESS;
}

AAX_Result Instance::refillField(AAX_CFieldIndex field) {
  const ControlScope turn(*this);
  return state->fields->refill(field);
}

std::span<const float> Instance::renderedMeters() const { return state->host.meters().rendered(); }

void Instance::render(const Block& block) {
  const Seat seat{this, block};
  aaxhost::render({&seat, 1});
}

void render(std::span<const Seat> seats) {
  std::array<void* const*, kSeatsPerCall> records;
  while (!seats.empty()) {
    // as many as one process function serves at once
    const AAX_CProcessProc process = seats.front().instance->library().description().process;
    std::size_t count = 0;
    while (count < std::min(seats.size(), kSeatsPerCall) &&
           seats[count].instance->library().description().process == process) {
      RenderContext& context = *seats[count].instance->state->context;
      context.begin(seats[count].block);
      records[count++] = context.record();
    }
    process(records.data(), records.data() + count);
    for (std::size_t k = 0; k < count; ++k) seats[k].instance->state->context->end();
    seats = seats.subspan(count);
  }
}

}  // namespace corvane::aaxhost
