// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/doctor/DoctorRoads.h"

#include <gtest/gtest.h>

namespace lorvane {
namespace {

using Need = DoctorRoad::Need;

RoadFacts complete() {
    RoadFacts facts;
    facts.isWayland = true;
    facts.hasX = true;
    facts.hold = "bindings of sway";
    facts.typing = "input method";
    facts.paste = "virtual keyboard";
    facts.pill = RoadFacts::PillKind::xWindow;
    facts.hasTray = true;
    facts.readsFields = true;
    return facts;
}

DoctorRoad roadOf(const RoadFacts& facts, Need need) {
    const Localisation words;
    for (const DoctorRoad& road : roadsFrom(facts, words)) {
        if (road.need == need) {
            return road;
        }
    }
    ADD_FAILURE() << "no road " << idOf(need).toStdString();
    return {};
}

TEST(DoctorRoads, EveryNeedHasItsLineOnce) {
    const Localisation words;
    QStringList needs;
    for (const DoctorRoad& road : roadsFrom(complete(), words)) {
        needs.append(idOf(road.need));
    }
    EXPECT_EQ(needs, (QStringList{"hold", "typing", "paste", "pill", "tray", "reading"}));
}

TEST(DoctorRoads, WhereNothingIsMissingNoStepIsTold) {
    const Localisation words;
    for (const DoctorRoad& road : roadsFrom(complete(), words)) {
        EXPECT_FALSE(road.taken.isEmpty()) << idOf(road.need).toStdString();
        EXPECT_TRUE(road.better.isEmpty() && road.step.isEmpty()) << idOf(road.need).toStdString();
    }
}

TEST(DoctorRoads, AHoldKeyThatCannotBeSeenIsOpenedBySetupOrByABinding) {
    RoadFacts facts = complete();
    facts.hold.clear();
    EXPECT_TRUE(roadOf(facts, Need::hold).taken.isEmpty());
    EXPECT_TRUE(roadOf(facts, Need::hold).step.contains("lorvane toggle"));
    facts.holdSetup = "An extension is installed.";
    EXPECT_EQ(roadOf(facts, Need::hold).better, "An extension is installed.");
    EXPECT_EQ(roadOf(facts, Need::hold).step, "lorvane setup hold");
}

TEST(DoctorRoads, AHoldKeyThatComesWithTheNextLoginSendsNobodyToBindOne) {
    RoadFacts facts = complete();
    facts.hold.clear();
    facts.holdAwaitsLogin = true;
    EXPECT_TRUE(roadOf(facts, Need::hold).taken.isEmpty());
    EXPECT_TRUE(roadOf(facts, Need::hold).step.contains("Log out and in again"));
    facts.hold = "shell extension";
    EXPECT_TRUE(roadOf(facts, Need::hold).step.isEmpty());
}

TEST(DoctorRoads, AHoldRoadThatLacksKeysNamesTheBetterOne) {
    RoadFacts facts = complete();
    facts.holdSetup = "XWayland may see keys.";
    EXPECT_TRUE(roadOf(facts, Need::hold).step.isEmpty()) << "nothing is lacking";
    facts.holdLack = "left and right are not told apart";
    EXPECT_EQ(roadOf(facts, Need::hold).taken, "bindings of sway");
    EXPECT_EQ(roadOf(facts, Need::hold).step, "lorvane setup hold");
}

TEST(DoctorRoads, PastingNamesTheStepByWhichTerminalsBecomeKnown) {
    RoadFacts facts = complete();
    facts.holdSetupTellsWindows = true;
    EXPECT_EQ(roadOf(facts, Need::paste).taken, "virtual keyboard");
    EXPECT_FALSE(roadOf(facts, Need::paste).better.isEmpty());
    EXPECT_EQ(roadOf(facts, Need::paste).step, "lorvane setup hold");
}

TEST(DoctorRoads, TypingIsAlwaysByAccessibilityFirst) {
    RoadFacts facts = complete();
    EXPECT_EQ(roadOf(facts, Need::typing).taken, "insertion through accessibility, elsewhere input method");
    facts.typing.clear();
    facts.typingSetup = "A helper is installed.";
    EXPECT_EQ(roadOf(facts, Need::typing).taken, "insertion through accessibility, elsewhere by pasting");
    EXPECT_EQ(roadOf(facts, Need::typing).step, "lorvane setup typing");
}

TEST(DoctorRoads, WithoutKeysOfItsOwnASessionPastesIntoXWindowsOnly) {
    RoadFacts facts = complete();
    facts.paste.clear();
    EXPECT_TRUE(roadOf(facts, Need::paste).taken.contains("X11 applications only"));
    facts.hasX = false;
    EXPECT_TRUE(roadOf(facts, Need::paste).taken.isEmpty());
}

TEST(DoctorRoads, WithoutAnXServerThePillNamesWhatBringsIt) {
    RoadFacts facts = complete();
    for (const auto kind : {RoadFacts::PillKind::none, RoadFacts::PillKind::layerShell}) {
        facts.pill = kind;
        EXPECT_TRUE(roadOf(facts, Need::pill).step.contains("xwayland"));
    }
    EXPECT_FALSE(roadOf(facts, Need::pill).taken.isEmpty());
}

TEST(DoctorRoads, WithoutATrayThePillHasTheMenu) {
    RoadFacts facts = complete();
    facts.hasTray = false;
    facts.trayStep = "Start a panel.";
    EXPECT_FALSE(roadOf(facts, Need::tray).taken.isEmpty());
    facts.pill = RoadFacts::PillKind::none;
    EXPECT_TRUE(roadOf(facts, Need::tray).taken.isEmpty());
    EXPECT_EQ(roadOf(facts, Need::tray).step, "Start a panel.");
}

} // namespace
} // namespace lorvane
