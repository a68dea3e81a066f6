#include "platform/linux/x11/FramePacer.h"

#include <gtest/gtest.h>

namespace {

using platform::x11::FramePacer;
using Step = FramePacer::Step;

constexpr FramePacer::Micros interval = 16'000;
constexpr FramePacer::Micros start = 1'000'000'000;
constexpr std::size_t few = 1;
constexpr std::size_t many = 1000;

/// Takes the damage as a frame and hands it on, all at one time.
void deliver(FramePacer& pacer, FramePacer::Micros now, std::size_t rects = few) {
    pacer.onTakeSent();
    pacer.onTaken(now, rects);
    pacer.onDelivered(now);
}

TEST(FramePacer, NeverWakesWhileNothingChanges) {
    FramePacer pacer(interval);
    EXPECT_EQ(pacer.nextStep(start, true), Step::Wait);
    EXPECT_EQ(pacer.wakeTime(true), std::nullopt);
    pacer.onDamage();
    deliver(pacer, start);
    EXPECT_EQ(pacer.nextStep(start + 10 * interval, true), Step::Wait);
    EXPECT_EQ(pacer.wakeTime(true), std::nullopt);
}

TEST(FramePacer, FirstChangeAfterQuietIsAFrameAtOnce) {
    FramePacer pacer(interval);
    pacer.onDamage();
    EXPECT_EQ(pacer.nextStep(start, true), Step::Frame);
    deliver(pacer, start);
    pacer.onDamage();
    EXPECT_EQ(pacer.nextStep(start + 100 * interval, true), Step::Frame);
}

TEST(FramePacer, SecondFrameWaitsForTheInterval) {
    FramePacer pacer(interval);
    pacer.onDamage();
    deliver(pacer, start);
    pacer.onDamage();
    EXPECT_NE(pacer.nextStep(start + interval - 1, true), Step::Frame);
    EXPECT_EQ(pacer.nextStep(start + interval, true), Step::Frame);
}

TEST(FramePacer, SteadyChangeGivesNoMoreFramesThanTheRate) {
    FramePacer pacer(interval);
    int frames = 0;
    for (FramePacer::Micros now = start; now < start + 100 * interval; now += 100) {
        pacer.onDamage();
        if (pacer.nextStep(now, true) == Step::Frame) {
            deliver(pacer, now);
            ++frames;
        }
    }
    EXPECT_EQ(frames, 100);
}

TEST(FramePacer, LateTimersDoNotLowerTheRate) {
    FramePacer pacer(interval);
    int frames = 0;
    // Looked at only every 1.1 ms, so that each due time is met a little late.
    for (FramePacer::Micros now = start; now < start + 100 * interval; now += 1100) {
        pacer.onDamage();
        if (pacer.nextStep(now, true) == Step::Frame) {
            deliver(pacer, now);
            ++frames;
        }
    }
    EXPECT_GE(frames, 99);
    EXPECT_LE(frames, 100);
}

TEST(FramePacer, TakesDamageBetweenFrames) {
    FramePacer pacer(interval);
    pacer.onDamage();
    deliver(pacer, start);
    pacer.onDamage();
    ASSERT_EQ(pacer.wakeTime(true), start + 4000);
    EXPECT_EQ(pacer.nextStep(start + 3999, true), Step::Wait);
    EXPECT_EQ(pacer.nextStep(start + 4000, true), Step::Take);
}

TEST(FramePacer, ManyRectanglesKeepTakesShort) {
    FramePacer pacer(interval);
    pacer.onDamage();
    deliver(pacer, start, many);
    for (FramePacer::Micros i = 1; i <= 3; ++i) {
        pacer.onDamage();
        ASSERT_EQ(pacer.nextStep(start + i * 4000, true), Step::Take) << i;
        pacer.onTakeSent();
        pacer.onTaken(start + i * 4000, many);
    }
}

TEST(FramePacer, FewRectanglesLetTakesWaitUpToAFrame) {
    FramePacer pacer(interval);
    pacer.onDamage();
    deliver(pacer, start);
    pacer.onDamage();
    pacer.onTakeSent();
    pacer.onTaken(start + 4000, few);
    pacer.onDamage();
    EXPECT_EQ(pacer.nextStep(start + 4000 + 7999, true), Step::Wait);
    EXPECT_EQ(pacer.nextStep(start + 4000 + 8000, true), Step::Take);
}

TEST(FramePacer, TakenDamageStillBringsAFrameWithoutNewDamage) {
    FramePacer pacer(interval);
    pacer.onDamage();
    deliver(pacer, start);
    pacer.onDamage();
    pacer.onTakeSent();
    pacer.onTaken(start + 4000, few);
    EXPECT_EQ(pacer.wakeTime(true), start + interval);
    EXPECT_EQ(pacer.nextStep(start + interval, true), Step::Frame);
}

TEST(FramePacer, WithoutFreeSurfaceDamageIsDrainedAllTheSame) {
    FramePacer pacer(interval);
    pacer.onDamage();
    EXPECT_EQ(pacer.nextStep(start, false), Step::Take);
    pacer.onTakeSent();
    pacer.onTaken(start, few);
    EXPECT_EQ(pacer.nextStep(start + 10 * interval, false), Step::Wait);
    EXPECT_EQ(pacer.wakeTime(false), std::nullopt);
    EXPECT_EQ(pacer.nextStep(start + 10 * interval, true), Step::Frame);
}

TEST(FramePacer, DamageOutsideTheFrameBringsNoFrame) {
    FramePacer pacer(interval);
    pacer.onDamage();
    pacer.onTakeSent();
    pacer.onTaken(start, 0);
    pacer.onIdle();
    EXPECT_EQ(pacer.nextStep(start + interval, true), Step::Wait);
}

} // namespace
