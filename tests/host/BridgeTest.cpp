#include <gtest/gtest.h>

#include "tests/host/HostOfOne.h"

namespace corvane::rig {
namespace {

constexpr int kThreshold = 130, kInsXType = 256;
using Log = std::vector<std::string>;

class Instance : public ::testing::Test {
 protected:
  Home home;
  HostOfOne host{home};

  std::string text(int id, double value, int length = 31) {
    AAX_CString shown;
    EXPECT_EQ(host.parameters->GetParameterStringFromValue(parameterIdentifier(id), value, &shown, length),
              AAX_SUCCESS);
    return shown.Get();
  }
  double store(int id) { return host.wrapper().value(id); }
  float inMemory(int id) {
    return host.wrapper().getPresetManager()->currentRecord().values[static_cast<std::size_t>(id)];
  }
  std::vector<char> chunk() {
    std::uint32_t size = 0;
    EXPECT_EQ(host.parameters->GetChunkSize(AAX_TypeID("All "), &size), AAX_SUCCESS);
    std::vector<char> bytes(sizeof(AAX_SPlugInChunk) + size);
    EXPECT_EQ(
        host.parameters->GetChunk(AAX_TypeID("All "), reinterpret_cast<AAX_SPlugInChunk*>(bytes.data())),
        AAX_SUCCESS);
    return bytes;
  }
};

// Parameters

TEST_F(Instance, OffersBypassAndEveryAnnouncedParameter) {
  std::int32_t count = 0;
  host.parameters->GetNumberOfParameters(&count);
  EXPECT_EQ(count, 1 + 192);
  AAX_CString id;
  host.parameters->GetParameterIDFromIndex(0, &id);
  EXPECT_STREQ(id.Get(), "MasterBypassID");
  std::int32_t steps = -1;
  host.parameters->GetParameterNumberOfSteps("112: Comp:Type", &steps);
  EXPECT_EQ(steps, 16);
  host.parameters->GetParameterNumberOfSteps("128: Comp:Attack", &steps);
  EXPECT_EQ(steps, 0);
  double value = -1.0;
  EXPECT_EQ(host.parameters->GetParameterNormalizedValue("43: Pre:-[27]", &value),
            AAX_ERROR_INVALID_PARAMETER_ID);
}

TEST_F(Instance, SpeaksValuesWithTheirUnits) {
  EXPECT_EQ(text(65, 1.0), "30k Hz ");
  EXPECT_EQ(text(99, 0.5), "100.0s");
  EXPECT_EQ(text(128, 0.5), "3.2");
  EXPECT_EQ(text(208, 0.0), "0.1 ms ");
  EXPECT_EQ(text(213, 1.0), "Linked  ");
  EXPECT_EQ(text(242, 0.7511), "0.00 dB ");
  EXPECT_EQ(text(242, 0.7511, 3), "0.0");
  AAX_CString shown;
  EXPECT_EQ(host.parameters->GetParameterStringFromValue("no such id", 0.5, &shown, 31),
            AAX_ERROR_INVALID_PARAMETER_ID);
}

TEST_F(Instance, UnitsAreTheOnesThatHostsKnow) {
  std::map<int, std::string> known;
  for (int id : {32, 34, 68, 100, 161, 165, 169, 173, 176, 210, 211, 242, 385, 423}) known[id] = " dB ";
  for (int id : {65, 69, 73, 162, 166, 170, 174, 212}) known[id] = " Hz ";
  for (int id : {208, 209}) known[id] = " ms ";
  known[99] = "s";
  for (int id : {53,  64,  66,  67,  70,  71,  72,  74,  144, 160, 163, 164, 167,
                 168, 171, 172, 175, 177, 240, 241, 243, 389, 390, 391, 392})
    known[id] = " ";
  for (int id : {213, 214}) known[id] = "  ";
  for (int id = 0; id < kIdentifiers; ++id) EXPECT_EQ(std::string(hostUnit(id)), known[id]) << id;
}

// The two roads of a value

TEST_F(Instance, AnEditReachesTheStoreByTheHostsAnswer) {
  host.wrapper().editorSetParameter(kThreshold, 0.25);
  EXPECT_EQ(host.log, (Log{"touch", "set", "release"}));
  EXPECT_EQ(store(kThreshold), 0.5) << "the controller hears nothing until the answer";
  host.answer();
  EXPECT_EQ(store(kThreshold), 0.25);
  EXPECT_EQ(inMemory(kThreshold), 0.25f);
  EXPECT_TRUE(host.wrapper().getPresetManager()->canUndo());
  host.log.clear();
  host.answer();
  EXPECT_TRUE(host.log.empty()) << "an answer raises no further question";
}

TEST_F(Instance, AutomationReachesTheSoundAndNotTheStore) {
  host.automate(kThreshold, 0.1);
  host.render(std::vector<float>(64, 0.0f));
  EXPECT_EQ(host.shared.seenValues[kThreshold], 0.1f);
  EXPECT_EQ(store(kThreshold), 0.5);
  EXPECT_FALSE(host.wrapper().getPresetManager()->canUndo());
}

TEST_F(Instance, RulesAnswerAnEdit) {
  host.edit(117, 1.0);  // monitor of the compressor
  EXPECT_EQ(store(117), 1.0);
  host.edit(149, 1.0);  // of the equaliser: the other goes off
  EXPECT_EQ(store(117), 0.0);
  EXPECT_EQ(host.held(117), 0.0);
  EXPECT_EQ(host.held(149), 1.0);
  host.edit(81, 6 / 8.0);  // the gate moves down the chain
  EXPECT_EQ(host.held(113), 2 / 8.0);
  host.edit(kInsXType, 113 / 255.0);  // a new module gets its defaults
  EXPECT_FLOAT_EQ(static_cast<float>(host.held(272)), 0.63671571f);
}

TEST_F(Instance, APresetIsOneBatchAndOneStep) {
  auto& presets = *host.wrapper().getPresetManager();
  presets.selectPreset(184);  // the vocal start: a de-esser in InsX
  host.answer();
  EXPECT_DOUBLE_EQ(host.held(kInsXType), static_cast<double>(113.0f / 255.0f));
  EXPECT_EQ(host.held(257), 0.625);
  EXPECT_EQ(host.held(274), 0.5) << "its own values, not the module's defaults one by one";
  EXPECT_FALSE(presets.isModified());
  presets.undo();
  host.answer();
  EXPECT_EQ(host.held(kInsXType), 0.0);
  EXPECT_FALSE(presets.canUndo());
}

TEST_F(Instance, ABatchOfTheWindowIsOneStepAndStaysInMemory) {
  host.wrapper().editorSetParameter(860, 1.0);
  for (const auto& [id, value] : {std::pair{130, 0.3}, {131, 0.7}, {132, 1.0}})  // the last is the value held
    host.wrapper().editorSetParameter(id, value);
  host.wrapper().editorSetParameter(861, 1.0);
  host.answer();
  EXPECT_EQ(store(130), 0.3);
  EXPECT_EQ(inMemory(130), 0.3f);
  EXPECT_EQ(inMemory(131), 0.7f);
  host.edit(133, 0.9);  // the bracket is closed: a plain edit is heard at once
  EXPECT_EQ(inMemory(133), 0.9f);
  host.wrapper().getPresetManager()->undo();
  host.wrapper().getPresetManager()->undo();
  host.answer();
  EXPECT_EQ(host.held(130), 0.5);
  EXPECT_EQ(host.held(131), 0.5);
  EXPECT_FALSE(host.wrapper().getPresetManager()->canUndo());
}

TEST_F(Instance, ABatchThatChangesNothingClosesAtOnce) {
  host.wrapper().editorSetParameter(860, 1.0);
  host.wrapper().editorSetParameter(132, 1.0);
  host.wrapper().editorSetParameter(861, 1.0);
  EXPECT_TRUE(host.requests.empty());
  host.edit(133, 0.9);
  EXPECT_EQ(inMemory(133), 0.9f);
}

// State

TEST_F(Instance, StoresItselfInAChunkAndComesBack) {
  host.edit(kThreshold, 0.125);
  host.edit(kInsXType, 115 / 255.0);
  const std::vector<char> saved = chunk();
  const auto* header = reinterpret_cast<const AAX_SPlugInChunk*>(saved.data());
  EXPECT_EQ(header->fSize, 19217);
  EXPECT_EQ(std::string(header->fData + 19209, 8), std::string("\0\0\x30\0\0\0\x30\0", 8));

  Home elsewhere;
  HostOfOne other(elsewhere);
  EXPECT_EQ(other.parameters->SetChunk(AAX_TypeID("All "), header), AAX_SUCCESS);
  other.answer();
  for (int id = 0; id < kParameters; ++id)
    if (parameterKind(id) & kKindAnnounced) {
      EXPECT_EQ(other.held(id), static_cast<double>(static_cast<float>(host.held(id)))) << id;
    }
}

TEST_F(Instance, RefusesChunksThatAreTooSmallOrUnknown) {
  auto* small = reinterpret_cast<AAX_SPlugInChunk*>(chunk().data());
  std::vector<char> bytes = chunk();
  small = reinterpret_cast<AAX_SPlugInChunk*>(bytes.data());
  small->fSize = 11;
  EXPECT_EQ(host.parameters->SetChunk(AAX_TypeID("All "), small), AAX_ERROR_NOT_INITIALIZED);
  std::uint32_t size = 0;
  EXPECT_EQ(host.parameters->GetChunkSize(AAX_TypeID("None"), &size), AAX_ERROR_INVALID_CHUNK_ID);
  EXPECT_EQ(host.parameters->GetChunkSize(AAX_TypeID("elck"), &size), AAX_SUCCESS);
  std::int32_t count = 0;
  host.parameters->GetNumberOfChunks(&count);
  EXPECT_EQ(count, 2);
}

TEST_F(Instance, RefusesPrivateFieldsOfAWrongSize) {
  char bytes[8];
  for (const AAX_CFieldIndex field : {kSharedBlockField, kLatencySeenField, kRateSeenField, kProcessorField})
    EXPECT_EQ(host.parameters->ResetFieldData(field, bytes, 7), AAX_ERROR_INVALID_INTERNAL_DATA) << field;
}

// Render road

TEST_F(Instance, FirstRenderTakesEveryParameterAndTheRate) {
  host.rate = 96000.0f;
  host.render(std::vector<float>(64, 0.0f));
  for (int id = 0; id < kParameters; ++id)
    if (parameterKind(id) & kKindAnnounced) {
      EXPECT_EQ(host.shared.seenValues[id], static_cast<float>(host.held(id))) << id;
    }
  EXPECT_EQ(host.effect().getHalfSecondSamples(), 48000);
}

TEST_F(Instance, RendersWhatTheProcessorAloneRenders) {
  CorvaneMonoEffect alone;
  alone.setSampleRate(48000.0);
  std::vector<float> x(1000);
  for (std::size_t n = 0; n < x.size(); ++n) x[n] = static_cast<float>(n % 100) * 0.005f - 0.25f;
  host.edit(16, 1 / 15.0);  // the plain gain: colours differ from unit to unit
  for (int id = 0; id < kParameters; ++id)
    if (parameterKind(id) & kKindAnnounced)
      alone.setParameter(id, static_cast<double>(static_cast<float>(host.held(id))));
  std::vector<float> expected(x.size());
  const float* in[4] = {x.data(), nullptr, nullptr, nullptr};
  float* out[2] = {expected.data(), nullptr};
  alone.processFloat(in, out, static_cast<int>(x.size()));
  EXPECT_EQ(host.render(x), expected);
}

TEST_F(Instance, ANewModuleTakesTheHostsValuesWhateverStoodThere) {
  host.edit(16, 1 / 15.0);  // the plain gain
  host.render(std::vector<float>(64, 0.0f));
  host.automate(kInsXType, 97 / 255.0);  // a master, whose fader the host holds at its stop
  const std::vector<float> y = host.render(std::vector<float>(48000, 0.5f));
  EXPECT_LT(std::abs(y.back()), 1e-6f) << "with its own defaults it would pass";
}

TEST_F(Instance, PublishesMetersAboveTheirOffset) {
  host.render(std::vector<float>(4800, 0.5f));
  EXPECT_EQ(host.meters[0], 0.5f);
  double level = 0.0;
  host.effect().getMeter(361, &level);
  EXPECT_EQ(host.meters[3], static_cast<float>(level) + 0.1f);
  EXPECT_EQ(host.meters[3 + 422 - 361], 1.2345678f);
  host.meters[0] = 0.9f;  // not read by the host meanwhile: the larger peak stands
  host.render(std::vector<float>(64, 0.1f));
  EXPECT_EQ(host.meters[0], 0.9f);
}

TEST_F(Instance, BypassPassesBitForBitAndPeaksGoOn) {
  host.render(std::vector<float>(64, 0.25f));
  host.parameters->UpdateParameterNormalizedValue("MasterBypassID", 1.0, AAX_eUpdateSource_Parameter);
  host.render(std::vector<float>(200, 0.25f));  // the crossfade
  const std::vector<float> x{0.125f, -0.75f, 0.5f};
  EXPECT_EQ(host.render(x), x);
  EXPECT_EQ(host.meters[1], 0.75f);
}

TEST_F(Instance, KeysOnTheSideChainAndFallsBackToTheInput) {
  for (const auto& [id, value] :
       {std::pair{16, 1 / 15.0}, {80, 2 / 15.0}, {84, 1.0}, {112, 0.0}, {144, 0.0}, {48, 0.0}})
    host.edit(id, value);
  const std::vector<float> x(4800, 0.5f), quiet(4800, 0.0f);
  EXPECT_LT(std::abs(host.render(x, &quiet).back()), 1e-3f) << "a silent key keeps the gate shut";
  EXPECT_GT(host.render(x).back(), 0.4f) << "no key: the input opens it";
}

TEST_F(Instance, ReadsTheTransportWhenThereIsOne) {
  host.render(std::vector<float>(8, 0.0f));
  const TransportRecord& record = host.shared.adapter.record;
  EXPECT_EQ(record.flags, 0u);
  host.transportOffered = true, host.playing = true, host.ticks = 480000;
  host.render(std::vector<float>(8, 0.0f));
  EXPECT_EQ(record.positionQuarters, 0.5);
  EXPECT_EQ(record.tempo, 120.0);
  EXPECT_EQ(record.flags, 0x1u | 0x2u | 0x200u | 0x400u);
  EXPECT_EQ(host.effect().masterProcessor->getTransport(), &record);
}

TEST_F(Instance, CommandsTravelByTheTimer) {
  host.render(std::vector<float>(64, 0.0f));
  host.wrapper().setParameter(393, 1.0);  // clear the over lamps of the master
  EXPECT_EQ(host.directData.TimerWakeup(&host), AAX_SUCCESS);
  EXPECT_EQ(host.shared.commandValues[393 - 360], 1.0f);
  EXPECT_EQ(host.latency, 0) << "the strip reports none";
  host.render(std::vector<float>(64, 0.0f));
  EXPECT_EQ(host.shared.commandValues[393 - 360], -1.0f);
  host.accessError = AAX_ERROR_UNIMPLEMENTED;
  EXPECT_EQ(host.directData.TimerWakeup(&host), AAX_ERROR_UNIMPLEMENTED);
}

}  // namespace
}  // namespace corvane::rig
