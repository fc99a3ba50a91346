// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/testing/TestFoundation.h"
#include "platform/linux/desktop/QtClock.h"
#include "platform/linux/wayland/WaylandConnection.h"
#include "platform/linux/wayland/WaylandSeat.h"
#include "platform/linux/wlroots/InputMethodPoster.h"
#include "platform/linux/wlroots/VirtualKeyboardPoster.h"
#include "support/DesktopApps.h"
#include "support/FieldReader.h"
#include "support/PhysicalKeyboard.h"

#include <gtest/gtest.h>

namespace lorvane {

/// The adapters in a running sway, as the program has them.
class SwayFixture : public ::testing::Test {
 protected:
    /// The user's next key: see VirtualKeyboard.
    void TearDown() override { hand.tap(keycode::leftShift); }
    void SetUp() override { ASSERT_TRUE(connection.awaitGlobals(clock, std::chrono::seconds(10))); }

    std::optional<PostOutcome> post(FragmentPoster& poster, const DesktopApp& app, const QString& fragment);
    bool canPost(FragmentPoster& poster, const DesktopApp& app);
    /// A fragment at a time, each one read back before the next goes out; says what stands there at the end,
    /// and how fast it was.
    QString type(FragmentPoster& poster, const DesktopApp& app, const QString& text);
    void expectTyped(FragmentPoster& poster, const DesktopApp& app, const QString& text);
    /// The compositor has carried out everything so far.
    void settle(WaylandConnection& with);
    /// Looks every millisecond, for times to be worth something.
    bool waitClosely(const std::function<bool()>& condition);

    TestFoundation fakes;
    QtClock clock;
    Foundation foundation{clock, fakes.preferences, fakes.words, fakes.log};
    WaylandConnection connection{fakes.log};
    WaylandSeat seat{connection};
    VirtualKeyboard keyboard{connection, seat, clock};
    InputMethodPoster inputMethod{connection, seat, clock};
    VirtualKeyboardPoster keyPoster{keyboard, connection};
    PhysicalKeyboard hand;
};

} // namespace lorvane
