// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/setup/SetupPlan.h"

#include <gtest/gtest.h>

namespace lorvane {

namespace {

SetupFacts factsOf(SetupDesktop desktop) {
    SetupFacts facts;
    facts.desktop = desktop;
    facts.configFolder = QStringLiteral("/c");
    facts.dataFolder = QStringLiteral("/d");
    facts.program = QStringLiteral("/usr/bin/lorvane");
    facts.inputMethod = QStringLiteral("/usr/lib/lorvane/lorvane-input-method");
    facts.hasShellExtension = true;
    facts.userName = QStringLiteral("ada");
    return facts;
}

SetupPlan holdOn(SetupDesktop desktop) { return planSetup(SetupTopic::hold, factsOf(desktop), {}); }
SetupPlan typingOn(SetupDesktop desktop) { return planSetup(SetupTopic::typing, factsOf(desktop), {}); }

TEST(SetupPlan, EveryPlanTellsSomething) {
    for (const SetupDesktop desktop :
         {SetupDesktop::x11, SetupDesktop::gnome, SetupDesktop::kde, SetupDesktop::sway,
          SetupDesktop::hyprland, SetupDesktop::niri, SetupDesktop::other}) {
        EXPECT_FALSE(holdOn(desktop).told.isEmpty());
        EXPECT_FALSE(typingOn(desktop).told.isEmpty());
        EXPECT_TRUE(bindingLines(desktop).contains(QStringLiteral("lorvane")));
    }
}

TEST(SetupPlan, WhereNothingIsMissingNothingIsChanged) {
    for (const SetupDesktop desktop : {SetupDesktop::x11, SetupDesktop::sway}) {
        EXPECT_FALSE(holdOn(desktop).changesAnything());
        EXPECT_FALSE(typingOn(desktop).changesAnything());
    }
    EXPECT_FALSE(typingOn(SetupDesktop::gnome).changesAnything());
}

TEST(SetupPlan, GnomeGetsTheExtensionWhichIsLoadedAtTheNextLogin) {
    const SetupPlan plan = holdOn(SetupDesktop::gnome);
    EXPECT_TRUE(plan.placesShellExtension);
    EXPECT_FALSE(plan.afterwards.isEmpty());
}

TEST(SetupPlan, GnomeWithAnOlderExtensionGetsThePresentOneAndIsToldSo) {
    SetupFacts facts = factsOf(SetupDesktop::gnome);
    facts.isShellExtensionOutdated = true;
    const SetupPlan plan = planSetup(SetupTopic::hold, facts, {});
    EXPECT_TRUE(plan.placesShellExtension);
    EXPECT_NE(plan.told.first(), holdOn(SetupDesktop::gnome).told.first());
    EXPECT_FALSE(plan.afterwards.isEmpty());
}

TEST(SetupPlan, GnomeWithoutAnExtensionOrWithOneInPlaceIsLeftAlone) {
    SetupFacts facts = factsOf(SetupDesktop::gnome);
    facts.isShellExtensionInPlace = true;
    EXPECT_FALSE(planSetup(SetupTopic::hold, facts, {}).changesAnything());
    facts.isShellExtensionInPlace = false;
    facts.hasShellExtension = false;
    EXPECT_FALSE(planSetup(SetupTopic::hold, facts, {}).changesAnything());
}

TEST(SetupPlan, GnomeWithAnExtensionThatIsNotLoadedYetIsToldToLogInAgain) {
    SetupFacts facts = factsOf(SetupDesktop::gnome);
    facts.isShellExtensionInPlace = true;
    facts.isShellExtensionForNextLogin = true;
    const SetupPlan plan = planSetup(SetupTopic::hold, facts, {});
    EXPECT_FALSE(plan.changesAnything());
    EXPECT_TRUE(plan.told.first().contains("Log out and in again"));
}

TEST(SetupPlan, KdeIsLetShowModifiersAndNothingMore) {
    SetupFacts facts = factsOf(SetupDesktop::kde);
    facts.hasX = true;
    const SetupPlan plan = planSetup(SetupTopic::hold, facts, {});
    ASSERT_EQ(plan.keys.size(), 1U);
    EXPECT_EQ(plan.keys[0].path, QStringLiteral("/c/kwinrc"));
    EXPECT_EQ(plan.keys[0].group + '/' + plan.keys[0].key + '=' + plan.keys[0].value,
              "Xwayland/XwaylandEavesdrops=Modifiers");
    ASSERT_EQ(plan.refreshes.size(), 2U);
    EXPECT_TRUE(plan.refreshes[0].contains(QStringLiteral("--type=method_call"))) << "else it is a signal";
    EXPECT_TRUE(plan.refreshes[1].last().startsWith(QStringLiteral("{'Xwayland': [[byte 0x58,0x77,")));
    EXPECT_EQ(plan.afterwards.size(), 1);
}

TEST(SetupPlan, KdeThatShowsModifiersOrHasNoXServerIsLeftAlone) {
    SetupFacts facts = factsOf(SetupDesktop::kde);
    EXPECT_FALSE(planSetup(SetupTopic::hold, facts, {}).changesAnything());
    facts.hasX = true;
    facts.showsModifiers = true;
    EXPECT_FALSE(planSetup(SetupTopic::hold, facts, {}).changesAnything());
}

TEST(SetupPlan, KdeTypingNamesTheProgramsByTheirPaths) {
    const SetupPlan plan = typingOn(SetupDesktop::kde);
    ASSERT_EQ(plan.files.size(), 2U);
    EXPECT_TRUE(plan.files[0].content.contains("\nExec=/usr/bin/lorvane\n"));
    EXPECT_TRUE(plan.files[0].content.contains("X-KDE-Wayland-Interfaces=org_kde_kwin_fake_input"));
    EXPECT_TRUE(plan.files[1].content.contains("\nExec=/usr/lib/lorvane/lorvane-input-method\n"));
    EXPECT_TRUE(plan.files[1].content.contains("X-KDE-Wayland-VirtualKeyboard=true"));
    ASSERT_EQ(plan.keys.size(), 1U);
    EXPECT_EQ(plan.keys[0].value, plan.files[1].path.toUtf8());
}

TEST(SetupPlan, InstalledKdeEntriesAreUsedAsTheyAre) {
    SetupFacts facts = factsOf(SetupDesktop::kde);
    facts.inputMethodEntry = QStringLiteral("/usr/share/applications/com.ostrand.tirra.inputmethod.desktop");
    const SetupPlan plan = planSetup(SetupTopic::typing, facts, {});
    EXPECT_TRUE(plan.files.empty());
    ASSERT_EQ(plan.keys.size(), 1U);
    EXPECT_EQ(plan.keys[0].value, facts.inputMethodEntry.toUtf8());
}

TEST(SetupPlan, KdeThatHasTheInputMethodIsLeftAlone) {
    SetupFacts facts = factsOf(SetupDesktop::kde);
    facts.chosenInputMethod = QStringLiteral("/usr/share/applications/com.ostrand.tirra.inputmethod.desktop");
    EXPECT_FALSE(planSetup(SetupTopic::typing, facts, {}).changesAnything());
    facts.chosenInputMethod = QStringLiteral("/usr/share/applications/other.desktop");
    EXPECT_TRUE(planSetup(SetupTopic::typing, facts, {}).changesAnything());
}

TEST(SetupPlan, KdeWithoutTheInputMethodOnlyAllowsKeys) {
    SetupFacts facts = factsOf(SetupDesktop::kde);
    facts.inputMethod.clear();
    const SetupPlan plan = planSetup(SetupTopic::typing, facts, {});
    EXPECT_EQ(plan.files.size(), 1U);
    EXPECT_TRUE(plan.keys.empty());
}

TEST(SetupPlan, KeyDevicesAreSwitchedOnButTheGroupIsTheUsersOwnAffair) {
    SetupFacts facts = factsOf(SetupDesktop::niri);
    facts.keyDevices = true;
    const SetupPlan plan = planSetup(SetupTopic::hold, facts, {});
    EXPECT_TRUE(plan.switchesDevicesOn);
    EXPECT_TRUE(plan.refreshes.empty());
    EXPECT_TRUE(plan.afterwards.last().contains(QStringLiteral("usermod -aG input ada")));
    facts.mayReadDevices = true;
    EXPECT_TRUE(planSetup(SetupTopic::hold, facts, {}).afterwards.isEmpty());
}

TEST(SetupPlan, PortalIsAskedOnlyWhereItKeepsItsWord) {
    SetupFacts facts = factsOf(SetupDesktop::other);
    EXPECT_FALSE(planSetup(SetupTopic::typing, facts, {}).changesAnything());
    facts.portalPostsKeys = true;
    EXPECT_TRUE(planSetup(SetupTopic::typing, facts, {}).asksPortal);
}

} // namespace

} // namespace lorvane
