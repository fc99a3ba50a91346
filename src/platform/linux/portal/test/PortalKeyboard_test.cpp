// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/portal/PortalKeyboard.h"

#include "base/testing/TestFoundation.h"
#include "platform/linux/chords/ChordPasteKeys.h"
#include "platform/linux/portal/test/ScriptedPortal.h"
#include "support/Wait.h"

#include <linux/input-event-codes.h>

#include <gtest/gtest.h>

namespace lorvane {

namespace {

using Ending = ScriptedPortal::Ending;

const QString create = QStringLiteral("RemoteDesktop.CreateSession");
const QString select = QStringLiteral("RemoteDesktop.SelectDevices");
const QString start = QStringLiteral("RemoteDesktop.Start");
const QString closeCall = QStringLiteral("Session.Close");

class PortalKeyboardTest : public ::testing::Test {
 protected:
    void SetUp() override {
        base.preferences.set(remoteDesktopToken, QStringLiteral("first"));
        portal.script[start].results = granted(QStringLiteral("second"));
        make();
    }
    static QVariantMap granted(const QString& token) {
        return {{QStringLiteral("devices"), 1U}, {QStringLiteral("restore_token"), token}};
    }
    void make() {
        paste.reset();
        keyboard = std::make_unique<PortalKeyboard>(base.foundation, bus.connect(QStringLiteral("keys")));
        const ChordFacts facts{[] { return 0U; },
                               [](PasteRoute) {
                                   return std::vector<int>{KEY_LEFTCTRL, KEY_V};
                               }};
        paste = std::make_unique<ChordPasteKeys>(*keyboard, base.clock, facts);
    }
    [[nodiscard]] bool waitForOffer() {
        return waitUntil([this] { return keyboard->isOffered(); });
    }
    /// Runs a task to its end; the clock goes on by `step` at each look.
    template <typename Result, typename Body>
    Result run(Body body, Result otherwise, Duration step = std::chrono::milliseconds(5)) {
        std::optional<Result> result;
        const TaskHandle task = startTask([&](TaskScope scope) -> QCoro::Task<void> {
            auto work = body(scope);
            result = co_await work;
        });
        const bool ended = waitUntil([&] {
            base.clock.advance(step);
            return result.has_value();
        });
        EXPECT_TRUE(ended);
        return result.value_or(otherwise);
    }
    KeysOutcome post(Duration step = std::chrono::milliseconds(5)) {
        const auto posting = [this](TaskScope scope) {
            return paste->post([] { return PasteRoute::standard; }, scope);
        };
        return run<KeysOutcome>(posting, KeysOutcome::notPosted, step);
    }
    bool ask(Duration step = std::chrono::milliseconds(5)) {
        return run<bool>([this](TaskScope scope) { return keyboard->ask(scope); }, false, step);
    }
    [[nodiscard]] QStringList keysPosted() const {
        QStringList keys;
        for (const QString& call : portal.calls) {
            if (call.contains(QStringLiteral("Keycode"))) {
                keys.append(call.section(u' ', 1));
            }
        }
        return keys;
    }
    [[nodiscard]] QString token() { return base.preferences.get(remoteDesktopToken); }

    PrivateBus bus;
    ScriptedPortal portal{bus.connect(QStringLiteral("portal"))};
    TestFoundation base;
    std::unique_ptr<PortalKeyboard> keyboard;
    std::unique_ptr<ChordPasteKeys> paste;
};

TEST_F(PortalKeyboardTest, PasteOpensASessionByItsTokenPostsTheChordAndClosesIt) {
    ASSERT_TRUE(waitForOffer());
    EXPECT_EQ(post(), KeysOutcome::posted);
    EXPECT_EQ(keysPosted(), QStringList({"29 1", "47 1", "47 0", "29 0"}));
    EXPECT_EQ(portal.lastOptions[select].value(QStringLiteral("restore_token")), QStringLiteral("first"));
    EXPECT_EQ(portal.lastOptions[select].value(QStringLiteral("types")), 1U);
    EXPECT_EQ(portal.lastOptions[select].value(QStringLiteral("persist_mode")), 2U);
    EXPECT_TRUE(waitUntil([this] { return portal.calls.endsWith(closeCall); }));
}

TEST_F(PortalKeyboardTest, EachSessionGivesTheTokenForTheNext) {
    ASSERT_TRUE(waitForOffer());
    EXPECT_EQ(post(), KeysOutcome::posted);
    EXPECT_EQ(token(), QStringLiteral("second"));
    portal.script[start].results = granted(QStringLiteral("third"));
    EXPECT_EQ(post(), KeysOutcome::posted);
    EXPECT_EQ(portal.lastOptions[select].value(QStringLiteral("restore_token")), QStringLiteral("second"));
    EXPECT_EQ(token(), QStringLiteral("third"));
}

TEST_F(PortalKeyboardTest, SessionThatGivesNoTokenIsTheLastOne) {
    portal.script[start].results = {{QStringLiteral("devices"), 1U}};
    ASSERT_TRUE(waitForOffer());
    EXPECT_EQ(post(), KeysOutcome::posted);
    EXPECT_FALSE(keyboard->isOffered());
    EXPECT_EQ(post(), KeysOutcome::notPosted);
}

TEST_F(PortalKeyboardTest, WithoutATokenNothingIsOpened) {
    base.preferences.remove(remoteDesktopToken);
    EXPECT_TRUE(waitUntil([this] { return keyboard->obstacle().contains(QStringLiteral("been allowed")); }));
    EXPECT_EQ(post(), KeysOutcome::notPosted);
    EXPECT_EQ(portal.calls, QStringList());
}

TEST_F(PortalKeyboardTest, PortalOfTheFirstVersionIsNotUsed) {
    portal.versions[QStringLiteral("RemoteDesktop")] = 1;
    make();
    EXPECT_FALSE(ask());
    EXPECT_FALSE(keyboard->isOffered());
}

TEST_F(PortalKeyboardTest, TokenThatBringsUpADialogIsGivenUpAndTheDialogClosed) {
    portal.script[start].kind = Ending::Kind::staysOpen;
    ASSERT_TRUE(waitForOffer());
    EXPECT_EQ(post(), KeysOutcome::notPosted);
    EXPECT_EQ(keysPosted(), QStringList());
    EXPECT_EQ(token(), QString());
    EXPECT_TRUE(waitUntil([this] { return portal.calls.contains(QStringLiteral("Request.Close")); }));
    EXPECT_TRUE(waitUntil([this] { return portal.calls.contains(closeCall); }));
}

TEST_F(PortalKeyboardTest, RefusalAndBadAnswersPostNothing) {
    const Ending refused{Ending::Kind::responds, 1, {}};
    const Ending error{Ending::Kind::errs, 0, {}};
    const Ending nonsense{Ending::Kind::respondsWrongly, 0, {}};
    const Ending noKeyboard{Ending::Kind::responds, 0, {{QStringLiteral("devices"), 2U}}};
    for (const QString& call : {create, select, start}) {
        for (const Ending& ending : {refused, error, nonsense}) {
            const auto before = std::exchange(portal.script[call], ending);
            base.preferences.set(remoteDesktopToken, QStringLiteral("first"));
            ASSERT_TRUE(waitForOffer());
            EXPECT_EQ(post(), KeysOutcome::notPosted) << call.toStdString();
            portal.script[call] = before;
        }
    }
    portal.script[start] = noKeyboard;
    base.preferences.set(remoteDesktopToken, QStringLiteral("first"));
    EXPECT_EQ(post(), KeysOutcome::notPosted);
    EXPECT_EQ(keysPosted(), QStringList());
}

TEST_F(PortalKeyboardTest, SessionThatTheDesktopClosesInTheMiddlePostsNoMore) {
    portal.closeAfterKeys = 1;
    ASSERT_TRUE(waitForOffer());
    EXPECT_EQ(post(), KeysOutcome::notPosted);
    EXPECT_EQ(keysPosted(), QStringList({"29 1"}));
}

TEST_F(PortalKeyboardTest, AskingWaitsForTheUserAndKeepsTheToken) {
    base.preferences.remove(remoteDesktopToken);
    portal.script[start].kind = Ending::Kind::staysOpen;
    const Handle user =
        base.clock.after(seconds(60), [this] { portal.respond(0, granted(QStringLiteral("by the user"))); });
    EXPECT_TRUE(ask(std::chrono::milliseconds(500)));
    EXPECT_EQ(token(), QStringLiteral("by the user"));
    EXPECT_TRUE(keyboard->isOffered());
    EXPECT_TRUE(waitUntil([this] { return portal.calls.contains(closeCall); }));
}

TEST_F(PortalKeyboardTest, UserWhoSaysNoLeavesNoToken) {
    base.preferences.remove(remoteDesktopToken);
    portal.script[start] = {Ending::Kind::responds, 1, {}};
    EXPECT_FALSE(ask());
    EXPECT_EQ(token(), QString());
}

TEST_F(PortalKeyboardTest, PortalThatGoesOffersNothing) {
    ASSERT_TRUE(waitForOffer());
    portal.vanish();
    EXPECT_TRUE(waitUntil([this] { return !keyboard->isOffered(); }));
    portal.appear();
    EXPECT_TRUE(waitForOffer());
}

TEST_F(PortalKeyboardTest, SessionThatComesTooLateIsClosed) {
    portal.script["RemoteDesktop.CreateSession"].kind = ScriptedPortal::Ending::Kind::staysOpen;
    ASSERT_TRUE(waitForOffer());
    EXPECT_EQ(post(std::chrono::milliseconds(100)), KeysOutcome::notPosted);
    EXPECT_FALSE(portal.calls.contains("Session.Close"));
    portal.respond(0, {{"session_handle", portal.session}});
    EXPECT_TRUE(waitUntil([this] { return portal.calls.contains("Session.Close"); }));
}

} // namespace

} // namespace lorvane
