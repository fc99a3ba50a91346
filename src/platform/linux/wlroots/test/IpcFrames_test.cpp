// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/wlroots/IpcFrames.h"

#include <gtest/gtest.h>

#include <vector>

namespace lorvane {

namespace {

TEST(IpcFrames, MessageComesBackWhole) {
    const IpcMessage message{ipcType::getConfig, "some text"};
    IpcReader reader;
    reader.feed(encodeIpc(message));
    EXPECT_EQ(reader.next(), message);
    EXPECT_FALSE(reader.next());
    EXPECT_FALSE(reader.isBroken());
}

TEST(IpcFrames, MessagesAreCutOutOfAnyPieces) {
    const IpcMessage first{ipcType::runCommand, "[]"};
    const IpcMessage second{ipcType::bindingEvent, ""};
    const QByteArray stream = encodeIpc(first) + encodeIpc(second);
    for (qsizetype piece = 1; piece <= stream.size(); ++piece) {
        IpcReader reader;
        std::vector<IpcMessage> seen;
        for (qsizetype at = 0; at < stream.size(); at += piece) {
            reader.feed(stream.mid(at, piece));
            while (const auto message = reader.next()) {
                seen.push_back(*message);
            }
        }
        EXPECT_EQ(seen, (std::vector<IpcMessage>{first, second})) << piece;
    }
}

TEST(IpcFrames, EventsAreToldFromAnswers) {
    EXPECT_TRUE(IpcMessage({ipcType::bindingEvent, {}}).isEvent());
    EXPECT_FALSE(IpcMessage({ipcType::getBindingState, {}}).isEvent());
}

TEST(IpcFrames, WhatIsNoMessageBreaksTheStream) {
    IpcReader reader;
    reader.feed("i3");
    EXPECT_FALSE(reader.next());
    EXPECT_FALSE(reader.isBroken());
    reader.feed("-ipx");
    EXPECT_FALSE(reader.next());
    EXPECT_TRUE(reader.isBroken());
    reader.feed(encodeIpc({0, "[]"}));
    EXPECT_FALSE(reader.next());
}

TEST(IpcFrames, LengthBeyondAllReasonBreaksTheStreamBeforeItIsRead) {
    QByteArray hostile = encodeIpc({0, {}});
    hostile[6] = hostile[7] = hostile[8] = hostile[9] = '\xff';
    IpcReader reader;
    reader.feed(hostile);
    EXPECT_FALSE(reader.next());
    EXPECT_TRUE(reader.isBroken());
}

} // namespace

} // namespace lorvane
