// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/portal/PortalHoldRoad.h"

#include "base/PreferenceCatalogue.h"
#include "base/testing/TestFoundation.h"
#include "input/KeyEvents.h"
#include "platform/linux/portal/PortalShortcuts.h"
#include "platform/linux/portal/test/ScriptedPortal.h"
#include "support/Wait.h"

#include <gtest/gtest.h>

namespace lorvane {

namespace {

using Ending = ScriptedPortal::Ending;

const QString bindCall = QStringLiteral("GlobalShortcuts.BindShortcuts");
const QString createCall = QStringLiteral("GlobalShortcuts.CreateSession");

QVariantMap boundShortcuts(const QString& id) {
    return {{QStringLiteral("shortcuts"),
             asArgument({{id, {{QStringLiteral("trigger_description"), QStringLiteral("Menu")}}}})}};
}

class PortalHoldRoadTest : public ::testing::Test {
 protected:
    void SetUp() override {
        portal.script[bindCall].results = boundShortcuts(QStringLiteral("dictate"));
        makeRoad();
    }
    void makeRoad() {
        road = std::make_unique<PortalHoldRoad>(base.foundation, bus.connect(QStringLiteral("road")));
        change = road->onChange([this] { ++changes; });
    }
    [[nodiscard]] bool isOffered() const { return !road->offer().keys.empty(); }
    [[nodiscard]] bool waitForOffer() {
        return waitUntil([this] { return isOffered(); });
    }
    [[nodiscard]] bool waitForObstacle(const char* part) {
        return waitUntil([&] { return road->offer().obstacle.contains(QLatin1String(part)); });
    }
    [[nodiscard]] bool waitForCall(const QString& call) {
        return waitUntil([&] { return portal.calls.contains(call); });
    }
    void watchKey() {
        watch = road->watch({keyCode::fn}, [this](const HoldEdge& edge) {
            static const QStringList kinds{"down", "up", "lost"};
            edges.append(QStringLiteral("%1 %2").arg(edge.keyCode).arg(kinds[static_cast<int>(edge.kind)]));
        });
    }
    void bindKey() {
        ASSERT_TRUE(waitForOffer());
        watchKey();
        ASSERT_TRUE(waitUntil([this] { return road->isInForce(keyCode::fn); }));
    }
    void tell(const char* signal) {
        portal.tellShortcut(QString::fromLatin1(signal), QStringLiteral("dictate"));
    }
    [[nodiscard]] bool waitForEdges(const QStringList& wanted) {
        return waitUntil([&] { return edges == wanted; });
    }

    PrivateBus bus;
    ScriptedPortal portal{bus.connect(QStringLiteral("portal"))};
    TestFoundation base;
    std::unique_ptr<PortalHoldRoad> road;
    Handle change;
    Handle watch;
    QStringList edges;
    int changes = 0;
};

TEST_F(PortalHoldRoadTest, OffersTheExtraKeyAloneAndAsksNobodyBeforeItIsWatched) {
    ASSERT_TRUE(waitForOffer());
    EXPECT_EQ(road->offer().keys, std::vector({HoldKeyOffer{keyCode::fn, true, ChordSight::dedicated}}));
    EXPECT_EQ(portal.calls, QStringList());
    EXPECT_EQ(changes, 1);
}

TEST_F(PortalHoldRoadTest, PortalWithoutGlobalShortcutsOffersNothing) {
    portal.versions.erase(QStringLiteral("GlobalShortcuts"));
    makeRoad();
    EXPECT_TRUE(waitForObstacle("no global shortcuts"));
}

TEST_F(PortalHoldRoadTest, NoPortalAtAllOffersNothing) {
    portal.vanish();
    makeRoad();
    EXPECT_TRUE(waitForObstacle("no global shortcuts"));
    portal.appear();
    EXPECT_TRUE(waitForOffer());
}

TEST_F(PortalHoldRoadTest, EdgesOfTheBoundKeyAreTold) {
    bindKey();
    tell("Activated");
    tell("Deactivated");
    EXPECT_TRUE(waitForEdges({"63 down", "63 up"})) << edges.join(u',').toStdString();
}

TEST_F(PortalHoldRoadTest, KeyIsProposedUnderTheNameOfTheExtraKey) {
    base.preferences.set(preference::extraKey, QStringLiteral("ScrollLock"));
    bindKey();
    EXPECT_EQ(portal.lastShortcuts.size(), 1);
    EXPECT_EQ(portal.lastShortcuts.value(0).id, QStringLiteral("dictate"));
    EXPECT_EQ(portal.lastShortcuts.value(0).properties.value(QStringLiteral("preferred_trigger")),
              QStringLiteral("Scroll_Lock"));
}

TEST_F(PortalHoldRoadTest, SignalsOfOtherSessionsAndShortcutsCountForNothing) {
    bindKey();
    portal.tellShortcut(QStringLiteral("Activated"), QStringLiteral("other"));
    portal.tellShortcut(QStringLiteral("Activated"), QStringLiteral("dictate"), QStringLiteral("/other"));
    tell("Activated");
    EXPECT_TRUE(waitForEdges({"63 down"})) << edges.join(u',').toStdString();
}

TEST_F(PortalHoldRoadTest, OldPathsOfRequestsAreHeardToo) {
    portal.oldPaths = true;
    portal.script[createCall].kind = Ending::Kind::staysOpen;
    ASSERT_TRUE(waitForOffer());
    watchKey();
    ASSERT_TRUE(waitForCall(createCall));
    // The answer to the call is on its way; the signal comes behind it.
    portal.respond(0, {{QStringLiteral("session_handle"), portal.session}});
    EXPECT_TRUE(waitForCall(bindCall));
}

TEST_F(PortalHoldRoadTest, ModifiersAreNotAskedFor) {
    ASSERT_TRUE(waitForOffer());
    watch = road->watch({keyCode::rightControl, keyCode::escape}, [](const HoldEdge&) {});
    makeRoad(); // a round trip
    ASSERT_TRUE(waitForOffer());
    EXPECT_EQ(portal.calls, QStringList());
}

TEST_F(PortalHoldRoadTest, UserWhoSaysNoIsNotAskedAgain) {
    portal.script[bindCall] = {Ending::Kind::responds, 1, {}};
    ASSERT_TRUE(waitForOffer());
    watchKey();
    EXPECT_TRUE(waitForObstacle("the user has bound no key"));
    watchKey();
    EXPECT_TRUE(waitForCall(QStringLiteral("Session.Close")));
    EXPECT_EQ(portal.calls.count(bindCall), 1);
}

TEST_F(PortalHoldRoadTest, AnswerWithoutOurKeyIsANo) {
    portal.script[bindCall].results = boundShortcuts(QStringLiteral("other"));
    ASSERT_TRUE(waitForOffer());
    watchKey();
    EXPECT_TRUE(waitForObstacle("the desktop has bound no key"));
}

TEST_F(PortalHoldRoadTest, AnswersThatMakeNoSenseAreANo) {
    for (const Ending& ending :
         {Ending{Ending::Kind::responds, 0, {{"shortcuts", "all of them"}}},
          Ending{Ending::Kind::responds, 0, {}}, Ending{Ending::Kind::responds, 99, {}},
          Ending{Ending::Kind::respondsWrongly, 0, {}}, Ending{Ending::Kind::errs, 0, {}}}) {
        portal.script[bindCall] = ending;
        makeRoad();
        ASSERT_TRUE(waitForOffer());
        watchKey();
        EXPECT_TRUE(waitForObstacle("the desktop has bound no key"));
    }
    portal.script[createCall] = {Ending::Kind::errs, 0, {}};
    makeRoad();
    ASSERT_TRUE(waitForOffer());
    watchKey();
    EXPECT_TRUE(waitForObstacle("no session"));
}

TEST_F(PortalHoldRoadTest, DialogThatNobodyAnswersIsClosedInTheEnd) {
    portal.script[bindCall].kind = Ending::Kind::staysOpen;
    ASSERT_TRUE(waitForOffer());
    watchKey();
    ASSERT_TRUE(waitForCall(bindCall));
    EXPECT_TRUE(waitUntil([this] {
        base.clock.advance(PortalHoldRoad::dialogPatience);
        return !isOffered();
    }));
    EXPECT_TRUE(waitForCall(QStringLiteral("Request.Close")));
}

TEST_F(PortalHoldRoadTest, SessionThatTheUserClosesLosesTheKey) {
    bindKey();
    tell("Activated");
    ASSERT_TRUE(waitForEdges({"63 down"}));
    portal.closeSession();
    EXPECT_TRUE(waitForObstacle("closed the session"));
    EXPECT_EQ(edges, QStringList({"63 down", "63 lost"}));
    tell("Deactivated");
    makeRoad();
    EXPECT_TRUE(waitForOffer());
    EXPECT_EQ(edges.size(), 2);
}

TEST_F(PortalHoldRoadTest, PortalThatGoesLosesTheKeyAndIsAskedAnewWhenItIsBack) {
    bindKey();
    tell("Activated");
    ASSERT_TRUE(waitForEdges({"63 down"}));
    portal.vanish();
    EXPECT_TRUE(waitForObstacle("has gone"));
    EXPECT_EQ(edges, QStringList({"63 down", "63 lost"}));
    portal.appear();
    ASSERT_TRUE(waitUntil([this] { return portal.calls.count(bindCall) == 2; }));
    edges.clear();
    ASSERT_TRUE(waitUntil([this] { return road->isInForce(keyCode::fn); }));
    tell("Activated");
    EXPECT_TRUE(waitForEdges({"63 down"}));
}

TEST_F(PortalHoldRoadTest, EndOfTheWatchClosesTheSession) {
    bindKey();
    watch.reset();
    EXPECT_TRUE(waitForCall(QStringLiteral("Session.Close")));
    watchKey();
    EXPECT_TRUE(waitUntil([this] { return portal.calls.count(bindCall) == 2; }));
}

TEST_F(PortalHoldRoadTest, WatchThatTakesTheOthersPlaceKeepsTheSession) {
    bindKey();
    watchKey();
    tell("Activated");
    EXPECT_TRUE(waitForEdges({"63 down"}));
    EXPECT_EQ(portal.calls.count(bindCall), 1);
    EXPECT_FALSE(portal.calls.contains(QStringLiteral("Session.Close")));
}

TEST_F(PortalHoldRoadTest, ItsStateCannotBeAsked) {
    std::optional<bool> held = true;
    const TaskHandle task = startTask([&, this](TaskScope scope) -> QCoro::Task<void> {
        held = co_await road->isHeld(keyCode::fn, scope);
    });
    EXPECT_EQ(held, std::nullopt);
}

TEST_F(PortalHoldRoadTest, SessionThatComesAfterTheWatchHasEndedIsClosed) {
    portal.script["GlobalShortcuts.CreateSession"].kind = ScriptedPortal::Ending::Kind::staysOpen;
    ASSERT_TRUE(waitForOffer());
    watchKey();
    ASSERT_TRUE(waitForCall("GlobalShortcuts.CreateSession"));
    watch.reset();
    portal.respond(0, {{"session_handle", portal.session}});
    EXPECT_TRUE(waitForCall("Session.Close"));
    EXPECT_FALSE(portal.calls.contains("GlobalShortcuts.BindShortcuts"));
}

TEST_F(PortalHoldRoadTest, SessionThatComesTooLateIsClosed) {
    portal.script["GlobalShortcuts.CreateSession"].kind = ScriptedPortal::Ending::Kind::staysOpen;
    ASSERT_TRUE(waitForOffer());
    watchKey();
    ASSERT_TRUE(waitForCall("GlobalShortcuts.CreateSession"));
    ASSERT_TRUE(waitUntil([this] {
        base.clock.advance(std::chrono::seconds(1));
        return road->offer().obstacle.contains("no session");
    }));
    portal.respond(0, {{"session_handle", portal.session}});
    EXPECT_TRUE(waitForCall("Session.Close"));
}

} // namespace

} // namespace lorvane
