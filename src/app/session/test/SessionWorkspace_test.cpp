// SPDX-License-Identifier: GPL-3.0-or-later
// Who is in front in a Wayland session, with real applications of both window systems.
#include "app/session/ApplicationNaming.h"
#include "app/session/SessionWorkspace.h"
#include "app/session/WindowWorkspace.h"
#include "platform/linux/atspi/AtspiWorkspace.h"
#include "platform/linux/desktop/QtClock.h"
#include "platform/linux/wlroots/ForeignToplevels.h"
#include "platform/linux/x11/X11Workspace.h"
#include "support/DesktopApps.h"

#include <gtest/gtest.h>

namespace lorvane {
namespace {

class SessionWorkspaceTest : public ::testing::Test {
 protected:
    bool comesToFront(const DesktopApp& app, const QString& identifier) {
        const bool came = waitUntil([&] {
            const auto front = workspace.frontmostApplication();
            return front && front->processId == app.pid() && front->bundleIdentifier == identifier;
        });
        const auto front = workspace.frontmostApplication().value_or(RunningApplication());
        EXPECT_TRUE(came) << identifier.toStdString() << " has process " << app.pid() << ", in front is "
                          << front.bundleIdentifier.toStdString() << " of process " << front.processId;
        return came;
    }

    QtClock clock;
    DiagnosticLog log{clock, std::nullopt};
    X11Connection display{log};
    AtspiBus bus{clock, QDBusConnection::sessionBus()};
    X11Workspace ofX{display, DesktopEntries(DesktopEntries::standardFolders(), "en_US")};
    ApplicationNaming naming{DesktopEntries(DesktopEntries::standardFolders(), "en_US")};
    AtspiWorkspace ofAll{
        bus, [this](ProcessId process, const QString& name) { return naming.name(process, name); }};
    WaylandConnection wayland{log};
    ForeignToplevels toplevels{wayland};
    WindowWorkspace ofWindows{[this] { return toplevels.active(); }, naming};
    SessionWorkspace workspace{ofX, ofAll, ofWindows};
};

TEST_F(SessionWorkspaceTest, TheApplicationThatIsStartedIsInFrontAndTheOtherOnceItIsChosen) {
    const auto gtk3 = DesktopApp::mousepad();
    EXPECT_TRUE(comesToFront(*gtk3, "org.xfce.mousepad"));
    const auto gtk4 = DesktopApp::gnomeTextEditor();
    EXPECT_TRUE(comesToFront(*gtk4, "org.gnome.TextEditor"));
    gtk3->focus();
    EXPECT_TRUE(comesToFront(*gtk3, "org.xfce.mousepad"));
    gtk4->focus();
    EXPECT_TRUE(comesToFront(*gtk4, "org.gnome.TextEditor"));
    EXPECT_EQ(workspace.frontmostApplication()->localizedName, "Text Editor");
}

TEST_F(SessionWorkspaceTest, AnApplicationThatIsKilledIsInFrontNoMore) {
    const auto first = DesktopApp::mousepad();
    const auto second = DesktopApp::gnomeTextEditor();
    ASSERT_TRUE(comesToFront(*second, "org.gnome.TextEditor"));
    second->kill();
    EXPECT_TRUE(comesToFront(*first, "org.xfce.mousepad"));
}

TEST_F(SessionWorkspaceTest, AWindowOfXIsInFrontThoughItShowsNothingOnTheAccessibilityBus) {
    const auto editor = DesktopApp::mousepad();
    const auto terminal = DesktopApp::xterm();
    EXPECT_TRUE(comesToFront(*terminal, "debian-xterm"));
    EXPECT_TRUE(ofX.frontmostApplication());
    editor->focus();
    EXPECT_TRUE(comesToFront(*editor, "org.xfce.mousepad"));
    EXPECT_FALSE(ofX.frontmostApplication());
}

TEST_F(SessionWorkspaceTest, WhatWasInFrontBeforeTheStartIsFound) {
    const auto editor = DesktopApp::gnomeTextEditor();
    AtspiBus later{clock, QDBusConnection::sessionBus()};
    const AtspiWorkspace fresh(
        later, [this](ProcessId process, const QString& name) { return naming.name(process, name); });
    EXPECT_TRUE(waitUntil([&] {
        const auto front = fresh.frontmostApplication();
        return front && front->processId == editor->pid();
    }));
}

} // namespace
} // namespace lorvane
