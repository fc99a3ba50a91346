// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/gnome/RemoteDesktopKeys.h"

#include "platform/linux/chords/ChordPasteKeys.h"
#include "platform/linux/gnome/test/PrivateBus.h"

#include <QDBusObjectPath>

#include <linux/input-event-codes.h>

namespace lorvane {

namespace {

const QString service = QStringLiteral("org.gnome.Mutter.RemoteDesktop");
const QString object = QStringLiteral("/org/gnome/Mutter/RemoteDesktop");
const QString sessionPath = object + QStringLiteral("/Session/u1");

QString pressed(int key) { return QStringLiteral("NotifyKeyboardKeycode:%1,true").arg(key); }
QString released(int key) { return QStringLiteral("NotifyKeyboardKeycode:%1,false").arg(key); }

class RemoteDesktop : public PrivateBus {
 protected:
    void bringShell() {
        shell = std::make_unique<ScriptedService>(address, object);
        shell->answer = [this](const QDBusMessage& call) { return answer(call); };
        shell->take(service);
        ASSERT_TRUE(waitUntil([this] { return keys.isOffered(); }));
    }
    QDBusMessage answer(const QDBusMessage& call) {
        if (call.member() == silent) {
            unanswered = call;
            return {};
        }
        if (call.member() == refused) {
            return call.createErrorReply(QStringLiteral("org.freedesktop.DBus.Error.AccessDenied"),
                                         QStringLiteral("not now"));
        }
        return call.member() == QLatin1String("CreateSession")
                   ? call.createReply(QVariant::fromValue(QDBusObjectPath(sessionPath)))
                   : call.createReply();
    }
    std::optional<KeysOutcome> paste(PasteRoute route) {
        std::optional<KeysOutcome> posted;
        const TaskHandle task = startTask([&](TaskScope scope) -> QCoro::Task<void> {
            posted = co_await pasteKeys.post([route] { return route; }, scope);
        });
        EXPECT_TRUE(waitUntil([&] { return !task.isRunning(); }));
        return posted;
    }

    QString silent;
    QDBusMessage unanswered;
    QString refused;
    QStringList lines;
    DiagnosticLog log{clock, std::nullopt, [this](const QString& line) { lines.append(line); }};
    RemoteDesktopKeys keys{bus, clock, log};
    ChordPasteKeys pasteKeys{keys,
                             clock,
                             {[] { return 0U; },
                              [](PasteRoute) {
                                  return std::vector<int>{KEY_LEFTCTRL, KEY_V};
                              }}};
    std::unique_ptr<ScriptedService> shell;
};

TEST_F(RemoteDesktop, IsNotOfferedWhereThereIsNoSuchService) {
    EXPECT_FALSE(keys.isOffered());
    EXPECT_EQ(paste(PasteRoute::standard), KeysOutcome::notPosted);
}

TEST_F(RemoteDesktop, TheSessionIsOpenForTheChordAlone) {
    bringShell();
    EXPECT_EQ(paste(PasteRoute::standard), KeysOutcome::posted);
    const QStringList expected{QStringLiteral("CreateSession:"),
                               QStringLiteral("Start:"),
                               pressed(KEY_LEFTCTRL),
                               pressed(KEY_V),
                               released(KEY_V),
                               released(KEY_LEFTCTRL),
                               QStringLiteral("Stop:")};
    EXPECT_TRUE(waitUntil([&] { return shell->calls() == expected; }))
        << shell->calls().join(' ').toStdString();
}

TEST_F(RemoteDesktop, ARefusedSessionIsNotAskedForAgainUntilAnotherShellComes) {
    refused = QStringLiteral("CreateSession");
    bringShell();
    EXPECT_EQ(paste(PasteRoute::standard), KeysOutcome::notPosted);
    EXPECT_FALSE(keys.isOffered());
    EXPECT_EQ(lines.size(), 1);
    shell->forgetCalls();
    EXPECT_EQ(paste(PasteRoute::standard), KeysOutcome::notPosted);
    EXPECT_TRUE(shell->calls().isEmpty());
    shell.reset();
    refused.clear();
    bringShell();
    EXPECT_EQ(paste(PasteRoute::standard), KeysOutcome::posted);
}

TEST_F(RemoteDesktop, ASessionThatDoesNotStartIsEnded) {
    refused = QStringLiteral("Start");
    bringShell();
    EXPECT_EQ(paste(PasteRoute::standard), KeysOutcome::notPosted);
    EXPECT_FALSE(keys.isOffered());
    EXPECT_TRUE(waitUntil([&] { return shell->calls().last() == QLatin1String("Stop:"); }));
}

TEST_F(RemoteDesktop, AShellThatDoesNotAnswerIsNotWaitedForForLong) {
    silent = QStringLiteral("CreateSession");
    bringShell();
    EXPECT_EQ(paste(PasteRoute::standard), KeysOutcome::notPosted);
}

TEST_F(RemoteDesktop, ASessionThatComesTooLateIsEnded) {
    silent = QStringLiteral("CreateSession");
    bringShell();
    EXPECT_EQ(paste(PasteRoute::standard), KeysOutcome::notPosted);
    shell->send(unanswered.createReply(QVariant::fromValue(QDBusObjectPath(sessionPath))));
    EXPECT_TRUE(waitUntil([&] { return shell->calls().last() == QLatin1String("Stop:"); }));
    EXPECT_FALSE(shell->calls().contains(QLatin1String("Start:")));
}

TEST_F(RemoteDesktop, KeysThatAreDownAreLetGoByTheEndOfTheSession) {
    bringShell();
    shell->answer = [this](const QDBusMessage& call) {
        const bool isV = call.arguments().value(0).toInt() == KEY_V;
        return isV ? call.createErrorReply(QStringLiteral("org.freedesktop.DBus.Error.Failed"), QString())
                   : answer(call);
    };
    EXPECT_EQ(paste(PasteRoute::standard), KeysOutcome::notPosted);
    EXPECT_TRUE(waitUntil([&] { return shell->calls().last() == QLatin1String("Stop:"); }));
}

TEST_F(RemoteDesktop, AShellThatGoesInTheMiddleEndsTheChord) {
    bringShell();
    shell->answer = [this](const QDBusMessage& call) {
        if (call.arguments().value(0).toInt() == KEY_V) {
            shell->drop(service);
        }
        return answer(call);
    };
    EXPECT_EQ(paste(PasteRoute::standard), KeysOutcome::posted) << "the press was confirmed";
    EXPECT_FALSE(keys.isOffered());
}

TEST_F(RemoteDesktop, AKeyThatIsNotAnsweredForMayHaveGoneOut) {
    bringShell();
    shell->answer = [this](const QDBusMessage& call) {
        return call.arguments().value(0).toInt() == KEY_V ? QDBusMessage() : answer(call);
    };
    EXPECT_EQ(paste(PasteRoute::standard), KeysOutcome::unknown);
    EXPECT_TRUE(waitUntil([&] { return shell->calls().last() == QLatin1String("Stop:"); }));
}

TEST_F(RemoteDesktop, AModifierThatIsNotAnsweredForPastesNothing) {
    bringShell();
    shell->answer = [this](const QDBusMessage& call) {
        return call.arguments().value(0).toInt() == KEY_LEFTCTRL ? QDBusMessage() : answer(call);
    };
    EXPECT_EQ(paste(PasteRoute::standard), KeysOutcome::notPosted);
    EXPECT_FALSE(shell->calls().contains(pressed(KEY_V)));
}

} // namespace

} // namespace lorvane
