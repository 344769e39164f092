#include <gtest/gtest.h>

#include "tests/control/HostDouble.h"

namespace corvane {
namespace {

using rig::Home;
using rig::HostDouble;

constexpr int kThreshold = 130, kRatio = 131;

struct Undo : testing::Test {
  Home home;
  HostDouble host{home};
  void undo() { host.presets->undo(), host.deliver(); }
  void redo() { host.presets->redo(), host.deliver(); }
  int undoneSteps() {
    int steps = 0;
    for (; host.presets->canUndo(); ++steps) undo();
    return steps;
  }
};

TEST_F(Undo, AGestureIsOneStep) {
  host.edit(kThreshold, 0.1);
  host.edit(kThreshold, 0.2, 30);
  host.edit(kRatio, 0.3, 50);
  host.edit(kThreshold, 0.4, 51);
  EXPECT_EQ(host[kThreshold], 0.4);
  undo();
  EXPECT_EQ(static_cast<float>(host[kThreshold]), 0.2f);
  EXPECT_EQ(static_cast<float>(host[kRatio]), 0.3f);
  undo();
  EXPECT_EQ(host[kThreshold], 0.5);
  EXPECT_EQ(host[kRatio], 0.5);
  EXPECT_FALSE(host.presets->canUndo());
  redo();
  redo();
  EXPECT_EQ(static_cast<float>(host[kThreshold]), 0.4f);
  EXPECT_FALSE(host.presets->canRedo());
}

TEST_F(Undo, AChangeTooSmallToShowIsNoStep) {
  host.edit(kThreshold, 0.50004);
  EXPECT_FALSE(host.presets->canUndo());
  host.edit(kThreshold, 0.5002);
  EXPECT_TRUE(host.presets->canUndo());
}

TEST_F(Undo, TheVeryFirstEditIsAStepWhateverTheClockSays) {
  home.clock.nowMs = 0;
  host.edit(kThreshold, 0.1, 0);
  EXPECT_TRUE(host.presets->canUndo());
}

TEST_F(Undo, TheClockMayWrap) {
  home.clock.nowMs = 0xFFFFFFF0;
  host.edit(kThreshold, 0.1, 0);
  host.edit(kThreshold, 0.2, 30);
  undo();
  EXPECT_EQ(host[kThreshold], 0.5);
}

TEST_F(Undo, TheRingForgetsTheOldestSteps) {
  for (int k = 1; k <= 9; ++k) host.edit(kThreshold, k / 10.0);
  EXPECT_EQ(undoneSteps(), 7);
  EXPECT_EQ(static_cast<float>(host[kThreshold]), 0.2f) << "the second of nine edits is where undo stops";
  for (int k = 3; k <= 9; ++k) {
    redo();
    EXPECT_EQ(static_cast<float>(host[kThreshold]), static_cast<float>(k / 10.0));
  }
  EXPECT_FALSE(host.presets->canRedo());
}

TEST_F(Undo, ANewEditEndsWhatCouldBeDoneAgain) {
  for (int k = 1; k <= 4; ++k) host.edit(kThreshold, k / 10.0);
  undo();
  undo();
  host.edit(kRatio, 0.9, 10);  // right away: not a part of the gesture that was taken back
  EXPECT_FALSE(host.presets->canRedo());
  undo();
  EXPECT_EQ(host[kRatio], 0.5);
  EXPECT_EQ(static_cast<float>(host[kThreshold]), 0.2f);
}

TEST_F(Undo, WhatARuleSetsBelongsToTheStep) {
  const auto start = host.presets->currentRecord().values;
  host.edit(256, 113 / 255.0);
  const auto with = host.presets->currentRecord().values;
  host.edit(81, 1.0);
  undo();
  EXPECT_EQ(host.presets->currentRecord().values, with);
  undo();
  EXPECT_EQ(host.presets->currentRecord().values, start);
  for (int id = 0; id < kParameters; ++id) EXPECT_EQ(static_cast<float>(host[id]), host.inMemory(id)) << id;
}

TEST_F(Undo, TakesBackTheChoiceOfAPreset) {
  host.presets->selectPreset(3);
  host.edit(kThreshold, 0.9);
  const auto edited = host.presets->currentRecord();
  host.presets->selectPreset(3 + 20);
  host.deliver();
  undo();
  EXPECT_EQ(host.presets->selection().presetIndex, 3);
  EXPECT_EQ(host.presets->currentRecord().values, edited.values);
  EXPECT_STREQ(host.presets->currentRecord().name, "Smacka 808 BD");
  EXPECT_TRUE(host.presets->isModified());
  undo();
  EXPECT_FALSE(host.presets->isModified());
  undo();
  EXPECT_EQ(host.presets->selection().presetIndex, 0);
  EXPECT_STREQ(host.presets->currentRecord().name, "Default");
  redo();
  redo();
  redo();
  EXPECT_EQ(host.presets->selection().presetIndex, 23);
  EXPECT_FALSE(host.presets->isModified());
}

TEST_F(Undo, ChoosingTheSamePresetAgainIsNoStep) {
  host.presets->selectPreset(3);
  undo();
  host.presets->selectPreset(0);
  EXPECT_TRUE(host.presets->canRedo()) << "and takes nothing away";
  EXPECT_FALSE(host.presets->canUndo());
}

TEST_F(Undo, WalkingThroughTheListsNeverChangesTheSound) {
  host.presets->selectPreset(5);
  const auto sound = host.values;
  host.presets->chooseList(2);
  undo();
  EXPECT_EQ(host.presets->selection().listIndex, 0);
  redo();
  EXPECT_EQ(host.presets->selection().listIndex, 2);
  EXPECT_EQ(host.values, sound);
}

TEST_F(Undo, MemoriesAreIndependent) {
  host.edit(kThreshold, 0.9);
  host.presets->copyMemory();
  host.presets->switchMemory(true);
  host.deliver();
  EXPECT_TRUE(host.presets->isModified()) << "copied with its flag";
  host.edit(kThreshold, 0.5);
  EXPECT_FALSE(host.presets->isModified()) << "back to the preset's value by hand";
  host.edit(kRatio, 0.1);
  host.presets->switchMemory(false);
  host.deliver();
  EXPECT_EQ(static_cast<float>(host[kThreshold]), 0.9f);
  EXPECT_EQ(host[kRatio], 0.5);
  EXPECT_TRUE(host.presets->isModified());
  host.presets->switchMemory(true);
  host.deliver();
  EXPECT_EQ(static_cast<float>(host[kRatio]), 0.1f);
}

}  // namespace
}  // namespace corvane
