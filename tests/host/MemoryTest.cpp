#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <memory>
#include <optional>

#include "core/CorvaneMonoEffect.h"
#include "host/Fields.h"
#include "host/QDX_QcMN_1200_AAX_Parameters_Wrapper.h"
#include "tests/control/Home.h"
#include "tests/rig/FailingMemory.h"

// Memory that runs out while a host opens an instance, stores it or restores it: the host hears an error, and
// no exception goes through its code.

namespace corvane::host {
namespace {

using rig::kMostAllocations;
using rig::withAllocations;

/// A host that needs no memory of its own.
struct Host final : AAX_IController, AAX_IAutomationDelegate {
  AAX_Result GetSampleRate(float* hz) const override { return *hz = 48000.0F, AAX_SUCCESS; }
  AAX_Result GetSignalLatency(std::int32_t* samples) const override { return *samples = 0, AAX_SUCCESS; }
  AAX_Result SetSignalLatency(std::int32_t) override { return AAX_SUCCESS; }
  AAX_Result PostPacket(AAX_CFieldIndex, const void*, std::uint32_t) override { return AAX_SUCCESS; }
  AAX_Result GetCurrentMeterValue(AAX_CTypeID, float*) const override { return AAX_ERROR_UNIMPLEMENTED; }
  AAX_Result RegisterParameter(AAX_CParamID) override { return AAX_SUCCESS; }
  AAX_Result PostTouchRequest(AAX_CParamID) override { return AAX_SUCCESS; }
  AAX_Result PostSetValueRequest(AAX_CParamID, double) override { return ++requests, AAX_SUCCESS; }
  AAX_Result PostReleaseRequest(AAX_CParamID) override { return AAX_SUCCESS; }
  AAX_Result GetTouchState(AAX_CParamID, AAX_CBoolean* state) override { return *state = 0, AAX_SUCCESS; }
  int requests = 0;
};

struct Memory : testing::Test {
  using Parameters = QDX_QcMN_1200_AAX_Parameters_Wrapper;
  rig::Home home;
  Host host;
};

/// As the factory of the library makes one: nothing where it cannot be made.
std::unique_ptr<QDX_QcMN_1200_AAX_Parameters_Wrapper> opened(rig::Home& home) try {
  return std::make_unique<QDX_QcMN_1200_AAX_Parameters_Wrapper>(home.services);
} catch (const std::bad_alloc&) {
  return nullptr;
}

// One allocation in seven, as an instance makes thousands.
TEST_F(Memory, RunningOutWhileAnInstanceOpensIsAnError) {
  int withoutObject = 0, withoutParameters = 0;
  for (int count = 0;; count += 7) {
    ASSERT_LT(count, 20 * kMostAllocations);
    std::unique_ptr<Parameters> parameters;
    const AAX_Result result = withAllocations(count, [&] {
      parameters = opened(home);
      return parameters ? parameters->Initialize(&host, &host) : AAX_ERROR_NULL_OBJECT;
    });
    if (result == AAX_SUCCESS) break;
    ++(parameters ? withoutParameters : withoutObject);
  }
  EXPECT_GE(withoutObject, 1);
  EXPECT_GE(withoutParameters, 1);
}

TEST_F(Memory, RunningOutForTheProcessorsFieldIsAnError) {
  const auto parameters = opened(home);
  ASSERT_EQ(parameters->Initialize(&host, &host), AAX_SUCCESS);
  const auto bytes = std::align_val_t{alignof(CorvaneMonoEffect)};
  void* const field = ::operator new(sizeof(CorvaneMonoEffect), bytes);
  int failures = 0;
  for (int count = 0;; count += 3) {
    ASSERT_LT(count, kMostAllocations);
    const AAX_Result result = withAllocations(
        count, [&] { return parameters->ResetFieldData(kProcessorField, field, sizeof(CorvaneMonoEffect)); });
    if (result == AAX_SUCCESS) break;
    ++failures;
  }
  EXPECT_GE(failures, 1);
  EXPECT_EQ(parameters->FreeFieldData(kProcessorField, field, sizeof(CorvaneMonoEffect)), AAX_SUCCESS);
  ::operator delete(field, bytes);
}

TEST_F(Memory, RunningOutOverAChunkIsAnErrorAndChangesNothing) {
  const auto parameters = opened(home);
  ASSERT_EQ(parameters->Initialize(&host, &host), AAX_SUCCESS);
  constexpr AAX_CTypeID kState = AAX_TypeID("All ");
  alignas(AAX_SPlugInChunk) std::array<char, 32768> memory{};
  auto* const chunk = reinterpret_cast<AAX_SPlugInChunk*>(memory.data());
  std::uint32_t size = 0;
  const auto untilItSucceeds = [&](auto work) {
    int failures = 0;
    for (int count = 0; withAllocations(count, work) != AAX_SUCCESS; ++count) {
      ++failures;
      if (count > kMostAllocations) return -1;
    }
    return failures;
  };
  EXPECT_GE(untilItSucceeds([&] { return parameters->GetChunkSize(kState, &size); }), 1);
  ASSERT_LT(size + sizeof(AAX_SPlugInChunk), memory.size());
  EXPECT_GE(untilItSucceeds([&] { return parameters->GetChunk(kState, chunk); }), 0);
  int failures = 0;
  for (int count = 0;; ++count) {
    ASSERT_LT(count, kMostAllocations);
    host.requests = 0;
    if (withAllocations(count, [&] { return parameters->SetChunk(kState, chunk); }) == AAX_SUCCESS) break;
    EXPECT_EQ(host.requests, 0) << count;
    ++failures;
  }
  EXPECT_GE(failures, 2) << "the block and the bank that is read";
}

}  // namespace
}  // namespace corvane::host
