// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/setup/SetupRunner.h"

#include "app/setup/test/FakeSetupWorld.h"

#include <gtest/gtest.h>

namespace lorvane {

namespace {

const QString journal = QStringLiteral("/state/setup.json");
const QString kwinrc = QStringLiteral("/config/kwinrc");
const QString desktopFile = QStringLiteral("/data/applications/keys.desktop");

class SetupRunnerTest : public ::testing::Test {
 protected:
    SetupRunnerTest() {
        plan.files = {{desktopFile, "ours\n"}};
        plan.keys = {{kwinrc, "Xwayland", "XwaylandEavesdrops", "Modifiers"}};
        plan.placesShellExtension = true;
        plan.switchesDevicesOn = true;
        plan.asksPortal = true;
        plan.refreshes = {{QStringLiteral("kbuildsycoca5")}};
    }
    /// What is left of the world without the notes of commands.
    [[nodiscard]] auto state() const {
        return std::tuple(world.files, world.extension, world.devices, world.portal);
    }

    FakeSetupWorld world;
    SetupRunner runner{world, journal};
    SetupPlan plan;
};

TEST_F(SetupRunnerTest, PlanIsCarriedOutAndTheDesktopLooksAgain) {
    world.files[kwinrc] = "[Xwayland]\nScale=1\n";
    EXPECT_EQ(runner.apply(plan), QStringList());
    EXPECT_EQ(world.files[desktopFile], "ours\n");
    EXPECT_EQ(world.files[kwinrc], "[Xwayland]\nScale=1\nXwaylandEavesdrops=Modifiers\n");
    EXPECT_TRUE(world.extension);
    EXPECT_TRUE(world.devices);
    EXPECT_TRUE(world.portal);
    EXPECT_EQ(world.commands.last(), QStringLiteral("kbuildsycoca5"));
}

TEST_F(SetupRunnerTest, UndoingGivesEverythingBackByteForByte) {
    world.files[kwinrc] = "  [Xwayland]\r\nXwaylandEavesdrops[$e]=None  \n\xff\n";
    const auto before = state();
    EXPECT_EQ(runner.apply(plan), QStringList());
    EXPECT_NE(state(), before);
    EXPECT_TRUE(runner.hasAnythingToUndo());
    EXPECT_EQ(runner.undo(), QStringList());
    EXPECT_EQ(state(), before);
    EXPECT_FALSE(runner.hasAnythingToUndo());
    EXPECT_EQ(world.commands.last(), QStringLiteral("kbuildsycoca5"));
}

TEST_F(SetupRunnerTest, FilesThatWereNotThereAreGoneAgain) {
    EXPECT_EQ(runner.apply(plan), QStringList());
    EXPECT_FALSE(world.folders.empty());
    EXPECT_EQ(runner.undo(), QStringList());
    EXPECT_TRUE(world.files.empty());
    EXPECT_TRUE(world.folders.empty()) << "with the folders that were made for them";
}

TEST_F(SetupRunnerTest, FoldersThatWereThereStay) {
    world.folders = {QStringLiteral("/config"), QStringLiteral("/data/applications")};
    EXPECT_EQ(runner.apply(plan), QStringList());
    EXPECT_EQ(runner.undo(), QStringList());
    EXPECT_EQ(world.folders, (std::set{QStringLiteral("/config"), QStringLiteral("/data/applications")}));
}

TEST_F(SetupRunnerTest, SettingsThatCannotBeReadAreLeftAloneAndNamed) {
    world.files[kwinrc] = "[Everything]\nof=the user's\n";
    world.unreadable = {kwinrc};
    EXPECT_EQ(runner.apply(plan), QStringList({kwinrc + QStringLiteral(" (Permission denied)")}));
    EXPECT_EQ(world.files[kwinrc], "[Everything]\nof=the user's\n");
    EXPECT_EQ(runner.undo(), QStringList());
    EXPECT_EQ(world.files[kwinrc], "[Everything]\nof=the user's\n");
}

TEST_F(SetupRunnerTest, SettingsThatCannotBeReadAnyMoreAreNotGivenBack) {
    EXPECT_EQ(runner.apply(plan), QStringList());
    world.unreadable = {kwinrc};
    EXPECT_EQ(runner.undo(), QStringList({kwinrc + QStringLiteral(" (Permission denied)")}));
    EXPECT_TRUE(runner.hasAnythingToUndo());
}

TEST_F(SetupRunnerTest, JournalThatCannotBeReadIsNotWrittenOver) {
    EXPECT_EQ(runner.apply(plan), QStringList());
    world.unreadable = {journal};
    const auto before = state();
    EXPECT_FALSE(runner.apply(plan).isEmpty());
    EXPECT_EQ(state(), before);
    EXPECT_TRUE(runner.hasAnythingToUndo());
    EXPECT_EQ(runner.undo(), QStringList({journal + QStringLiteral(" (Permission denied)")}));
    EXPECT_EQ(state(), before);
}

TEST_F(SetupRunnerTest, ApplyingTwiceIsUndoneOnce) {
    world.files[kwinrc] = "[Xwayland]\nScale=1\n";
    const auto before = state();
    EXPECT_EQ(runner.apply(plan), QStringList());
    const auto after = state();
    EXPECT_EQ(runner.apply(plan), QStringList());
    EXPECT_EQ(state(), after);
    EXPECT_EQ(runner.undo(), QStringList());
    EXPECT_EQ(state(), before);
}

TEST_F(SetupRunnerTest, WhatOthersChangedSinceStays) {
    world.files[kwinrc] = "[Xwayland]\nXwaylandEavesdrops=None\n";
    EXPECT_EQ(runner.apply(plan), QStringList());
    world.files[kwinrc] += "[New]\na=1\n";
    EXPECT_EQ(runner.undo(), QStringList());
    EXPECT_EQ(world.files[kwinrc], "[Xwayland]\nXwaylandEavesdrops=None\n[New]\na=1\n");
}

TEST_F(SetupRunnerTest, FileThatSomebodyElseHasWrittenSinceIsNotTakenAway) {
    EXPECT_EQ(runner.apply(plan), QStringList());
    world.files[desktopFile] = "theirs\n";
    EXPECT_EQ(runner.undo(), QStringList({desktopFile}));
    EXPECT_EQ(world.files[desktopFile], "theirs\n");
    EXPECT_TRUE(runner.hasAnythingToUndo());
}

TEST_F(SetupRunnerTest, NothingIsChangedThatCannotBeRemembered) {
    world.readOnly = {journal};
    const auto before = state();
    EXPECT_FALSE(runner.apply(plan).isEmpty());
    EXPECT_EQ(state(), before);
}

TEST_F(SetupRunnerTest, WhatCannotBeDoneIsToldAndTheRestCanBeUndone) {
    world.readOnly = {kwinrc};
    world.extensionProblem = QStringLiteral("no Shell");
    world.userAllows = false;
    const QStringList problems = runner.apply(plan);
    EXPECT_EQ(problems.size(), 3);
    EXPECT_TRUE(problems.contains(kwinrc));
    EXPECT_EQ(world.files[desktopFile], "ours\n");
    world.extensionProblem.clear();
    EXPECT_EQ(runner.undo(), QStringList());
    EXPECT_TRUE(world.files.empty());
}

TEST_F(SetupRunnerTest, JournalThatIsGarbageUndoesNothing) {
    world.files[journal] = "{ not json";
    EXPECT_FALSE(runner.hasAnythingToUndo());
    EXPECT_EQ(runner.undo(), QStringList());
}

} // namespace

} // namespace lorvane
