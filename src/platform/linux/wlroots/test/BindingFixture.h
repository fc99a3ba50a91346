// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/testing/TestFoundation.h"
#include "input/KeyEvents.h"
#include "platform/linux/wlroots/BindingHoldRoad.h"
#include "platform/linux/wlroots/test/ScriptedCompositor.h"
#include "support/Wait.h"

#include <gtest/gtest.h>

namespace lorvane {

inline const QString downFlags = QStringLiteral("--inhibited ");
inline const QString upFlags = QStringLiteral("--release --locked --inhibited ");

/// The road at a compositor that the test scripts.
class BindingFixture : public ::testing::Test, public TestFoundation {
 protected:
    void SetUp() override { begin(); }

    void begin() {
        socket.emplace(clock, log, [this] { return QStringList{compositor.place()}; });
        road.emplace(foundation, *socket);
        socket->start();
    }
    void waitForOffer() {
        ASSERT_TRUE(waitUntil([this] { return !road->offer().keys.empty(); }));
    }
    void watch(std::vector<int> keys) {
        handle = road->watch(std::move(keys), [this](const HoldEdge& edge) {
            const char* const kinds[] = {"down", "up", "lost"};
            edges.append(QStringLiteral("%1 %2")
                             .arg(edge.keyCode)
                             .arg(QLatin1String(kinds[static_cast<int>(edge.kind)])));
        });
    }
    bool waitForBound(const QString& what) {
        return waitUntil([&] { return compositor.bound.contains(what); });
    }
    bool waitForEdges(const QStringList& wanted) {
        const bool came = waitUntil([&] { return edges == wanted; });
        EXPECT_EQ(edges, wanted);
        return came;
    }
    /// All that the compositor has said has been heard.
    void settle() {
        bool answered = false;
        socket->request(ipcType::getVersion, {}, [&](const QJsonDocument&) { answered = true; });
        ASSERT_TRUE(waitUntil([&] { return answered; }));
    }
    [[nodiscard]] bool offers(int key) const {
        const HoldOffer offer = road->offer();
        return std::any_of(offer.keys.begin(), offer.keys.end(),
                           [key](const HoldKeyOffer& one) { return one.keyCode == key; });
    }

    ScriptedCompositor compositor;
    std::optional<CompositorSocket> socket;
    std::optional<BindingHoldRoad> road;
    QStringList edges;
    Handle handle;
};

} // namespace lorvane
