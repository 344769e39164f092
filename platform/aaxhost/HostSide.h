#pragma once

#include <atomic>
#include <deque>
#include <mutex>
#include <set>
#include <string>
#include <unordered_map>

#include "platform/aax/AAX_IEffect.h"
#include "platform/aaxhost/MeterBoard.h"
#include "platform/aaxhost/PacketQueue.h"

namespace corvane::aaxhost {

/// What an instance sees of its host: requests and their answers, packets, latency, meters. [control]
///
/// Control threads take turns by `enter` and `leave`; the plug-in's own calls come from inside such a turn or
/// take one themselves. At the end of the outermost turn, changes become packets and go to the render side.
class HostSide final : public AAX_IController, public AAX_IAutomationDelegate {
 public:
  HostSide(const Description& description, float sampleRateHz);

  /// The object that gets the answers; from here on.
  void serve(AAX_IEffectParameters& parametersObject, AAX_IEffectGUI* guiObject);
  void enter();
  void leave();

  int answerRequests();
  int waitingRequests() const { return static_cast<int>(requests.size()); }
  AAX_Result automate(const std::string& id, double normalised);

  /// Packets for the data ports, by port: data ports counted in order of their declaration.
  PacketQueue& packets() { return queue; }
  MeterBoard& meters() { return board; }
  /// Hz. [any]
  float sampleRate() const { return rate.load(std::memory_order_relaxed); }
  void setSampleRate(float hz) { rate.store(hz, std::memory_order_relaxed); }

  AAX_Result GetSampleRate(float* hz) const override;
  AAX_Result GetSignalLatency(std::int32_t* samples) const override;
  AAX_Result SetSignalLatency(std::int32_t samples) override;
  AAX_Result PostPacket(AAX_CFieldIndex field, const void* payload, std::uint32_t size) override;
  AAX_Result GetCurrentMeterValue(AAX_CTypeID meter, float* value) const override;

  AAX_Result RegisterParameter(AAX_CParamID id) override;
  AAX_Result PostTouchRequest(AAX_CParamID id) override;
  AAX_Result PostSetValueRequest(AAX_CParamID id, double normalised) override;
  AAX_Result PostReleaseRequest(AAX_CParamID id) override;
  AAX_Result GetTouchState(AAX_CParamID id, AAX_CBoolean* touched) override;

 private:
  struct Request {
    std::string id;
    double normalised = 0.0;
    bool touched = false;     ///< when it was made
    std::uint64_t round = 0;  ///< of answers; the round under way leaves what it provokes to the next
  };
  struct Port {
    std::uint32_t number = 0, bytes = 0;
  };
  struct Turn {
    explicit Turn(HostSide& host) : side(host) { side.enter(); }
    ~Turn() { side.leave(); }
    HostSide& side;
  };

  AAX_Result update(const Request& request, AAX_EUpdateSource source);
  bool isTouched(const std::string& id) const;

  mutable std::recursive_mutex mutex;
  int depth = 0;
  bool changed = false;  ///< values since the last packets
  AAX_IEffectParameters* parameters = nullptr;
  AAX_IEffectGUI* gui = nullptr;

  std::deque<Request> requests;  ///< one per parameter at most, the last
  std::uint64_t round = 0;
  std::unordered_map<std::string, int> touches;  ///< how many hold a parameter
  const Request* underWay = nullptr;
  std::int32_t latency = 0;

  std::unordered_map<AAX_CFieldIndex, Port> ports;
  PacketQueue queue;
  mutable MeterBoard board;  // a read restarts peaks
  std::atomic<float> rate;
};

}  // namespace corvane::aaxhost
