// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/x11/X11Workspace.h"

#include "core/PasteKeys.h"
#include "platform/linux/x11/X11Capabilities.h"
#include "platform/linux/x11/test/X11DesktopFixture.h"
#include "support/DesktopApps.h"

#include <ostream>

namespace lorvane {

void PrintTo(const RunningApplication& application, std::ostream* out) {
    *out << application.processId << " " << application.localizedName.toStdString() << " "
         << application.bundleIdentifier.toStdString();
}

namespace {

class X11WorkspaceTest : public X11DesktopFixture {
 protected:
    DesktopEntries entries() { return {DesktopEntries::standardFolders(), "en_US"}; }
    bool isInFront(const X11Workspace& workspace, qint64 process) {
        return waitUntil([&] {
            const auto front = workspace.frontmostApplication();
            return front && front->processId == process;
        });
    }
};

TEST_F(X11WorkspaceTest, ApplicationWithADesktopEntryIsKnownByIt) {
    const auto editor = DesktopApp::mousepad("text");
    const X11Workspace workspace(connection, entries());
    EXPECT_EQ(workspace.frontmostApplication(),
              (RunningApplication{editor->pid(), "Mousepad", "org.xfce.mousepad"}));
}

TEST_F(X11WorkspaceTest, FrontFollowsTheFocus) {
    const X11Workspace workspace(connection, entries());
    const auto editor = DesktopApp::mousepad();
    EXPECT_TRUE(isInFront(workspace, editor->pid()));
    const auto terminal = DesktopApp::xterm();
    EXPECT_TRUE(isInFront(workspace, terminal->pid()));
    EXPECT_EQ(pasteRouteFor(*workspace.frontmostApplication()), PasteRoute::primaryTerminal);
    editor->focus();
    EXPECT_TRUE(isInFront(workspace, editor->pid()));
    EXPECT_EQ(pasteRouteFor(*workspace.frontmostApplication()), PasteRoute::standard);
}

TEST_F(X11WorkspaceTest, ApplicationWithoutAnEntryIsKnownByItsWindowClass) {
    const auto terminal = DesktopApp::xterm();
    const X11Workspace workspace(connection, DesktopEntries({}, "en_US"));
    EXPECT_EQ(workspace.frontmostApplication(), (RunningApplication{terminal->pid(), "XTerm", "XTerm"}));
}

TEST_F(X11WorkspaceTest, ObserverIsToldWhenAnotherWindowIsInFront) {
    X11Workspace workspace(connection, entries());
    int changes = 0;
    const Handle watch = workspace.onActiveWindowChanged([&changes] { ++changes; });
    const auto editor = DesktopApp::mousepad();
    EXPECT_TRUE(waitUntil([&] { return changes > 0; }));
}

TEST_F(X11WorkspaceTest, ThisProcessIsNotInFrontWithoutAWindow) {
    const auto editor = DesktopApp::mousepad();
    const X11Workspace workspace(connection, entries());
    EXPECT_FALSE(workspace.isOwnProcessInFront());
}

TEST_F(X11WorkspaceTest, NothingIsInFrontWhenTheLastWindowHasGone) {
    auto editor = DesktopApp::mousepad();
    const X11Workspace workspace(connection, entries());
    ASSERT_TRUE(workspace.frontmostApplication());
    editor.reset();
    EXPECT_TRUE(waitUntil([&] { return !workspace.frontmostApplication(); }));
}

TEST_F(X11WorkspaceTest, CapabilitiesOfTheVirtualDesktop) {
    const X11Capabilities capabilities = capabilitiesOf(connection);
    EXPECT_TRUE(capabilities.displayAnswers);
    EXPECT_TRUE(capabilities.canWatchKeys());
    EXPECT_TRUE(capabilities.canPostKeys());
    EXPECT_TRUE(capabilities.hasXRes);
    EXPECT_FALSE(capabilities.windowManager.isEmpty());
}

} // namespace

} // namespace lorvane
