// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/testing/DictationWorld.h"

#include <gtest/gtest.h>

namespace lorvane {

namespace {

class ControllerStartTest : public ::testing::Test, public DictationWorld {};

TEST_F(ControllerStartTest, WatchesTheKeysAndShowsThePillWhenTheFirstRunIsOver) {
    preferences.set(preference::appearance, QString("dark"));
    start();
    EXPECT_TRUE(keys.isRunning());
    EXPECT_TRUE(pill.isShown);
    EXPECT_TRUE(controller.permissionsGranted());
    EXPECT_EQ(windows.calls, QStringList{"appearance dark"});
}

TEST_F(ControllerStartTest, AppearanceIsTheSystemsByDefault) {
    start();
    EXPECT_EQ(windows.calls, QStringList{"appearance system"});
}

TEST_F(ControllerStartTest, OpensTheWindowAtLaunchWhenThatIsWanted) {
    preferences.set(preference::openWindowAtLaunch, true);
    start();
    EXPECT_TRUE(windows.calls.contains("home"));
}

TEST_F(ControllerStartTest, FirstRunPresentsItselfAndWatchesNoKeys) {
    preferences.set(preference::onboarded, false);
    preferences.set(preference::openWindowAtLaunch, true);
    start();
    EXPECT_FALSE(keys.isRunning());
    EXPECT_FALSE(pill.isShown);
    EXPECT_TRUE(screen.isOnboardingActive());
    EXPECT_EQ(windows.calls, (QStringList{"appearance system", "onboarding"}));
}

TEST_F(ControllerStartTest, EndOfTheFirstRunStartsEverything) {
    preferences.set(preference::onboarded, false);
    start();
    controller.finishOnboarding();
    EXPECT_TRUE(keys.isRunning());
    EXPECT_TRUE(pill.isShown);
    EXPECT_FALSE(screen.isOnboardingActive());
    EXPECT_EQ(windows.calls.mid(2), (QStringList{"close onboarding", "home"}));
}

TEST_F(ControllerStartTest, EndOfTheFirstRunWithoutPermissionOpensOnlyTheWindow) {
    preferences.set(preference::onboarded, false);
    accessibility.setTrusted(false);
    start();
    controller.finishOnboarding();
    EXPECT_FALSE(keys.isRunning());
    EXPECT_FALSE(pill.isShown);
    EXPECT_FALSE(controller.permissionsGranted());
    EXPECT_EQ(windows.calls.last(), "home");
}

TEST_F(ControllerStartTest, DuringTheFirstRunThePillShowsOnlyForATake) {
    preferences.set(preference::onboarded, false);
    start();
    controller.startDictation(Source::toggle);
    EXPECT_TRUE(pill.isShown);
    controller.cancelRecording();
    EXPECT_FALSE(pill.isShown);
}

TEST_F(ControllerStartTest, PermissionThatComesLaterStartsTheKeysAndShowsThePill) {
    preferences.set(preference::onboarded, false);
    accessibility.setTrusted(false);
    start();
    ASSERT_FALSE(keys.isRunning());
    accessibility.setTrusted(true);
    EXPECT_TRUE(keys.isRunning());
    EXPECT_TRUE(pill.isShown);
    EXPECT_TRUE(controller.permissionsGranted());
}

TEST_F(ControllerStartTest, PermissionThatGoesIsPublished) {
    start();
    std::vector<bool> told;
    const Handle observer =
        controller.subscribePermissionsGranted([&](const bool& granted) { told.push_back(granted); });
    accessibility.setTrusted(false);
    accessibility.setTrusted(false);
    EXPECT_EQ(told, std::vector<bool>{false});
}

TEST_F(ControllerStartTest, RecheckOfThePermissionStartsTheKeysOnly) {
    preferences.set(preference::onboarded, false);
    start();
    controller.recheckPermissions();
    EXPECT_TRUE(keys.isRunning());
    EXPECT_FALSE(pill.isShown);
}

TEST_F(ControllerStartTest, FirstExchangeRunsAndEndsWithTheController) {
    bool ended = false;
    struct Mark {
        bool& ended;
        ~Mark() { ended = true; }
    };
    auto other =
        std::make_unique<DictationController>(world.foundation, status, screen, keys, capture, delivery);
    other->start([this, &ended](TaskScope scope) -> QCoro::Task<void> {
        const Mark mark{ended};
        co_await sleep(clock, seconds(10), scope);
    });
    EXPECT_FALSE(ended);
    other.reset();
    EXPECT_TRUE(ended);
}

TEST_F(ControllerStartTest, GesturesDoNothingBeforeTheStart) {
    holdFor(1);
    EXPECT_TRUE(isIdle());
}

} // namespace

} // namespace lorvane
