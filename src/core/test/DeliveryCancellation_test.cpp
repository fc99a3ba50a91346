// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/testing/DictationWorld.h"

#include <gtest/gtest.h>

#include <memory>

namespace lorvane {

namespace {

constexpr double step = 0.02;

/// A dictation in which every wait there is takes its time: stream, its drop, the upload, a retry, the reads
/// of field and clipboard, the wait for the keys.
std::unique_ptr<DictationWorld> slowWorld() {
    using Backend = FakeDictationEndpoints;
    auto world = std::make_unique<DictationWorld>();
    world->start();
    world->preferences.set(preference::translateLang, QString("de"));
    world->pasteboard.copyElsewhere("mine");
    world->pasteboard.delay = seconds(0.1);
    world->fields.delay = seconds(0.1);
    world->pasteKeys.delay = seconds(0.2);
    world->backend.streams.push_back(Backend::answer(Backend::dropped(), {"Hel"}, seconds(0.3)));
    world->backend.streams.push_back(Backend::answer(Backend::text("Hello."), {"Hel", "lo."}, seconds(0.3)));
    world->backend.uploads.push_back(
        Backend::answer(Backend::failed(Failure::Kind::server), {}, seconds(0.3)));
    world->holdFor(1);
    EXPECT_TRUE(world->isProcessing());
    return world;
}

/// How long the delivery of a slow world takes.
double slowDelivery() {
    const auto world = slowWorld();
    double duration = 0;
    while (world->isProcessing() && duration < 10) {
        world->advance(step);
        duration += step;
    }
    EXPECT_TRUE(world->isDone());
    EXPECT_EQ(world->pasted, QStringList{"Hello."});
    return duration;
}

TEST(DeliveryCancellation, ShowsNothingAndLeavesNothingAtWhateverMoment) {
    const double whole = slowDelivery();
    EXPECT_GT(whole, 2.5);
    for (double moment = 0; moment < whole - step / 2; moment += step) {
        SCOPED_TRACE(moment);
        const auto world = slowWorld();
        world->advance(moment);
        ASSERT_TRUE(world->isProcessing());
        world->escape();
        EXPECT_TRUE(world->isIdle());
        EXPECT_FALSE(world->controller.isTranslating());
        const bool pasteUnderWay = world->pasteboard.isLent();
        world->advance(20);
        EXPECT_EQ(world->phases, (std::vector<Phase>{Recording{}, Processing{}, Idle{}}));
        EXPECT_EQ(world->chime.plays, 0);
        EXPECT_EQ(world->pasted.size(), pasteUnderWay ? 1 : 0);
        EXPECT_EQ(world->journal.takes.size(), pasteUnderWay ? 1U : 0U);
        EXPECT_EQ(world->pasteboard.text(), "mine");
        EXPECT_FALSE(world->pasteboard.isLent());
        EXPECT_EQ(world->clock.pendingTimers(), 0U);
    }
}

TEST(DeliveryCancellation, LetsTheNextTakeThroughAtWhateverMoment) {
    const double whole = slowDelivery();
    for (double moment = 0; moment < whole - step / 2; moment += step) {
        SCOPED_TRACE(moment);
        const auto world = slowWorld();
        world->advance(moment);
        world->escape();
        world->backend.streams.clear();
        world->backend.uploads.clear();
        world->backend.otherwise = FakeDictationEndpoints::text("Next.");
        world->holdFor(1);
        world->advance(1);
        EXPECT_TRUE(world->isDone());
        EXPECT_EQ(world->pasted.last(), "Next.");
        world->advance(20);
        EXPECT_TRUE(world->isIdle());
        EXPECT_FALSE(world->pasteboard.isLent());
    }
}

TEST(DeliveryCancellation, EndOfTheProgramIsSilentAtWhateverMoment) {
    const double whole = slowDelivery();
    for (double moment = 0; moment < whole + 2; moment += step) {
        SCOPED_TRACE(moment);
        auto world = slowWorld();
        world->advance(moment);
        world.reset();
    }
}

} // namespace

} // namespace lorvane
