// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/x11/X11ExtraKey.h"

#include "base/PreferenceCatalogue.h"
#include "platform/linux/x11/test/X11DesktopFixture.h"

namespace lorvane {

namespace {

class X11ExtraKeyTest : public X11DesktopFixture {
 protected:
    /// Whether another program could have the key now.
    bool isFree(int key) {
        connection.sync();
        const auto root = connection.root();
        const auto code = static_cast<std::uint8_t>(key);
        auto* const error =
            xcb_request_check(other, xcb_grab_key_checked(other, 0, root, XCB_MOD_MASK_ANY, code,
                                                          XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC));
        std::free(error);
        xcb_ungrab_key(other, code, root, XCB_MOD_MASK_ANY);
        syncOther();
        return error == nullptr;
    }
    void choose(const QString& hotkey, const QString& toggleHotkey) {
        preferences.set(preference::hotkey, hotkey);
        preferences.set(preference::toggleHotkey, toggleHotkey);
    }
};

TEST_F(X11ExtraKeyTest, KeyIsFreeWhileNobodyChoseIt) {
    const X11ExtraKey extra(connection, foundation);
    EXPECT_EQ(extra.state(), X11ExtraKey::State::notChosen);
    EXPECT_TRUE(isFree(keycode::menu));
}

TEST_F(X11ExtraKeyTest, KeyIsKeptAsHoldKeyAndAsHandsFreeKey) {
    const X11ExtraKey extra(connection, foundation);
    choose("fn", "rightOption");
    EXPECT_EQ(extra.state(), X11ExtraKey::State::kept);
    EXPECT_FALSE(isFree(keycode::menu));
    choose("rightControl", "fn");
    EXPECT_FALSE(isFree(keycode::menu));
}

TEST_F(X11ExtraKeyTest, KeyIsReleasedWhenAnotherIsChosen) {
    choose("fn", "");
    const X11ExtraKey extra(connection, foundation);
    EXPECT_FALSE(isFree(keycode::menu));
    choose("rightControl", "");
    EXPECT_EQ(extra.state(), X11ExtraKey::State::notChosen);
    EXPECT_TRUE(isFree(keycode::menu));
}

TEST_F(X11ExtraKeyTest, AnotherExtraKeyIsKeptInsteadOfTheFirst) {
    choose("fn", "");
    const X11ExtraKey extra(connection, foundation);
    preferences.set(preference::extraKey, QString("Pause"));
    EXPECT_EQ(extra.state(), X11ExtraKey::State::kept);
    EXPECT_TRUE(isFree(keycode::menu));
    EXPECT_FALSE(isFree(keycode::pause));
}

TEST_F(X11ExtraKeyTest, KeyOfAnotherProgramIsReported) {
    xcb_grab_key(other, 0, connection.root(), XCB_MOD_MASK_ANY, keycode::menu, XCB_GRAB_MODE_ASYNC,
                 XCB_GRAB_MODE_ASYNC);
    syncOther();
    choose("fn", "");
    const X11ExtraKey extra(connection, foundation);
    EXPECT_EQ(extra.state(), X11ExtraKey::State::refused);
    EXPECT_EQ(lines.size(), 1) << lines.join("\n").toStdString();
    preferences.set(preference::extraKey, QString("ScrollLock"));
    EXPECT_EQ(extra.state(), X11ExtraKey::State::kept);
}

TEST_F(X11ExtraKeyTest, NameOfNoKeyIsReported) {
    choose("fn", "");
    preferences.set(preference::extraKey, QString("Hyper"));
    const X11ExtraKey extra(connection, foundation);
    EXPECT_EQ(extra.state(), X11ExtraKey::State::unknownKey);
    EXPECT_TRUE(isFree(keycode::menu));
}

TEST_F(X11ExtraKeyTest, KeyIsFreeAgainAtTheEnd) {
    choose("fn", "");
    {
        const X11ExtraKey extra(connection, foundation);
        EXPECT_FALSE(isFree(keycode::menu));
    }
    EXPECT_TRUE(isFree(keycode::menu));
}

} // namespace

} // namespace lorvane
