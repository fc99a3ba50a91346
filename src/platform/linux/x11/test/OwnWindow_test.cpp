// SPDX-License-Identifier: GPL-3.0-or-later
// A window of this very process, so the suite is a graphical application and a program of its own.
#include "platform/linux/x11/OwnWindowKeyFilter.h"
#include "platform/linux/x11/X11KeyEvents.h"
#include "platform/linux/x11/X11Workspace.h"
#include "platform/linux/x11/test/X11DesktopFixture.h"
#include "support/DesktopApps.h"
#include "support/Windows.h"

#include <QApplication>
#include <QKeyEvent>
#include <QWidget>

namespace lorvane {

namespace {

class KeyWindow final : public QWidget {
 public:
    QList<int> pressed;

 protected:
    void keyPressEvent(QKeyEvent* event) override { pressed.append(event->key()); }
};

class OwnWindowTest : public X11DesktopFixture {
 protected:
    void SetUp() override {
        QCoreApplication::instance()->installNativeEventFilter(&filter);
        window.show();
        bringToFront();
    }
    ~OwnWindowTest() override { QCoreApplication::instance()->removeNativeEventFilter(&filter); }

    void bringToFront() {
        ASSERT_TRUE(waitUntil([this] {
            windows::activate(static_cast<quint32>(window.winId()));
            return window.isActiveWindow() && workspace.isOwnProcessInFront();
        }));
    }
    Handle watchLocally(bool keepEscape) {
        return keys.addLocalMonitor(KeyEventKind::keyDown, [this, keepEscape](const KeyEvent& event) {
            local.append(event.keyCode);
            return keepEscape && event.keyCode == keyCode::escape;
        });
    }
    /// What reached the window up to here, told by a last key that is left out.
    QList<int> reachedTheWindow() {
        hand.tap(keycode::letterQ);
        EXPECT_TRUE(waitUntil([this] { return window.pressed.contains(Qt::Key_Q); }));
        window.pressed.removeAll(Qt::Key_Q);
        return window.pressed;
    }

    X11Workspace workspace{connection, DesktopEntries({}, "en_US")};
    X11KeyEvents keys{connection, foundation, [this] { return workspace.isOwnProcessInFront(); }};
    OwnWindowKeyFilter filter{keys};
    KeyWindow window;
    QList<int> local;
};

TEST_F(OwnWindowTest, KeptEscapeDoesNotReachTheWindowAndOtherKeysDo) {
    const Handle monitor = watchLocally(true);
    hand.tap(keycode::letterA);
    hand.tap(keycode::escape);
    hand.tap(keycode::letterV);
    EXPECT_EQ(reachedTheWindow(), (QList<int>{Qt::Key_A, Qt::Key_V}));
    EXPECT_EQ(local.count(keyCode::escape), 1);
    EXPECT_EQ(local.size(), 4);
}

TEST_F(OwnWindowTest, EscapeThatNobodyKeepsReachesTheWindow) {
    const Handle monitor = watchLocally(false);
    hand.tap(keycode::escape);
    EXPECT_EQ(reachedTheWindow(), QList<int>{Qt::Key_Escape});
}

TEST_F(OwnWindowTest, EscapeReachesTheWindowOnceTheMonitorHasEnded) {
    watchLocally(true).reset();
    hand.tap(keycode::escape);
    EXPECT_EQ(reachedTheWindow(), QList<int>{Qt::Key_Escape});
}

TEST_F(OwnWindowTest, KeptEscapeStaysKeptThoughTheMonitorEndsBeforeTheWindowGetsIt) {
    Handle monitor = watchLocally(true);
    hand.tap(keycode::escape);
    connection.sync();
    EXPECT_EQ(local, QList<int>{keyCode::escape});
    monitor.reset();
    EXPECT_EQ(reachedTheWindow(), QList<int>());
}

TEST_F(OwnWindowTest, RepeatsOfAKeptEscapeAreKeptToo) {
    Handle monitor = watchLocally(true);
    hand.press(keycode::escape); // repeats after 660 ms, every 40 ms
    EXPECT_TRUE(waitUntil([this] { return local.size() == 1; }));
    monitor.reset();
    EXPECT_FALSE(waitUntil([this] { return !window.pressed.isEmpty(); }, std::chrono::milliseconds(1200)));
    hand.release(keycode::escape);
    // No hand presses again within the very millisecond of the release, which is how a repeat looks.
    (void)waitUntil([] { return false; }, std::chrono::milliseconds(20));
    hand.tap(keycode::escape);
    EXPECT_EQ(reachedTheWindow(), QList<int>{Qt::Key_Escape});
}

TEST_F(OwnWindowTest, EscapeOfAnotherApplicationIsGlobal) {
    QList<int> global;
    const Handle here = watchLocally(true);
    const Handle elsewhere = keys.addGlobalMonitor(
        KeyEventKind::keyDown, [&global](const KeyEvent& event) { global.append(event.keyCode); });
    const auto editor = DesktopApp::mousepad();
    ASSERT_TRUE(waitUntil([this] { return !workspace.isOwnProcessInFront(); }));
    hand.tap(keycode::escape);
    EXPECT_TRUE(waitUntil([&] { return !global.isEmpty(); }));
    EXPECT_EQ(global, QList<int>{keyCode::escape});
    EXPECT_EQ(local, QList<int>());

    bringToFront();
    EXPECT_EQ(reachedTheWindow(), QList<int>());
    EXPECT_EQ(global.size(), 1);
}

} // namespace

} // namespace lorvane

int main(int argc, char** argv) {
    ::testing::InitGoogleTest(&argc, argv);
    const QApplication application(argc, argv);
    return RUN_ALL_TESTS();
}
