// SPDX-License-Identifier: GPL-3.0-or-later
#include "base/PreferenceCatalogue.h"
#include "platform/linux/x11/X11Capabilities.h"
#include "platform/linux/x11/X11ExtraKey.h"
#include "platform/linux/x11/X11KeyEvents.h"
#include "platform/linux/x11/X11PasteKeys.h"
#include "platform/linux/x11/X11Workspace.h"
#include "platform/linux/x11/test/X11DesktopFixture.h"
#include "support/VirtualDisplay.h"

namespace lorvane {

namespace {

/// Everything that stands on the connection, on a display that is about to go.
class DisplayLossTest : public ::testing::Test {
 protected:
    void SetUp() override {
        ASSERT_TRUE(connection.isAlive());
        ASSERT_TRUE(keys.isWatchingPossible());
    }
    void lose() {
        display.end();
        EXPECT_TRUE(waitUntil([this] { return losses > 0; }));
    }
    /// For long enough that every timer has run.
    void goOn() {
        (void)waitUntil([] { return false; }, std::chrono::milliseconds(300));
    }

    VirtualDisplay display;
    QtClock clock;
    MemoryPreferenceStore store;
    Preferences preferences{store};
    Localisation words;
    QStringList lines;
    DiagnosticLog log{clock, std::nullopt, [this](const QString& line) { lines.append(line); }};
    Foundation foundation{clock, preferences, words, log};
    X11Connection connection{log};
    X11Workspace workspace{connection, DesktopEntries({}, "en_US")};
    X11KeyEvents keys{connection, foundation, [this] { return workspace.isOwnProcessInFront(); }};
    X11ExtraKey extraKey{connection, foundation};
    TypingLayout layout{connection};
    X11PasteKeys pasteKeys{connection, clock, layout};
    int losses = 0;
    Handle lost = connection.onLost([this] { ++losses; });
};

TEST_F(DisplayLossTest, IsToldOnceAndEveryReplyIsAbsent) {
    lose();
    EXPECT_FALSE(connection.isAlive());
    EXPECT_EQ(connection.reply(xcb_get_input_focus_reply, xcb_get_input_focus(connection.xcb())), nullptr);
    EXPECT_EQ(connection.atom("_NET_WM_STATE_DEMANDS_ATTENTION"), xcb_atom_t{XCB_ATOM_NONE});
    EXPECT_NE(connection.errorOf(xcb_map_window_checked(connection.xcb(), 1)), 0);
    EXPECT_FALSE(capabilitiesOf(connection).displayAnswers);
    connection.sync();
    connection.flush();
    goOn();
    EXPECT_EQ(losses, 1);
    EXPECT_EQ(lines.filter("display is gone").size(), 1) << lines.join("\n").toStdString();
}

TEST_F(DisplayLossTest, IsFoundByARequestAsWellAsByTheEventLoop) {
    display.end();
    connection.sync();
    EXPECT_EQ(losses, 1);
    goOn();
    EXPECT_EQ(losses, 1);
}

TEST_F(DisplayLossTest, HeldKeyIsToldAsReleased) {
    std::vector<std::uint32_t> flags;
    const Handle monitor = keys.addGlobalMonitor(
        KeyEventKind::flagsChanged, [&flags](const KeyEvent& event) { flags.push_back(event.flags); });
    {
        PhysicalKeyboard hand;
        hand.press(keycode::rightControl);
        hand.letGo();
    }
    ASSERT_TRUE(waitUntil([&] { return flags.size() == 1; }));
    lose();
    EXPECT_EQ(flags, (std::vector<std::uint32_t>{modifierFlag::control, 0}));
}

TEST_F(DisplayLossTest, EverythingStaysUsableAndDoesNothing) {
    const Handle before = keys.addLocalMonitor(KeyEventKind::keyDown, [](const KeyEvent&) { return true; });
    preferences.set(preference::hotkey, QString("fn"));
    ASSERT_EQ(extraKey.state(), X11ExtraKey::State::kept);
    lose();
    EXPECT_FALSE(keys.isWatchingPossible());
    EXPECT_FALSE(keys.isKeptFromOwnWindows(keycode::escape, 1));
    const Handle after = keys.addGlobalMonitor(KeyEventKind::keyDown, [](const KeyEvent&) {});
    EXPECT_FALSE(workspace.frontmostApplication());
    EXPECT_FALSE(workspace.isOwnProcessInFront());
    preferences.set(preference::extraKey, QString("Pause"));
    EXPECT_EQ(extraKey.state(), X11ExtraKey::State::refused);
    std::optional<KeysOutcome> posted;
    const TaskHandle task = startTask([&](TaskScope scope) -> QCoro::Task<void> {
        posted = co_await pasteKeys.post([] { return PasteRoute::standard; }, scope);
    });
    EXPECT_EQ(posted, KeysOutcome::notPosted);
    goOn();
    EXPECT_EQ(losses, 1);
}

TEST_F(DisplayLossTest, OfAPasteThatIsUnderWayNobodyKnows) {
    std::optional<KeysOutcome> posted;
    const TaskHandle task = startTask([&](TaskScope scope) -> QCoro::Task<void> {
        posted = co_await pasteKeys.post([] { return PasteRoute::standard; }, scope);
    });
    ASSERT_TRUE(task.isRunning());
    display.end();
    EXPECT_TRUE(waitUntil([&] { return !task.isRunning(); }));
    EXPECT_EQ(posted, KeysOutcome::unknown);
    EXPECT_TRUE(waitUntil([this] { return losses == 1; }));
}

} // namespace

} // namespace lorvane
