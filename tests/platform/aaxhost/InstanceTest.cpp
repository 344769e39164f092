#include <gtest/gtest.h>

#include <cmath>
#include <numeric>
#include <random>

#include "platform/aaxhost/PrivateFields.h"
#include "tests/platform/aaxhost/FakeLibrary.h"
#include "tests/rig/RenderGuard.h"

namespace corvane::aaxhost {
namespace {

using Lines = std::vector<std::string>;

constexpr AAX_CTypeID kInputPeak = AAX_TypeID("mtrI"), kOutputPeak = AAX_TypeID("mtrO");
constexpr AAX_CTypeID kReduction = AAX_TypeID("mtGR"), kCustom = AAX_TypeID("mtcA");

class InstanceOf : public testing::TestWithParam<Mode> {
 protected:
  /// What comes out for a constant of 1.
  float heard(const Block& extra = {}) {
    float in[3] = {1, 1, 1}, out[3] = {-9, -9, -9};
    Block block = extra;
    block.input = in, block.output = out, block.frames = 3;
    instance.render(block);
    EXPECT_EQ(out[0], out[2]);
    return out[1];
  }
  float meter(AAX_CTypeID id) {
    float value = -9.0f;
    EXPECT_EQ(instance.meter(id, &value), AAX_SUCCESS);
    return value;
  }

  FakeLibrary fake;
  Instance instance{fake.library, 48000.0, GetParam()};
};

INSTANTIATE_TEST_SUITE_P(Modes, InstanceOf, testing::Values(Mode::Offline, Mode::Live),
                         [](const auto& each) { return each.param == Mode::Live ? "Live" : "Offline"; });

TEST_P(InstanceOf, IsMadeInOrderAndGoesInReverse) {
  fake.probe.takeLog();
  {
    const Instance other(fake.library, 48000.0, GetParam());
    EXPECT_EQ(fake.probe.takeLog(), (Lines{"make parameters", "initialise parameters", "make direct data",
                                           "make window", "fill 20", "fill 21", "fill 22"}));
    EXPECT_EQ(fake.probe.processors, 2);
  }
  EXPECT_EQ(fake.probe.takeLog(), (Lines{"delete window", "delete direct data", "free 22", "free 21",
                                         "free 20", "delete parameters"}));
  EXPECT_EQ(fake.probe.processors, 1);
  EXPECT_FALSE(fake.probe.misaligned);
}

TEST_P(InstanceOf, AutomationIsHeardAtOnceWithoutATouch) {
  fake.probe.takeLog();
  EXPECT_EQ(instance.automate("gain", 0.5), AAX_SUCCESS);
  EXPECT_EQ(fake.probe.takeLog(), (Lines{"update gain 0.50 source 1", "window hears of gain"}));
  EXPECT_EQ(heard(), 0.5f);
  instance.touch("gain");  // a person holds it: automation still is no touch
  instance.automate("gain", 0.25);
  EXPECT_EQ(fake.probe.takeLog()[0], "update gain 0.25 source 1");
  EXPECT_EQ(instance.automate("gain", 7.0), AAX_SUCCESS);
  EXPECT_EQ(heard(), 1.0f);
  EXPECT_EQ(instance.automate("gain", NAN), AAX_ERROR_INVALID_INTERNAL_DATA);
  EXPECT_EQ(instance.automate("nobody", 0.5), AAX_ERROR_INVALID_PARAMETER_ID);
  EXPECT_EQ(heard(), 1.0f);
}

TEST_P(InstanceOf, APortThatTheRenderThreadHasWrittenIsItsOwn) {
  instance.automate("gain", 1.0);
  EXPECT_EQ(heard(), 1.0f);
  const PortWrite half[] = {PortWrite::of(10, 0.5f), PortWrite::of(20, 7.0f), PortWrite::of(-1, 7.0f),
                            PortWrite::of(4000, 7.0f)};
  EXPECT_EQ(heard({.writes = half}), 0.5f) << "fields that are no data port are passed over";
  instance.automate("gain", 0.25);
  instance.automate("twin", 0.25);
  EXPECT_EQ(heard(), 0.5f) << "a packet for it is dropped";
  EXPECT_EQ(instance.renderedMeters()[2], 0.5f);
  const PortWrite again[] = {PortWrite::of(10, 0.75f)};
  EXPECT_EQ(heard({.writes = again}), 0.75f);
}

TEST_P(InstanceOf, RefillsAPrivateFieldThroughThePlugIn) {
  heard();
  fake.probe.takeLog();
  EXPECT_EQ(instance.refillField(kFakeShared), AAX_SUCCESS);
  EXPECT_EQ(fake.probe.takeLog(), Lines{"fill 20"});
  EXPECT_EQ(instance.refillField(10), AAX_ERROR_INVALID_FIELD_INDEX);
}

TEST_P(InstanceOf, ARequestIsAnsweredLaterWithTheTouchOfItsMoment) {
  fake.probe.takeLog();
  EXPECT_EQ(instance.edit("gain", 0.5), AAX_SUCCESS);
  EXPECT_EQ(instance.set("twin", 0.5), AAX_SUCCESS);  // nobody holds this one
  EXPECT_EQ(fake.probe.takeLog(), Lines{}) << "no answer within the request";
  EXPECT_EQ(heard(), 0.0f);
  EXPECT_EQ(instance.waitingRequests(), 2);
  EXPECT_EQ(instance.idle(), 2);
  EXPECT_EQ(fake.probe.takeLog(), (Lines{"update gain 0.50 source 0 touched", "window hears of gain",
                                         "update twin 0.50 source 0", "window hears of twin"}));
  EXPECT_EQ(heard(), 0.5f);
  EXPECT_EQ(instance.idle(), 0);
}

TEST_P(InstanceOf, AnAnswersOwnRequestsWaitForTheNextCall) {
  instance.edit("ask", 0.5);
  fake.probe.takeLog();
  EXPECT_EQ(instance.idle(), 1);
  EXPECT_EQ(fake.probe.takeLog()[0], "update ask 0.50 source 0 touched");
  EXPECT_EQ(instance.idle(), 1);
  EXPECT_EQ(fake.probe.takeLog()[0], "update answer 0.25 source 0 touched");
  EXPECT_TRUE(instance.settle());
}

TEST_P(InstanceOf, TheLastRequestForAParameterIsTheOneAnswered) {
  instance.edit("gain", 0.5);
  instance.edit("gain", 0.75);
  EXPECT_EQ(instance.idle(), 1);
  EXPECT_EQ(heard(), 0.75f);
  instance.edit("gain", 0.5);
  instance.edit("gain", 0.75);  // what it holds: nothing is left to answer
  EXPECT_EQ(instance.idle(), 0);
  EXPECT_EQ(heard(), 0.75f);
}

TEST_P(InstanceOf, BypassSideChainTransportAndRateReachTheRender) {
  const float key[3] = {0.25f, 0.25f, 0.25f};
  instance.automate("gain", 0.5);
  EXPECT_EQ(heard({.sideChain = key}), 0.75f);
  EXPECT_EQ(heard(), 0.5f);
  EXPECT_EQ(instance.bypassId(), "MasterBypassID");
  EXPECT_EQ(instance.setBypass(true), AAX_SUCCESS);
  EXPECT_EQ(heard(), 1.0f);
  instance.setBypass(false);
  const Transport song{.tempo = 93.0, .ticks = 960000, .playing = true};
  EXPECT_EQ(heard({.transport = &song}), 0.5f);
  EXPECT_EQ(fake.probe.tempo, 93.0);
  EXPECT_EQ(fake.probe.ticks, 960000);
  EXPECT_TRUE(fake.probe.playing);
  instance.setSampleRate(96000.0);
  heard();
  EXPECT_EQ(fake.probe.tempo, -1.0) << "no transport any more";
  EXPECT_EQ(fake.probe.rate, 96000.0);
  EXPECT_NE(instance.setSampleRate(NAN), AAX_SUCCESS);
  EXPECT_EQ(instance.sampleRate(), 96000.0);
}

TEST_P(InstanceOf, PeaksStartAgainAfterAReadAndOthersKeepTheirLastValue) {
  instance.automate("gain", 0.5);
  EXPECT_EQ(meter(kInputPeak), 0.0f);
  heard();
  float quiet[2] = {0.1f, -0.2f};
  instance.render({quiet, quiet, 2});
  EXPECT_EQ(meter(kInputPeak), 1.0f) << "the largest of both blocks";
  EXPECT_EQ(meter(kInputPeak), 0.0f);
  instance.render({quiet, quiet, 2});  // now halved in place
  EXPECT_EQ(meter(kInputPeak), 0.1f);
  EXPECT_EQ(meter(kOutputPeak), 0.5f);
  for (int k = 0; k < 2; ++k) {
    EXPECT_EQ(meter(kReduction), 0.5f);
    EXPECT_EQ(meter(kCustom), 0.6f);
  }
  float value = 0.0f;
  EXPECT_EQ(instance.meter(AAX_TypeID("none"), &value), AAX_ERROR_INVALID_METER_INDEX);
}

TEST_P(InstanceOf, ACommandOfTheTimerReachesTheNextRenderOnce) {
  fake.probe.commandToSend = 5;
  fake.probe.takeLog();
  EXPECT_EQ(instance.timer(), AAX_SUCCESS);
  EXPECT_EQ(fake.probe.takeLog(), (Lines{"timer of direct data", "timer of window"}));
  const long before = fake.probe.commands;
  fake.probe.commandToSend = 7;
  instance.timer();  // reads back what waits, so 7 has to wait
  heard();
  EXPECT_EQ(fake.probe.commands - before, 5);
  instance.timer();
  heard();
  heard();
  EXPECT_EQ(fake.probe.commands - before, 12);
  EXPECT_EQ(fake.probe.torn, 0);
}

TEST_P(InstanceOf, AnyFramesAndAliasedBuffersPass) {
  instance.automate("gain", 0.5);
  std::vector<float> samples(8192);
  for (const int frames : {0, 1, 2, 63, 64, 65, 675, 8192}) {
    std::iota(samples.begin(), samples.end(), 0.0f);
    instance.render(
        {samples.data(), samples.data(), frames, samples.data()});  // key and output are the input
    for (int i = 0; i < 8192; ++i)
      ASSERT_EQ(samples[static_cast<std::size_t>(i)], static_cast<float>(i) * (i < frames ? 1.5f : 1.0f));
  }
  for (int k = 0; k < 10000; ++k) instance.render({nullptr, nullptr, 0});
  instance.render({nullptr, samples.data(), 4});
  instance.render({samples.data(), nullptr, -4});
}

TEST_P(InstanceOf, ManyInstancesShareOneCall) {
  std::vector<std::unique_ptr<Instance>> all;
  std::vector<std::vector<float>> buffers;
  std::vector<Seat> seats;
  for (std::size_t k = 0; k < 10; ++k) {
    all.push_back(std::make_unique<Instance>(fake.library, 48000.0, GetParam()));
    all.back()->automate("gain", static_cast<double>(k) / 16);
    buffers.emplace_back(k, 1.0f);
    seats.push_back({all.back().get(), {buffers[k].data(), buffers[k].data(), static_cast<std::int32_t>(k)}});
  }
  const long before = fake.probe.calls;
  render(seats);
  EXPECT_EQ(fake.probe.calls - before, 1);
  EXPECT_EQ(fake.probe.lastCount, 10);
  for (std::size_t k = 0; k < 10; ++k)
    EXPECT_EQ(buffers[k], std::vector<float>(k, static_cast<float>(k) / 16));
}

TEST_P(InstanceOf, ChunksComeBackAndBrokenOnesAreRefused) {
  EXPECT_EQ(instance.chunkIds(), std::vector<AAX_CTypeID>{AAX_TypeID("elck")});
  instance.automate("gain", 0.375);
  Chunk chunk;
  ASSERT_EQ(instance.getChunk(AAX_TypeID("elck"), &chunk), AAX_SUCCESS);
  EXPECT_EQ(chunk.name, "Complete Controls State");
  EXPECT_EQ(chunk.manufacturer, AAX_TypeID("Test"));
  const std::vector<char> bytes = chunkToBytes(chunk);
  const auto read = chunkFromBytes(bytes);
  ASSERT_TRUE(read);
  EXPECT_EQ(chunkToBytes(*read), bytes);
  for (std::size_t length = 0; length < bytes.size(); ++length)
    EXPECT_FALSE(chunkFromBytes({bytes.data(), length})) << length;

  instance.automate("gain", 0.5);
  EXPECT_EQ(instance.setChunk(*read), AAX_SUCCESS);
  EXPECT_TRUE(instance.settle());
  EXPECT_EQ(heard(), 0.375f);
  Chunk shorter = *read;
  shorter.data.pop_back();
  EXPECT_EQ(instance.setChunk(shorter), AAX_ERROR_INCORRECT_CHUNK_SIZE);
  EXPECT_EQ(instance.setChunk({.id = AAX_TypeID("none")}), AAX_ERROR_INVALID_CHUNK_ID);
  EXPECT_EQ(instance.getChunk(AAX_TypeID("none"), &chunk), AAX_ERROR_INVALID_CHUNK_ID);
}

TEST_P(InstanceOf, NoPacketIsLostWhileNothingRenders) {
  std::mt19937 random(20);
  std::uniform_real_distribution<double> values(0.0, 1.0);
  double last = 0.0;
  for (int k = 0; k < 1000; ++k) {  // far more than any queue holds
    last = values(random);
    instance.automate("gain", last);
    instance.automate("twin", last);
  }
  if (GetParam() == Mode::Live) {  // what found no room goes when control is next on
    heard();
    instance.idle();
  }
  EXPECT_EQ(heard(), static_cast<float>(last));
}

TEST_P(InstanceOf, TheRenderRoadNeitherAllocatesNorLocks) {
  std::vector<float> buffer(512, 0.5f);
  instance.render({buffer.data(), buffer.data(), 512});
  for (int k = 0; k < 50; ++k) {
    instance.automate("gain", k / 50.0);
    fake.probe.commandToSend = k;
    instance.timer();
    const rig::RenderGuard guard;
    instance.render({buffer.data(), buffer.data(), 512});
    EXPECT_EQ(guard.violations(), 0);
  }
}

TEST(PrivateData, IsCheckedAgainstItsField) {
  // Large fields are the process function's own while sound runs; offline everything can be reached.
  for (const Mode mode : {Mode::Offline, Mode::Live}) {
    const FakeLibrary fake;
    const auto parameters =
        std::unique_ptr<AAX_IEffectParameters>(fake.library->description().createParameters());
    PrivateFields fields(fake.library->description(), *parameters, mode);
    std::vector<char> bytes(20001, 1);
    AAX_IPrivateDataAccess& access = fields;
    EXPECT_EQ(access.WritePortDirect(kFakeShared, 8, 3192, bytes.data()), AAX_SUCCESS);
    EXPECT_EQ(access.WritePortDirect(kFakeShared, 9, 3192, bytes.data()), AAX_ERROR_INVALID_INTERNAL_DATA);
    EXPECT_EQ(access.ReadPortDirect(kFakeShared, 0xFFFFFFFF, 2, bytes.data()),
              AAX_ERROR_INVALID_INTERNAL_DATA);
    EXPECT_EQ(access.ReadPortDirect(19, 0, 0, bytes.data()), AAX_ERROR_INVALID_FIELD_INDEX);
    EXPECT_EQ(access.ReadPortDirect(kFakeShared, 0, 4, nullptr), AAX_ERROR_NULL_OBJECT);
    EXPECT_EQ(access.ReadPortDirect(kFakeLarge, 0, 20000, bytes.data()),
              mode == Mode::Live ? AAX_ERROR_UNIMPLEMENTED : AAX_SUCCESS);
  }
}

TEST(FieldWindow, ShowsOwnWritesUntilTheFieldHasThemAndWhatRenderMadeOfThemAfter) {
  std::byte field[4] = {std::byte{1}, std::byte{2}, std::byte{3}, std::byte{4}};
  FieldWindow window(field, 4);
  const auto seen = [&window] {
    std::byte bytes[4];
    window.read(0, 4, bytes);
    std::string text;
    for (const std::byte byte : bytes) text += static_cast<char>('0' + std::to_integer<int>(byte));
    return text;
  };
  const std::byte nine{9}, eight{8};
  window.write(0, 1, &nine);
  window.write(2, 1, &eight);
  EXPECT_EQ(seen(), "9284");
  window.takeWrites(field);
  field[0] = std::byte{0};  // render consumes the first
  field[1] = std::byte{7};
  EXPECT_EQ(seen(), "9284") << "the block is not over";
  window.publish(field);
  EXPECT_EQ(seen(), "0784");
  window.write(3, 1, &nine);
  field[2] = std::byte{6};
  window.publish(field);  // of a block that began before the write
  EXPECT_EQ(seen(), "0769");
  window.takeWrites(field);
  window.publish(field);
  EXPECT_EQ(seen(), "0769");
}

TEST(OfflineRunner, RunsTheTimerBySamplesAndGivesTheSameForAnyBlocks) {
  const FakeLibrary fake;
  for (const int frames : {1, 7, 480, 4800}) {
    Instance instance(fake.library, 48000.0);
    OfflineRunner runner(48000.0, 0.1);
    fake.probe.takeLog();
    std::vector<float> buffer(static_cast<std::size_t>(frames));
    for (int at = 0; at < 48000; at += frames) runner.run(instance, {buffer.data(), buffer.data(), frames});
    const Lines lines = fake.probe.takeLog();
    EXPECT_EQ(std::count(lines.begin(), lines.end(), "timer of direct data"), 10) << frames;
  }
}

TEST(OfflineRunner, AnswersBeforeItRenders) {
  const FakeLibrary fake;
  Instance instance(fake.library, 48000.0);
  OfflineRunner runner(48000.0);
  instance.edit("gain", 0.5);
  float one = 1.0f;
  runner.run(instance, {&one, &one, 1});
  EXPECT_EQ(one, 0.5f);
}

}  // namespace
}  // namespace corvane::aaxhost
