// SPDX-License-Identifier: GPL-3.0-or-later
#include "StatusTray.h"

#include "support/LorvaneProgram.h"
#include "support/ScriptedBackend.h"
#include "support/Windows.h"

#include <QFile>
#include <QJsonDocument>
#include <QRegularExpression>
#include <gtest/gtest.h>

namespace lorvane {

namespace {

const QString translateTo = QStringLiteral("Translate to");
const QString typingTips = QStringLiteral("Typing tips");
const QString hotkey = QStringLiteral("Hotkey");

struct TrayTest : public testing::Test {
    QJsonValue stored(const LorvaneProgram& program, const char* key) const {
        QFile file(program.preferencesFile());
        return file.open(QIODevice::ReadOnly)
                   ? QJsonDocument::fromJson(file.readAll()).object().value(QLatin1String(key))
                   : QJsonValue();
    }
    static bool hasHomeWindow() {
        for (const WindowInfo& window : windows::all()) {
            if (window.title == QLatin1String("Lorvane")) {
                return true;
            }
        }
        return false;
    }
    // How often the icon had to look to the tray of the display.
    static qsizetype waits(const LorvaneProgram& program) {
        return program.log().count(QStringLiteral("waiting in the tray of the display"));
    }
    // The program's windows inside the tray of the display, as "WIDTHxHEIGHT".
    static QStringList embedded() {
        const QString tree = QString::fromUtf8(
            runTool(QStringLiteral("xwininfo"), {QStringLiteral("-root"), QStringLiteral("-tree")}).output);
        QStringList sizes;
        static const QRegularExpression icon(QStringLiteral("\"lorvane\"[^\\n]*\\)\\s+(\\d\\dx\\d\\d)\\+"));
        for (auto found = icon.globalMatch(tree); found.hasNext();) {
            sizes.append(found.next().captured(1));
        }
        return sizes;
    }

    ScriptedBackend backend;
    const QString address = backend.url().toString();
};

TEST_F(TrayTest, TheMenuReadsAsItShouldInATrayThatIsThereAtTheStart) {
    StatusTray tray;
    const LorvaneProgram program(address);
    ASSERT_TRUE(waitUntil([&] { return tray.items.size() == 1; }));
    const TrayMenu menu(tray.items.first());
    EXPECT_EQ(menu.itemProperty(QStringLiteral("Title")), QStringLiteral("Lorvane"));
    EXPECT_EQ(menu.itemProperty(QStringLiteral("Status")), QStringLiteral("Active"));
    EXPECT_EQ(menu.labels(),
              (QStringList{"Open Lorvane", "-", "Translate to", "Language", "Microphone",
                           "Copy last transcript", "Typing tips", "-", "Hotkey", "-",
                           QString::fromUtf8("Check for updates…"), "Send feedback", "Quit Lorvane"}));
    EXPECT_EQ(menu.entry({translateTo}).children.size(), 122);
    EXPECT_EQ(menu.entry({hotkey}).children.size(), 5);
}

TEST_F(TrayTest, ClicksInTheTrayDoWhatTheEntriesSay) {
    StatusTray tray;
    LorvaneProgram program(address);
    ASSERT_TRUE(waitUntil([&] { return !tray.items.isEmpty(); }));
    const TrayMenu menu(tray.items.first());
    EXPECT_TRUE(menu.entry({typingTips}).isOn());
    ASSERT_TRUE(menu.click({typingTips}));
    EXPECT_TRUE(waitUntil([&] { return stored(program, "tirra.mac.nudges") == false; }));
    EXPECT_FALSE(menu.entry({typingTips}).isOn());

    const QStringList german{translateTo, QStringLiteral("Deutsch")};
    ASSERT_TRUE(menu.click(german));
    EXPECT_TRUE(waitUntil([&] { return stored(program, "tirra.mac.translateLang") == QLatin1String("de"); }));
    EXPECT_TRUE(menu.entry(german).isOn());
    EXPECT_EQ(menu.labels().first(), QString::fromUtf8("Translating → German (Deutsch)"));

    ASSERT_TRUE(menu.click({hotkey, QStringLiteral("Hold right Shift")}));
    EXPECT_TRUE(
        waitUntil([&] { return stored(program, "tirra.mac.hotkey") == QLatin1String("rightShift"); }));

    ASSERT_TRUE(menu.click({QStringLiteral("Open Lorvane")}));
    EXPECT_TRUE(waitUntil(hasHomeWindow));

    ASSERT_TRUE(menu.click({QStringLiteral("Quit Lorvane")}));
    EXPECT_TRUE(waitUntil([&] { return !program.isRunning(); }));
    EXPECT_EQ(program.exitCode(), 0);
}

TEST_F(TrayTest, ATrayThatComesLaterGoesAndComesBackShowsTheIconEachTime) {
    const LorvaneProgram program(address);
    ASSERT_TRUE(waitUntil([&] { return waits(program) == 1; }));
    {
        StatusTray tray(false);
        tray.setHost(true);
        EXPECT_TRUE(waitUntil([&] { return tray.items.size() == 1; }));
        EXPECT_EQ(TrayMenu(tray.items.first()).labels().last(), QStringLiteral("Quit Lorvane"));
        tray.setHost(false);
        EXPECT_TRUE(waitUntil([&] { return waits(program) == 2; })) << program.log().toStdString();
        tray.setHost(true);
        EXPECT_TRUE(waitUntil([&] { return tray.items.size() == 2; }));
    }
    StatusTray another;
    EXPECT_TRUE(waitUntil([&] { return another.items.size() == 1; }));
    EXPECT_EQ(TrayMenu(another.items.first()).labels().last(), QStringLiteral("Quit Lorvane"));
}

TEST_F(TrayTest, WithoutStatusItemsTheIconStandsInTheTrayOfTheDisplay) {
    LorvaneProgram program(address);
    QProcess trayer;
    trayer.start(QStringLiteral("trayer"), {QStringLiteral("--edge"), QStringLiteral("top")});
    ASSERT_TRUE(trayer.waitForStarted());
    EXPECT_TRUE(waitUntil([&] { return !embedded().isEmpty(); }));
    // Comes a tray of the other kind, the icon moves there.
    StatusTray tray;
    EXPECT_TRUE(waitUntil([&] { return tray.items.size() == 1; }));
    EXPECT_TRUE(waitUntil([&] { return embedded().isEmpty(); })) << embedded().join(u' ').toStdString();
    trayer.kill();
    trayer.waitForFinished();
}

// The notifications of a desktop.
class Notifications : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Notifications")
 public:
    Notifications() {
        bus_.registerObject(QStringLiteral("/org/freedesktop/Notifications"), this,
                            QDBusConnection::ExportAllSlots);
        bus_.registerService(QStringLiteral("org.freedesktop.Notifications"));
    }
    ~Notifications() override {
        bus_.unregisterService(QStringLiteral("org.freedesktop.Notifications"));
        bus_.unregisterObject(QStringLiteral("/org/freedesktop/Notifications"));
    }
    QStringList shown;

 public Q_SLOTS:
    uint Notify(const QString&, uint, const QString&, const QString&, const QString& text, const QStringList&,
                const QVariantMap&, int) {
        shown.append(text);
        return static_cast<uint>(shown.size());
    }

 private:
    QDBusConnection bus_ = QDBusConnection::sessionBus();
};

TEST_F(TrayTest, WithoutAnyTrayTheUserIsToldWhereTheMenuIs) {
    const Notifications notifications;
    const LorvaneProgram program(address);
    EXPECT_TRUE(waitUntil([&] { return notifications.shown.size() == 1; }));
    EXPECT_TRUE(notifications.shown.value(0).contains(QStringLiteral("no tray")))
        << notifications.shown.join(u'|').toStdString();
    EXPECT_TRUE(waitUntil([&] { return stored(program, "tirra.linux.trayMissingTold") == true; }));
}

TEST_F(TrayTest, WhatIsNotThereYetIsSaid) {
    const Notifications notifications;
    StatusTray tray;
    const LorvaneProgram program(address);
    ASSERT_TRUE(waitUntil([&] { return !tray.items.isEmpty(); }));
    const TrayMenu menu(tray.items.first());
    ASSERT_TRUE(menu.click({QString::fromUtf8("Check for updates…")}));
    EXPECT_TRUE(waitUntil([&] { return notifications.shown.size() == 1; }));
    EXPECT_TRUE(notifications.shown.value(0).contains(QStringLiteral("system's updates")));
    ASSERT_TRUE(menu.click({QStringLiteral("Send feedback")}));
    EXPECT_TRUE(waitUntil([&] { return notifications.shown.size() == 2; }));
    EXPECT_TRUE(notifications.shown.value(1).contains(QStringLiteral("Feedback")));
}

} // namespace

} // namespace lorvane

#include "Tray_test.moc"
