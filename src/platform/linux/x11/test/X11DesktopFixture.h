// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Foundation.h"
#include "base/testing/MemoryPreferenceStore.h"
#include "platform/linux/desktop/QtClock.h"
#include "platform/linux/x11/X11Connection.h"
#include "support/PhysicalKeyboard.h"
#include "support/Wait.h"

#include <gtest/gtest.h>

#include <xcb/xtest.h>

namespace lorvane {

/// The real clock, preferences in memory, our connection, a user's hand and another program.
class X11DesktopFixture : public ::testing::Test {
 protected:
    ~X11DesktopFixture() override { xcb_disconnect(other); }

    /// A synthetic key, as other programs make it.
    void typeSynthetically(int key) {
        for (const std::uint8_t type : {XCB_KEY_PRESS, XCB_KEY_RELEASE}) {
            xcb_test_fake_input(other, type, static_cast<std::uint8_t>(key), XCB_CURRENT_TIME,
                                XCB_WINDOW_NONE, 0, 0, 0);
        }
        syncOther();
    }
    void syncOther() { std::free(xcb_get_input_focus_reply(other, xcb_get_input_focus(other), nullptr)); }
    void setLayout(const QStringList& arguments) {
        const ToolResult result = runTool("setxkbmap", arguments);
        ASSERT_EQ(result.status, 0) << result.errors.constData();
    }

    QtClock clock;
    MemoryPreferenceStore store;
    Preferences preferences{store};
    Localisation words;
    QStringList lines;
    DiagnosticLog log{clock, std::nullopt, [this](const QString& line) { lines.append(line); }};
    Foundation foundation{clock, preferences, words, log};
    X11Connection connection{log};
    PhysicalKeyboard hand;
    xcb_connection_t* other = xcb_connect(nullptr, nullptr);
};

} // namespace lorvane
