// SPDX-License-Identifier: GPL-3.0-or-later
// In a session of KWin's, as a user has set it up: the helper is the virtual keyboard, and an entry names
// this program. The last test ends the session.
#include "base/PreferenceCatalogue.h"
#include "base/testing/TestFoundation.h"
#include "input/KeyEvents.h"
#include "platform/linux/desktop/QtClock.h"
#include "platform/linux/kde/InputMethodV1Poster.h"
#include "platform/linux/kde/KdeEditingKeys.h"
#include "platform/linux/kde/KdeHoldRoad.h"
#include "platform/linux/kde/KdePasteKeys.h"
#include "platform/linux/kde/PlasmaWindows.h"
#include "support/Corpus.h"
#include "support/DesktopApps.h"
#include "support/FieldReader.h"
#include "support/PhysicalKeyboard.h"
#include "support/SessionHands.h"

#include <QCoreApplication>
#include <QDBusMetaType>
#include <QDir>
#include <QEventLoop>
#include <QProcess>

#include <gtest/gtest.h>

#include <cmath>
#include <csignal>
#include <iostream>
#include <linux/input-event-codes.h>

namespace lorvane {

namespace {

qint64 compositor() { return hands::ask({QStringLiteral("compositor")}).toInteger(); }

void write(const QString& path, const QByteArray& content, QIODevice::OpenMode mode) {
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path);
    ASSERT_TRUE(file.open(mode)) << qPrintable(path);
    file.write(content);
}

/// As programs do that change a setting.
void tellOfSetting(const QString& group, const QByteArray& key) {
    qDBusRegisterMetaType<QList<QByteArray>>();
    qDBusRegisterMetaType<QMap<QString, QList<QByteArray>>>();
    auto signal = QDBusMessage::createSignal("/kwinrc", "org.kde.kconfig.notify", "ConfigChanged");
    signal << QVariant::fromValue(QMap<QString, QList<QByteArray>>{{group, {key}}});
    ASSERT_TRUE(QDBusConnection::sessionBus().send(signal));
}

const QString passwordField = QStringLiteral(R"(
import gi
gi.require_version('Gtk', '4.0')
from gi.repository import Gtk
def show(application):
    window = Gtk.ApplicationWindow(application=application, child=Gtk.PasswordEntry())
    window.present()
application = Gtk.Application()
application.connect('activate', show)
application.run(None)
)");

/// Once for the suite.
void setUpSession() {
    // The session's own folders; those that XDG names are this suite's.
    const QString config = QDir::homePath() + QStringLiteral("/.config");
    const QString data = QDir::homePath() + QStringLiteral("/.local/share");
    const QString entries = data + QStringLiteral("/applications/");
    const QByteArray head = "[Desktop Entry]\nType=Application\nName=Lorvane\nNoDisplay=true\nExec=";
    const QString method = entries + QStringLiteral("com.ostrand.tirra.inputmethod.desktop");
    write(method, head + INPUT_METHOD_HELPER "\nX-KDE-Wayland-VirtualKeyboard=true\n", QIODevice::WriteOnly);
    write(entries + QStringLiteral("kwin-test.desktop"),
          head + QCoreApplication::applicationFilePath().toUtf8() +
              "\nX-KDE-Wayland-Interfaces=org_kde_kwin_fake_input,org_kde_plasma_window_management\n",
          QIODevice::WriteOnly);
    write(config + QStringLiteral("/kwinrc"), "\n[Wayland]\nInputMethod=" + method.toUtf8() + '\n',
          QIODevice::Append);
    const QStringList folders{"XDG_CONFIG_HOME=" + config, "XDG_DATA_HOME=" + data,
                              "XDG_CACHE_HOME=" + QDir::homePath() + "/.cache", "kbuildsycoca5"};
    ASSERT_EQ(runTool("env", folders).status, 0);
    tellOfSetting("Wayland", "InputMethod");
    // KWin hears of the new entries a moment later, and looks at a program when it connects.
    TestFoundation world;
    const QtClock clock;
    ASSERT_TRUE(waitUntil([&] {
        WaylandConnection wayland(world.log);
        return wayland.awaitGlobals(clock, std::chrono::seconds(5)) &&
               wayland.offers("org_kde_kwin_fake_input");
    }));
    ASSERT_TRUE(waitUntil([] { return QFileInfo::exists(HelperLink::standardPath()); }));
}

class KwinTest : public ::testing::Test {
 protected:
    static void SetUpTestSuite() {
        static const bool once = (setUpSession(), true);
        (void)once;
    }
    void SetUp() override { ASSERT_TRUE(wayland.awaitGlobals(clock, std::chrono::seconds(20))); }

    template <typename Answer>
    std::optional<Answer> run(std::function<QCoro::Task<Answer>(TaskScope)> work) {
        std::optional<Answer> answer;
        const TaskHandle task =
            startTask([&](TaskScope scope) -> QCoro::Task<void> { answer = co_await work(scope); });
        EXPECT_TRUE(waitClosely([&] { return !task.isRunning(); }));
        return answer;
    }
    std::optional<KeysOutcome> paste(KdePasteKeys& keys, PasteRoute route) {
        return run<KeysOutcome>([&](TaskScope scope) { return keys.post([route] { return route; }, scope); });
    }
    /// Looks every millisecond, for times to be worth something.
    bool waitClosely(const std::function<bool()>& condition) {
        const Instant deadline = clock.now() + std::chrono::seconds(5);
        while (!condition() && clock.now() < deadline) {
            QEventLoop loop;
            const Handle next = clock.after(std::chrono::milliseconds(1), [&loop] { loop.quit(); });
            loop.exec();
        }
        return condition();
    }
    bool isOffered() {
        const std::function<QCoro::Task<bool>(TaskScope)> ask = [this](TaskScope scope) {
            return poster.canPost(nowhere, scope);
        };
        return waitUntil([&] { return run<bool>(ask) == true; });
    }
    std::optional<PostOutcome> post(const QString& text) {
        return run<PostOutcome>([this, text](TaskScope scope) { return poster.post(nowhere, text, scope); });
    }
    /// A fragment at a time, each read back before the next; prints how fast that was.
    void expectTyped(const DesktopApp& app, const QString& text) {
        // One for all tests: the accessibility library cannot be begun a second time in a process.
        static const FieldReader reader;
        ASSERT_TRUE(waitUntil([&] { return reader.focused(app.pid()).has_value(); }));
        ASSERT_TRUE(isOffered());
        QString expected;
        const Instant start = clock.now();
        for (qsizetype at = 0; at < text.size();) {
            const bool splits = at + 12 < text.size() && text.at(at + 11).isHighSurrogate();
            const QString fragment = text.mid(at, splits ? 11 : 12);
            at += fragment.size();
            expected += fragment;
            ASSERT_EQ(post(fragment), PostOutcome::posted);
            ASSERT_TRUE(waitClosely([&] { return bare(reader.textAgain()) == expected; }))
                << qPrintable(bare(reader.textAgain())) << "\n instead of \n"
                << qPrintable(expected);
        }
        std::cout << "[ measured ] " << std::lround(double(text.size()) / inSeconds(clock.now() - start))
                  << " characters/s, " << text.size() << " characters\n";
        EXPECT_EQ(app.waitForText(text).toStdString(), text.toStdString());
    }
    /// Firefox hands over U+FEFF after every character above U+FFFF and at the end.
    static QString bare(const std::optional<QString>& text) {
        QString bare = text.value_or(QString()).remove(QChar(0xFEFF));
        return bare.endsWith(u'\n') ? bare.chopped(1) : bare;
    }
    static QString longText() { return corpus::mixed(2000).remove(u'\n'); }

    const PostingTarget nowhere{{}, FieldElement(QStringLiteral("field")), 0};
    TestFoundation world; // its clock stands still; what takes time is given the real one
    QtClock clock;
    Foundation foundation{clock, world.preferences, world.words, world.log};
    WaylandConnection wayland{world.log};
    FakeInput input{wayland, clock};
    HelperLink link{clock, world.log, HelperLink::standardPath()};
    InputMethodV1Poster poster{link};
    KdeKeyboard keyboard{[] { return 0U; },
                         [](PasteRoute route) -> std::vector<std::uint32_t> {
                             return route == PasteRoute::terminal
                                        ? std::vector<std::uint32_t>{KEY_LEFTCTRL, KEY_LEFTSHIFT, KEY_V}
                                        : std::vector<std::uint32_t>{KEY_LEFTCTRL, KEY_V};
                         }};
};

class KwinHoldTest : public KwinTest {
 protected:
    using Edges = std::vector<std::pair<int, HoldEdgeKind>>;

    void SetUp() override {
        KwinTest::SetUp();
        ASSERT_TRUE(waitUntil([this] { return !road.offer().keys.empty(); }));
    }
    void watch(const std::vector<int>& codes) {
        handle =
            road.watch(codes, [this](const HoldEdge& edge) { edges.emplace_back(edge.keyCode, edge.kind); });
        // Answered after what the watch has asked for.
        (void)QDBusConnection::sessionBus().call(QDBusMessage::createMethodCall(
            "org.kde.kglobalaccel", "/kglobalaccel", "org.kde.KGlobalAccel", "allComponents"));
    }
    bool told(const Edges& wanted) {
        return waitUntil([&] { return edges.size() >= wanted.size(); }) && edges == wanted;
    }

    PhysicalKeyboard hand;
    KdeHoldRoad road{QDBusConnection::sessionBus(), foundation, QStringLiteral("org.example.dictation"),
                     [this] { return input.isPosting(); }};
    Edges edges;
    Handle handle;
};

TEST_F(KwinHoldTest, SeesControlOfEitherSideGoDownAndUp) {
    watch({keyCode::rightControl});
    for (const int key : {keycode::rightControl, keycode::leftControl}) {
        edges.clear();
        hand.press(key);
        ASSERT_TRUE(told({{keyCode::rightControl, HoldEdgeKind::down}}));
        hand.release(key);
        ASSERT_TRUE(
            told({{keyCode::rightControl, HoldEdgeKind::down}, {keyCode::rightControl, HoldEdgeKind::up}}));
    }
}

TEST_F(KwinHoldTest, EndsTheHoldAtAnotherKeyWhichStillWorks) {
    const auto app = DesktopApp::mousepad(QStringLiteral("all of this"));
    watch({keyCode::rightControl});
    hand.press(keycode::rightControl);
    ASSERT_TRUE(told({{keyCode::rightControl, HoldEdgeKind::down}}));
    hand.tap(keycode::letterA);
    EXPECT_TRUE(
        told({{keyCode::rightControl, HoldEdgeKind::down}, {keyCode::rightControl, HoldEdgeKind::up}}));
    hand.release(keycode::rightControl);
    hand.tap(keycode::deleteForward);
    EXPECT_EQ(app->waitForText(QString()), QString()) << "Ctrl+A has selected all";
}

TEST_F(KwinHoldTest, DropsTheRepeatsOfTheExtraKey) {
    world.preferences.set(preference::extraKey, QStringLiteral("Pause"));
    watch({keyCode::fn});
    hand.hold(keycode::pause, std::chrono::milliseconds(1200));
    EXPECT_TRUE(told({{keyCode::fn, HoldEdgeKind::down}, {keyCode::fn, HoldEdgeKind::up}}));
}

TEST_F(KwinHoldTest, SeesEscapeAloneAndWithTheHoldKey) {
    watch({keyCode::rightControl, keyCode::escape});
    hand.tap(keycode::escape);
    ASSERT_TRUE(told({{keyCode::escape, HoldEdgeKind::down}, {keyCode::escape, HoldEdgeKind::up}}));
    edges.clear();
    hand.press(keycode::rightControl);
    hand.tap(keycode::escape);
    hand.release(keycode::rightControl);
    EXPECT_TRUE(told({{keyCode::rightControl, HoldEdgeKind::down},
                      {keyCode::rightControl, HoldEdgeKind::up},
                      {keyCode::escape, HoldEdgeKind::down},
                      {keyCode::escape, HoldEdgeKind::up}}));
}

TEST_F(KwinHoldTest, DoesNotHearItsOwnPaste) {
    watch({keyCode::rightControl});
    KdePasteKeys keys(input, clock, keyboard);
    EXPECT_EQ(paste(keys, PasteRoute::standard), KeysOutcome::posted);
    ASSERT_TRUE(waitUntil([this] { return !input.isPosting(); }));
    hand.press(keycode::rightControl);
    EXPECT_TRUE(told({{keyCode::rightControl, HoldEdgeKind::down}}));
}

TEST_F(KwinTest, TypesIntoChromium) { expectTyped(*DesktopApp::chromium(), longText()); }

TEST_F(KwinTest, TypesIntoFirefox) { expectTyped(*DesktopApp::firefox(), longText()); }

TEST_F(KwinTest, TypesIntoGnomeTextEditor) { expectTyped(*DesktopApp::gnomeTextEditor(), longText()); }

TEST_F(KwinTest, TypesWhileTheUserHoldsControl) {
    const auto app = DesktopApp::chromium();
    PhysicalKeyboard hand;
    hand.press(keycode::rightControl);
    expectTyped(*app, QStringLiteral("held é 漢 😀 all the while"));
    hand.release(keycode::rightControl);
}

TEST_F(KwinTest, LeavesTheUsersOwnTypingAlone) {
    const auto app = DesktopApp::chromium();
    ASSERT_TRUE(isOffered());
    PhysicalKeyboard hand;
    hand.tap(keycode::letterA);
    hand.chord({keycode::leftShift, keycode::letterZ});
    EXPECT_EQ(app->waitForText(QStringLiteral("aZ")), QStringLiteral("aZ"));
    EXPECT_TRUE(isOffered()) << "the field is still told of after keys of the user's";
}

TEST_F(KwinTest, IsNotOfferedInAPasswordField) {
    const auto app = DesktopApp::command(QStringLiteral("python3"), {QStringLiteral("-c"), passwordField});
    const std::function<QCoro::Task<helper::ContextState>(TaskScope)> ask = [this](TaskScope scope) {
        return link.context(scope);
    };
    ASSERT_TRUE(waitUntil([&] { return run<helper::ContextState>(ask)->context != 0; }));
    EXPECT_EQ(post(QStringLiteral("secret")), PostOutcome::refused);
}

TEST_F(KwinTest, ComesBackWithANewHelper) {
    const auto app = DesktopApp::chromium();
    ASSERT_TRUE(isOffered());
    const QStringList ofKwin{"-P", QString::number(compositor()), "-f", "lorvane-input-method"};
    const auto helper = [&] { return runTool("pgrep", ofKwin).output; };
    const QByteArray before = helper();
    ASSERT_EQ(runTool("pkill", QStringList{"-KILL"} + ofKwin).status, 0);
    ASSERT_TRUE(waitUntil([&] {
        return !QByteArrayList({QByteArray(), before}).contains(helper());
    })) << "KWin starts it again";
    ASSERT_TRUE(isOffered());
    EXPECT_EQ(post(QStringLiteral("again")), PostOutcome::posted);
    EXPECT_EQ(app->waitForText(QStringLiteral("again")), QStringLiteral("again"));
}

TEST_F(KwinTest, PastesByTheKeysOfEachKind) {
    ASSERT_TRUE(input.isThere()) << "KWin does not know this program";
    const QString text = QStringLiteral("dictée 漢 😀");
    QProcess copy;
    copy.start(QStringLiteral("wl-copy"), {QStringLiteral("--foreground"), text});
    ASSERT_TRUE(copy.waitForStarted());
    KdePasteKeys keys(input, clock, keyboard);
    {
        const auto app = DesktopApp::mousepad();
        EXPECT_EQ(paste(keys, PasteRoute::standard), KeysOutcome::posted);
        EXPECT_EQ(app->waitForText(text), text);
    }
    const auto app = DesktopApp::xfceTerminal();
    EXPECT_EQ(paste(keys, PasteRoute::terminal), KeysOutcome::posted);
    EXPECT_EQ(app->waitForText(text), text);
    copy.kill();
    copy.waitForFinished();
}

TEST_F(KwinTest, TellsWhichWindowHasTheKeyboard) {
    const PlasmaWindows windows(wayland);
    const auto isActive = [&](const DesktopApp& app, const QString& id) {
        return waitUntil([&] { return windows.active() == WindowIdentity{id, app.pid()}; });
    };
    const auto first = DesktopApp::mousepad();
    EXPECT_TRUE(isActive(*first, QStringLiteral("mousepad")))
        << windows.active()->applicationId.toStdString();
    const auto second = DesktopApp::gnomeTextEditor();
    EXPECT_TRUE(isActive(*second, QStringLiteral("org.gnome.TextEditor")));
    second->kill();
    EXPECT_TRUE(waitUntil([&] {
        const auto now = windows.active();
        return !now || now->applicationId != QLatin1String("org.gnome.TextEditor");
    }));
}

TEST_F(KwinTest, AimIsTakenOnceTheModifiersAreUp) {
    const Instant begun = clock.now();
    const auto isHeld = [&] { return clock.now() < begun + std::chrono::milliseconds(200); };
    KdeKeyboard held = keyboard;
    held.heldModifiers = [&] { return isHeld() ? modifierFlag::control : 0U; };
    KdePasteKeys keys(input, clock, held);
    bool wasHeld = true;
    const PasteKeys::Aim aim = [&] {
        wasHeld = isHeld();
        return PasteRoute::standard;
    };
    EXPECT_EQ(run<KeysOutcome>([&](TaskScope scope) { return keys.post(aim, scope); }), KeysOutcome::posted);
    EXPECT_FALSE(wasHeld);
}

TEST_F(KwinTest, PressesEditingKeysBareWhileAModifierIsHeld) {
    const auto app = DesktopApp::mousepad(QStringLiteral("one two three"));
    KdeEditingKeys keys(input, keyboard);
    ASSERT_TRUE(keys.canPost());
    ASSERT_TRUE(app->select(13, 13));
    PhysicalKeyboard hand;
    hand.press(keycode::rightControl);
    keys.press(EditingKey::deleteBackward);
    EXPECT_EQ(app->waitForText(QStringLiteral("one two thre")), QStringLiteral("one two thre"));
    hand.release(keycode::rightControl);
    ASSERT_TRUE(app->select(0, 0));
    keys.press(EditingKey::rightArrow);
    keys.press(EditingKey::deleteBackward);
    EXPECT_EQ(app->waitForText(QStringLiteral("ne two thre")), QStringLiteral("ne two thre"));
}

/// By itself and last.
class KwinEndTest : public KwinHoldTest {};

TEST_F(KwinEndTest, LivesThroughTheEndOfTheCompositor) {
    watch({keyCode::rightControl});
    hand.press(keycode::rightControl);
    ASSERT_TRUE(told({{keyCode::rightControl, HoldEdgeKind::down}}));
    hand.letGo();
    ASSERT_TRUE(link.isThere());
    kill(static_cast<pid_t>(compositor()), SIGKILL);
    EXPECT_TRUE(
        told({{keyCode::rightControl, HoldEdgeKind::down}, {keyCode::rightControl, HoldEdgeKind::lost}}));
    EXPECT_TRUE(waitUntil([this] { return !input.isThere() && !link.isThere(); }));
    EXPECT_TRUE(road.offer().keys.empty());
    EXPECT_EQ(post(QStringLiteral("late")), PostOutcome::refused);
    KdePasteKeys keys(input, clock, keyboard);
    EXPECT_EQ(paste(keys, PasteRoute::standard), KeysOutcome::notPosted);
}

} // namespace

} // namespace lorvane
