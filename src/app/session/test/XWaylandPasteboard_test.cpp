// SPDX-License-Identifier: GPL-3.0-or-later
// A loan through XWayland, as another program finds it, in a GNOME session.
#include "app/session/XWaylandPasteboard.h"

#include "platform/linux/desktop/QtClock.h"
#include "support/Wait.h"

#include <QProcess>
#include <gtest/gtest.h>

namespace lorvane {
namespace {

class NobodyInFront final : public Workspace {
    [[nodiscard]] std::optional<RunningApplication> frontmostApplication() const override { return {}; }
};

/// What a Wayland program finds.
QByteArray pasted() {
    constexpr std::chrono::seconds longEnough{10};
    return runTool("wl-paste", {"--no-newline", "--type", "text/plain;charset=utf-8"}, longEnough).output;
}

TEST(XWaylandPasteboard, TheTextOfALoanIsHeldBackUntilTheKeysAndTheOldOneGivenBack) {
    QtClock clock;
    const NobodyInFront workspace;
    const auto pasteboard = XWaylandPasteboard::open(clock, workspace);
    ASSERT_TRUE(pasteboard);
    QProcess owner;
    owner.start("xclip", {"-quiet", "-selection", "clipboard"});
    owner.write("old");
    owner.closeWriteChannel();
    ASSERT_TRUE(waitUntil([] { return pasted() == "old"; }));
    std::optional<PasteboardSnapshot> held;
    const auto reading =
        startTask([&](TaskScope scope) -> QCoro::Task<void> { held = co_await pasteboard->snapshot(scope); });
    ASSERT_TRUE(waitUntil([&] { return held.has_value(); }));
    PasteboardLoan loan;
    loan.text = "dictated";
    loan.target = 4711;
    loan.previous = *held;
    pasteboard->lend(loan);
    EXPECT_EQ(pasted(), "old");
    EXPECT_EQ(pasteboard->loanState().lastRequest, std::nullopt);
    pasteboard->keysGoOut();
    EXPECT_EQ(pasted(), "dictated");
    EXPECT_TRUE(pasteboard->loanState().lastRequest);
    pasteboard->restore(*held);
    EXPECT_TRUE(waitUntil([] { return pasted() == "old"; }));
}

} // namespace
} // namespace lorvane
