// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/DesktopApps.h"
#include "support/LorvaneProgram.h"
#include "support/ScriptedBackend.h"
#include "support/Windows.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusInterface>
#include <QDBusVariant>
#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <gtest/gtest.h>

namespace lorvane {

namespace {

QList<WindowInfo> homes() {
    QList<WindowInfo> found;
    for (const WindowInfo& window : windows::all()) {
        if (window.title == QLatin1String("Lorvane")) {
            found.append(window);
        }
    }
    return found;
}

quint32 waitForHome() {
    return waitUntil([] { return homes().size() == 1; }) ? homes().first().id : 0;
}

QString propertyOf(quint32 window, const QString& name) {
    return QString::fromUtf8(
        runTool(QStringLiteral("xprop"), {QStringLiteral("-id"), QString::number(window), name}).output);
}

// "#RRGGBB" of one pixel of the screen.
QString colourAt(int x, int y) {
    const auto shot = runTool(QStringLiteral("import"),
                              {QStringLiteral("-window"), QStringLiteral("root"), QStringLiteral("-crop"),
                               QStringLiteral("1x1+%1+%2").arg(x).arg(y), QStringLiteral("-depth"),
                               QStringLiteral("8"), QStringLiteral("txt:-")});
    static const QRegularExpression colour(QStringLiteral("#[0-9A-F]{6}"));
    return colour.match(QString::fromUtf8(shot.output)).captured();
}

// Qt Quick's engine has a thread of this name while it lives.
bool hasEngine(qint64 pid) {
    QDir tasks(QStringLiteral("/proc/%1/task").arg(pid));
    for (const QString& task : tasks.entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        QFile name(tasks.filePath(task + QStringLiteral("/comm")));
        if (name.open(QIODevice::ReadOnly) && name.readAll().startsWith("QQmlThread")) {
            return true;
        }
    }
    return false;
}

struct WindowsTest : public testing::Test {
    static void open(const LorvaneProgram& program) { EXPECT_EQ(program.run({QStringLiteral("open")}), 0); }
    ScriptedBackend backend;
    const QString address = backend.url().toString();
};

TEST_F(WindowsTest, ByDefaultTheLaunchShowsNoWindow) {
    const LorvaneProgram program(address);
    EXPECT_EQ(homes().size(), 0);
    EXPECT_FALSE(hasEngine(program.pid()));
}

TEST_F(WindowsTest, AtLaunchTheHomeWindowOpensWhenThatIsWanted) {
    const LorvaneProgram program(address, {{"tirra.mac.openWindowAtLaunch", true}});
    EXPECT_NE(waitForHome(), 0U);
}

TEST_F(WindowsTest, TheHomeWindowStandsInTheTaskBarInItsSize) {
    const LorvaneProgram program(address);
    open(program);
    const quint32 home = waitForHome();
    ASSERT_NE(home, 0U);
    EXPECT_TRUE(waitUntil([&] { return windows::active().id == home; }));
    EXPECT_FALSE(propertyOf(home, QStringLiteral("_NET_WM_STATE")).contains(QStringLiteral("SKIP_TASKBAR")));
    const QString hints = propertyOf(home, QStringLiteral("WM_NORMAL_HINTS"));
    EXPECT_TRUE(hints.contains(QStringLiteral("minimum size: 1120 by 720"))) << hints.toStdString();
    const QString geometry = QString::fromUtf8(
        runTool(QStringLiteral("xwininfo"), {QStringLiteral("-id"), QString::number(home)}).output);
    EXPECT_TRUE(geometry.contains(QStringLiteral("Width: 1200"))) << geometry.toStdString();
    EXPECT_TRUE(geometry.contains(QStringLiteral("Height: 780"))) << geometry.toStdString();
}

TEST_F(WindowsTest, ASecondRequestBringsTheSameWindowForward) {
    const LorvaneProgram program(address);
    open(program);
    const quint32 home = waitForHome();
    ASSERT_NE(home, 0U);
    const auto editor = DesktopApp::mousepad(QString());
    windows::activate(editor->window());
    ASSERT_TRUE(waitUntil([&] { return windows::active().id == editor->window(); }));
    open(program);
    EXPECT_TRUE(waitUntil([&] { return windows::active().id == home; }));
    EXPECT_EQ(homes().size(), 1);
}

TEST_F(WindowsTest, ClosingTheWindowKeepsTheProgramAndLetsTheEngineGo) {
    const LorvaneProgram program(address);
    for (int round = 0; round < 3; ++round) {
        open(program);
        const quint32 home = waitForHome();
        ASSERT_NE(home, 0U) << "round " << round;
        EXPECT_TRUE(hasEngine(program.pid()));
        windows::close(home);
        EXPECT_TRUE(waitUntil([] { return homes().isEmpty(); }));
        EXPECT_TRUE(waitUntil([&] { return !hasEngine(program.pid()); }));
    }
    EXPECT_TRUE(program.isRunning());
    EXPECT_EQ(program.phase(), QStringLiteral("idle"));
}

TEST_F(WindowsTest, AFirstRunEndsInTheHomeWindow) {
    const LorvaneProgram program(address, {{"tirra.mac.onboarded", false}});
    EXPECT_NE(waitForHome(), 0U);
}

TEST_F(WindowsTest, ARestartLeavesOneNewProgram) {
    LorvaneProgram program(address);
    QDBusInterface control(QStringLiteral("com.ostrand.tirra"), QStringLiteral("/com/ostrand/tirra"),
                           QStringLiteral("com.ostrand.tirra.Dictation1"));
    const auto owner = [] {
        return QDBusConnection::sessionBus()
            .interface()
            ->servicePid(QStringLiteral("com.ostrand.tirra"))
            .value();
    };
    const uint before = owner();
    ASSERT_EQ(before, static_cast<uint>(program.pid()));
    EXPECT_EQ(control.call(QStringLiteral("Restart")).type(), QDBusMessage::ReplyMessage);
    EXPECT_TRUE(waitUntil([&] { return !program.isRunning(); }));
    EXPECT_EQ(program.exitCode(), 0);
    EXPECT_TRUE(waitUntil([&] { return owner() != 0 && owner() != before; }));
    EXPECT_TRUE(waitUntil([&] { return program.phase() == QLatin1String("idle"); }));
    control.call(QStringLiteral("Quit"));
    EXPECT_TRUE(waitUntil([&] { return owner() == 0; }));
}

// The settings portal of a desktop.
class SettingsPortal : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.portal.Settings")
 public:
    explicit SettingsPortal(uint scheme) : scheme_(scheme) {
        bus_.registerObject(path(), this, QDBusConnection::ExportAllContents);
        bus_.registerService(QStringLiteral("org.freedesktop.portal.Desktop"));
    }
    ~SettingsPortal() override {
        bus_.unregisterService(QStringLiteral("org.freedesktop.portal.Desktop"));
        bus_.unregisterObject(path());
    }
    void change(uint scheme) {
        scheme_ = scheme;
        Q_EMIT SettingChanged(QStringLiteral("org.freedesktop.appearance"), QStringLiteral("color-scheme"),
                              QDBusVariant(scheme_));
    }

 public Q_SLOTS:
    QDBusVariant Read(const QString& group, const QString& key) {
        const bool isScheme =
            group == QLatin1String("org.freedesktop.appearance") && key == QLatin1String("color-scheme");
        return QDBusVariant(QVariant::fromValue(QDBusVariant(isScheme ? scheme_ : 0U)));
    }
 Q_SIGNALS:
    void SettingChanged(const QString& group, const QString& key, const QDBusVariant& value);

 private:
    static QString path() { return QStringLiteral("/org/freedesktop/portal/desktop"); }
    QDBusConnection bus_ = QDBusConnection::sessionBus();
    uint scheme_;
};

TEST_F(WindowsTest, ADesktopThatTurnsLightOrDarkIsFollowed) {
    SettingsPortal portal(1);
    const LorvaneProgram program(address,
                                 {{"tirra.mac.openWindowAtLaunch", true}, {"tirra.mac.appearance", "sepia"}});
    ASSERT_NE(waitForHome(), 0U);
    EXPECT_TRUE(waitUntil([] { return colourAt(640, 700) == QLatin1String("#1B1710"); }))
        << colourAt(640, 700).toStdString();
    portal.change(2);
    EXPECT_TRUE(waitUntil([] { return colourAt(640, 700) == QLatin1String("#FBF8F2"); }))
        << colourAt(640, 700).toStdString();
}

struct Colours {
    const char* appearance;
    const char* paper;
};

class AppearanceTest : public testing::TestWithParam<Colours> {};

TEST_P(AppearanceTest, TheWindowHasThePaperOfTheChoice) {
    const ScriptedBackend backend;
    const LorvaneProgram program(backend.url().toString(), {{"tirra.mac.appearance", GetParam().appearance},
                                                            {"tirra.mac.openWindowAtLaunch", true}});
    ASSERT_NE(waitForHome(), 0U);
    const QString wanted = QString::fromLatin1(GetParam().paper);
    EXPECT_TRUE(waitUntil([&] { return colourAt(640, 700) == wanted; })) << colourAt(640, 700).toStdString();
}

INSTANTIATE_TEST_SUITE_P(OfTheUser, AppearanceTest,
                         testing::Values(Colours{"light", "#FBF8F2"}, Colours{"dark", "#1B1710"}));
INSTANTIATE_TEST_SUITE_P(AnUnknownWordFollowsTheDesktop, AppearanceTest,
                         testing::Values(Colours{"sepia", "#FBF8F2"}));

} // namespace

} // namespace lorvane

#include "Windows_test.moc"
