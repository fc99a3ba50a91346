// SPDX-License-Identifier: GPL-3.0-or-later
#include "input/KeyEvents.h"
#include "platform/linux/wlroots/BindingHoldRoad.h"
#include "platform/linux/wlroots/test/SwayFixture.h"

#include <random>

namespace lorvane {

namespace {

class SwayHold : public SwayFixture {
 protected:
    void SetUp() override {
        SwayFixture::SetUp();
        socket.start();
        ASSERT_TRUE(waitUntil([this] { return !road.offer().keys.empty(); }));
    }
    void watch(std::vector<int> keys) {
        handle = road.watch(std::move(keys), [this](const HoldEdge& edge) {
            const char* const kinds[] = {"down", "up", "lost"};
            edges.append(QStringLiteral("%1 %2")
                             .arg(edge.keyCode)
                             .arg(QLatin1String(kinds[static_cast<int>(edge.kind)])));
        });
        settle();
    }
    /// Everything that was sent has been carried out.
    void settle() {
        bool done = false;
        socket.request(ipcType::getVersion, {}, [&](const QJsonDocument&) { done = true; });
        EXPECT_TRUE(waitUntil([&] { return done; }));
    }
    bool waitForEdges(const QStringList& wanted) {
        const bool came = waitUntil([&] { return edges == wanted; }, std::chrono::seconds(5));
        EXPECT_EQ(edges, wanted);
        edges.clear();
        return came;
    }

    CompositorSocket socket{clock, fakes.log, CompositorSocket::standardPlaces};
    BindingHoldRoad road{foundation, socket};
    QStringList edges;
    Handle handle;
};

TEST_F(SwayHold, EveryKeyIsSeenAlone) {
    const std::vector<std::pair<int, int>> keys{{keyCode::rightCommand, 134},
                                                {keyCode::rightOption, 108},
                                                {keyCode::rightShift, 62},
                                                {keyCode::rightControl, 105},
                                                {keyCode::fn, 135}};
    for (const auto& [code, key] : keys) {
        watch({code});
        hand.tap(key);
        EXPECT_TRUE(waitForEdges({QStringLiteral("%1 down").arg(code), QStringLiteral("%1 up").arg(code)}));
    }
}

TEST_F(SwayHold, LeftKeyIsNotTheRightOne) {
    watch({keyCode::rightControl});
    hand.tap(keycode::leftControl);
    hand.tap(keycode::rightControl);
    EXPECT_TRUE(waitForEdges({"62 down", "62 up"}));
}

TEST_F(SwayHold, KeyIsSeenWithShiftDown) {
    watch({keyCode::rightControl});
    hand.press(keycode::leftShift);
    hand.tap(keycode::rightControl);
    hand.release(keycode::leftShift);
    EXPECT_TRUE(waitForEdges({"62 down", "62 up"}));
}

TEST_F(SwayHold, OtherKeyReachesItsApplicationAndLosesTheHeldOne) {
    const auto editor = DesktopApp::mousepad(QStringLiteral("some text"));
    watch({keyCode::rightControl});
    hand.press(keycode::rightControl);
    ASSERT_TRUE(waitUntil([this] { return edges == QStringList("62 down"); }));
    settle();
    hand.tap(keycode::letterA);
    hand.release(keycode::rightControl);
    EXPECT_TRUE(waitForEdges({"62 down", "294 down", "294 up", "62 lost"}));
    hand.tap(keycode::deleteForward);
    EXPECT_EQ(editor->waitForText(""), "");
    hand.tap(keycode::rightControl);
    EXPECT_TRUE(waitForEdges({"62 down", "62 up"}));
}

TEST_F(SwayHold, EscapeReachesItsApplicationAndIsSeen) {
    const auto terminal = DesktopApp::xfceTerminal();
    watch({keyCode::rightControl, keyCode::escape});
    hand.tap(keycode::escape);
    EXPECT_TRUE(waitForEdges({"53 down", "53 up"}));
    EXPECT_EQ(terminal->waitForText("\x1b"), "\x1b");
}

TEST_F(SwayHold, ReloadOfTheConfigurationLosesNothing) {
    watch({keyCode::rightControl});
    ASSERT_EQ(runTool("swaymsg", {"reload"}).status, 0);
    ASSERT_TRUE(waitUntil([this] {
        hand.tap(keycode::rightControl);
        settle();
        return !edges.isEmpty();
    }));
    EXPECT_EQ(edges.first(), "62 down");
}

TEST_F(SwayHold, NothingIsLeftInTheCompositorAtTheEnd) {
    {
        CompositorSocket own{clock, fakes.log, CompositorSocket::standardPlaces};
        BindingHoldRoad ending{foundation, own};
        own.start();
        ASSERT_TRUE(waitUntil([&] { return !ending.offer().keys.empty(); }));
        const Handle watched = ending.watch({keyCode::rightShift}, [](const HoldEdge&) {});
    }
    for (const char* const flags : {"--inhibited", "--release --locked --inhibited"}) {
        const ToolResult result = runTool("swaymsg", {QStringLiteral("unbindcode %1 62").arg(flags)});
        EXPECT_NE(result.status, 0);
        EXPECT_TRUE((result.output + result.errors).contains("Could not find binding"));
    }
}

TEST_F(SwayHold, ThousandPressesWithOtherKeysInBetweenAllEnd) {
    watch({keyCode::rightControl, keyCode::rightOption});
    std::mt19937 random(7);
    const std::vector<int> others{keycode::letterQ, keycode::leftShift, keycode::space, keycode::end};
    int downs = 0;
    for (int press = 0; press < 1000; ++press) {
        edges.clear();
        const bool withOther = random() % 3 == 0;
        hand.press(keycode::rightControl);
        ASSERT_TRUE(waitUntil([&] { return edges.contains("62 down"); })) << press;
        if (withOther) {
            settle();
            hand.tap(others[random() % others.size()]);
        }
        hand.release(keycode::rightControl);
        const char* const end = withOther ? "62 lost" : "62 up";
        ASSERT_TRUE(waitUntil([&] { return edges.contains(end); })) << press << edges.join(',').toStdString();
        downs += static_cast<int>(edges.count("62 down"));
    }
    EXPECT_EQ(downs, 1000);
}

} // namespace

} // namespace lorvane
