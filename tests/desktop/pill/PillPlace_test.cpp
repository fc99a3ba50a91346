// SPDX-License-Identifier: GPL-3.0-or-later
// Where the pill's window stands on a real display, what it lets through, and what stands above what.
#include "desktop/pill/PillDesk.h"
#include "support/Windows.h"

#include <gtest/gtest.h>

namespace lorvane {

namespace {

constexpr int screenHeight = 800;
constexpr int panelHeight = 48;
using Kind = OtherWindow::Kind;

QPoint standingOn(int edge, int middle = 640) { return {middle - 220, edge + 6 - 96}; }

class PillPlace : public ::testing::Test {
 protected:
    ~PillPlace() override { mouse::moveTo({5, 5}); }
    QPoint waitForPlace(PillStage& stage, QPoint wanted) {
        QPoint seen;
        (void)waitUntil([&] { return (seen = stage.place()) == wanted; });
        return seen;
    }
};

TEST_F(PillPlace, StandsAtTheBottomWhereNoPanelIs) {
    PillStage stage;
    EXPECT_EQ(waitForPlace(stage, standingOn(screenHeight)), standingOn(screenHeight));
}

TEST_F(PillPlace, StandsOnThePanelAndFollowsItsComingAndGoing) {
    auto panel =
        std::make_unique<OtherWindow>(QRect(0, screenHeight - panelHeight, 1280, panelHeight), Kind::panel);
    PillStage stage;
    EXPECT_EQ(waitForPlace(stage, standingOn(screenHeight - panelHeight)),
              standingOn(screenHeight - panelHeight));
    panel.reset();
    EXPECT_EQ(waitForPlace(stage, standingOn(screenHeight)), standingOn(screenHeight));
}

TEST_F(PillPlace, AWindowInFullScreenDropsItToTheBottomAndIsBelowIt) {
    const OtherWindow panel(QRect(0, screenHeight - panelHeight, 1280, panelHeight), Kind::panel);
    PillStage stage;
    EXPECT_EQ(waitForPlace(stage, standingOn(screenHeight - panelHeight)),
              standingOn(screenHeight - panelHeight));
    auto film = std::make_unique<OtherWindow>(QRect(100, 100, 400, 300), Kind::fullScreen);
    ASSERT_TRUE(waitUntil([&] { return film->place() == QRect(0, 0, 1280, screenHeight); }));
    EXPECT_EQ(waitForPlace(stage, standingOn(screenHeight)), standingOn(screenHeight));
    stage.tell("phase recording");
    EXPECT_EQ(stage.waitForWidth(136), 136);
    // The capsule's lower half between the wave and its end, on white.
    const Picture seen(QRect(standingOn(screenHeight) + QPoint(160, 76), QSize(6, 6)));
    EXPECT_NE(seen.at(2, 2), (std::array<int, 3>{255, 255, 255}));
    film.reset();
    EXPECT_EQ(waitForPlace(stage, standingOn(screenHeight - panelHeight)),
              standingOn(screenHeight - panelHeight));
}

TEST_F(PillPlace, StaysAboveAWindowThatIsPutInFullScreenLater) {
    PillStage stage;
    stage.tell("notice error Oh no");
    EXPECT_EQ(stage.waitForWidth(220), 220);
    const OtherWindow film(QRect(100, 100, 400, 300), Kind::fullScreen);
    ASSERT_TRUE(waitUntil([&] { return film.place() == QRect(0, 0, 1280, screenHeight); }));
    const QRect capsule(standingOn(screenHeight) + QPoint(110, 58), QSize(220, 28));
    EXPECT_TRUE(waitUntil([&] { return Picture(capsule).hasNear({245, 78, 98}, 12); }));
}

TEST_F(PillPlace, IsOnEveryWorkspaceAndInNoList) {
    PillStage stage;
    const quint32 window = stage.window();
    for (const WindowInfo& listed : windows::all()) {
        EXPECT_NE(listed.id, window);
    }
    runTool("xdotool", {"set_num_desktops", "3"});
    for (const char* const desktop : {"2", "1", "0"}) {
        runTool("xdotool", {"set_desktop", desktop});
        ASSERT_TRUE(waitUntil([desktop] {
            return display::rootProperty("_NET_CURRENT_DESKTOP")
                .trimmed()
                .endsWith(QByteArray("= ") + desktop);
        }));
        EXPECT_TRUE(display::isShown(window)) << desktop;
    }
}

TEST_F(PillPlace, ClicksAndScrollsBesideTheHitAreaGoToTheWindowBelow) {
    OtherWindow below(QRect(0, 300, 1280, 460), Kind::ordinary);
    PillStage stage;
    const QPoint place = waitForPlace(stage, standingOn(screenHeight));
    const int bottom = std::min(below.place().y() + below.place().height(), place.y() + 60);
    const QList<QPoint> outside{
        {place.x() + 20, bottom - 5}, {place.x() + 220, bottom - 30}, {place.x() + 420, bottom - 5}};
    int expected = 0;
    for (const QPoint& point : outside) {
        mouse::moveTo(point);
        mouse::click(1);
        mouse::click(4);
        ++expected;
        EXPECT_TRUE(waitUntil([&] { return below.presses(1) == expected && below.presses(4) == expected; }))
            << point.x() << ", " << point.y();
    }
    EXPECT_FALSE(stage.hasSaid("startDictation"));
}

TEST_F(PillPlace, OnlyTheHitAreaTakesInput) {
    PillStage stage;
    EXPECT_EQ(display::inputShape(stage.window()), QList<QRect>{QRect(150, 62, 140, 34)});
    stage.tell("hide");
    stage.tell("show");
    stage.tell("notice warning " + QString(70, 'm'));
    EXPECT_EQ(stage.waitForWidth(416), 416);
    EXPECT_EQ(display::inputShape(stage.window()), QList<QRect>{QRect(150, 62, 140, 34)});
}

TEST_F(PillPlace, ADenseScreenHasAllOfItTwiceAsLarge) {
    PillStage stage({"QT_SCALE_FACTOR=2"});
    EXPECT_EQ(display::inputShape(stage.window()), QList<QRect>{QRect(300, 124, 280, 68)});
    EXPECT_EQ(waitForPlace(stage, QPoint(640 - 440, screenHeight + 12 - 192)), QPoint(200, 620));
}

/// Two monitors side by side on the one display, the right one shorter; taken apart again at the end.
class TwoMonitors {
 public:
    TwoMonitors() {
        run({"--setmonitor", "*left", "640/170x800/210+0+0", "screen"});
        run({"--setmonitor", "right", "640/170x600/160+640+0", "none"});
    }
    ~TwoMonitors() {
        run({"--delmonitor", "left"});
        run({"--delmonitor", "right"});
    }
    TwoMonitors(const TwoMonitors&) = delete;
    TwoMonitors& operator=(const TwoMonitors&) = delete;

 private:
    static void run(const QStringList& arguments) {
        const ToolResult result = runTool("xrandr", arguments);
        EXPECT_EQ(result.status, 0) << result.errors.constData();
    }
};

TEST_F(PillPlace, FollowsThePointerFromMonitorToMonitor) {
    const TwoMonitors monitors;
    mouse::moveTo({100, 100});
    PillStage stage;
    EXPECT_EQ(waitForPlace(stage, standingOn(800, 320)), standingOn(800, 320));
    mouse::moveTo({1000, 100});
    EXPECT_EQ(waitForPlace(stage, standingOn(600, 960)), standingOn(600, 960));
    mouse::moveTo({1000, 700}); // on no monitor: the main one
    EXPECT_EQ(waitForPlace(stage, standingOn(800, 320)), standingOn(800, 320));
}

TEST_F(PillPlace, APanelOfOneMonitorLiftsItThereAndNowhereElse) {
    const TwoMonitors monitors;
    const OtherWindow panel(QRect(0, screenHeight - panelHeight, 640, panelHeight), Kind::panel);
    mouse::moveTo({100, 100});
    PillStage stage;
    const QPoint lifted = standingOn(screenHeight - panelHeight, 320);
    EXPECT_EQ(waitForPlace(stage, lifted), lifted);
    mouse::moveTo({1000, 100});
    EXPECT_EQ(waitForPlace(stage, standingOn(600, 960)), standingOn(600, 960));
}

TEST_F(PillPlace, GoesToTheOtherMonitorAtOnceWhenItIsShownThere) {
    const TwoMonitors monitors;
    mouse::moveTo({100, 100});
    PillStage stage;
    stage.tell("hide");
    mouse::moveTo({1000, 100});
    stage.tell("show");
    EXPECT_EQ(stage.place(), standingOn(600, 960));
}

} // namespace

} // namespace lorvane
