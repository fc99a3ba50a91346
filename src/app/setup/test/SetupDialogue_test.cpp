// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/setup/SetupDialogue.h"

#include "app/setup/test/FakeSetupWorld.h"

#include <gtest/gtest.h>

namespace lorvane {

namespace {

const QString kwinrc = QStringLiteral("/c/kwinrc");

class SetupDialogueTest : public ::testing::Test {
 protected:
    SetupDialogueTest() {
        facts.desktop = SetupDesktop::kde;
        facts.configFolder = QStringLiteral("/c");
        facts.inputMethodEntry = QStringLiteral("/a/inputmethod.desktop");
    }
    int run(SetupRequest request) {
        return runSetupDialogue(request, facts, runner,
                                {[this](const QString& text) { printed += text + u'\n'; },
                                 [this](const QString&) {
                                     ++questions;
                                     return answer;
                                 }},
                                {});
    }

    const SetupRequest typing{SetupTopic::typing, false, false};
    SetupFacts facts;
    FakeSetupWorld world;
    SetupRunner runner{world, QStringLiteral("/state/hold.json")};
    QString printed;
    QString answer;
    int questions = 0;
};

TEST_F(SetupDialogueTest, NothingIsChangedUnlessTheUserSaysYes) {
    for (const char* const no : {"", "n", "no", "maybe", "yesterday"}) {
        answer = QString::fromLatin1(no);
        EXPECT_EQ(run(typing), 1) << no;
        EXPECT_TRUE(world.files.empty()) << no;
    }
    EXPECT_EQ(questions, 5);
}

TEST_F(SetupDialogueTest, YesDoesItAndUndoTakesItBack) {
    answer = QStringLiteral(" Y \n");
    EXPECT_EQ(run(typing), 0);
    EXPECT_TRUE(world.files.contains(kwinrc));
    EXPECT_EQ(run({SetupTopic::typing, true, false}), 0);
    EXPECT_TRUE(world.files.empty());
    EXPECT_EQ(questions, 1);
}

TEST_F(SetupDialogueTest, WithYesNobodyIsAsked) {
    EXPECT_EQ(run({SetupTopic::typing, false, true}), 0);
    EXPECT_EQ(questions, 0);
    EXPECT_TRUE(world.files.contains(kwinrc));
}

TEST_F(SetupDialogueTest, WhatWillBeWrittenIsToldBefore) {
    answer = QStringLiteral("n");
    (void)run(typing);
    EXPECT_TRUE(printed.contains(kwinrc));
    EXPECT_TRUE(printed.contains(QStringLiteral("InputMethod")));
}

TEST_F(SetupDialogueTest, WhereNothingIsToBeDoneNobodyIsAsked) {
    facts.desktop = SetupDesktop::x11;
    EXPECT_EQ(run(typing), 0);
    EXPECT_EQ(questions, 0);
    EXPECT_FALSE(printed.isEmpty());
}

TEST_F(SetupDialogueTest, UndoingNothingIsNoProblem) {
    EXPECT_EQ(run({SetupTopic::typing, true, false}), 0);
    EXPECT_TRUE(printed.contains(QStringLiteral("nothing to undo")));
}

TEST_F(SetupDialogueTest, WhatCannotBeDoneIsToldWithTheStatus) {
    world.readOnly = {kwinrc};
    EXPECT_EQ(run({SetupTopic::typing, false, true}), 1);
    EXPECT_TRUE(printed.contains(QStringLiteral("Could not be done: /c/kwinrc")));
}

} // namespace

} // namespace lorvane
