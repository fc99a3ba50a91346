// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/LorvaneProgram.h"
#include "support/ScriptedBackend.h"
#include "support/VirtualDisplay.h"

#include <gtest/gtest.h>

namespace lorvane {

namespace {

TEST(DisplayLoss, ProgramSaysThatTheDisplayIsGoneAndEndsWithStatusOne) {
    VirtualDisplay display;
    const ScriptedBackend backend;
    LorvaneProgram program(backend.url().toString());
    display.end();
    ASSERT_TRUE(waitUntil([&] { return !program.isRunning(); }));
    const QString said = program.output();
    EXPECT_EQ(program.exitCode(), 1) << said.toStdString();
    EXPECT_TRUE(said.contains(QStringLiteral("lorvane: the X display is gone"))) << said.toStdString();
    EXPECT_TRUE(program.log().contains(QStringLiteral("the X display is gone")));
}

} // namespace

} // namespace lorvane
