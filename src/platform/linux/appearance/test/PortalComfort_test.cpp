// SPDX-License-Identifier: GPL-3.0-or-later
// A portal of the test's own on a session bus of the test's own.
#include "platform/linux/appearance/PortalComfort.h"
#include "support/Wait.h"

#include <QDBusAbstractAdaptor>
#include <QDBusMetaType>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using SettingSpaces = QMap<QString, QVariantMap>;
Q_DECLARE_METATYPE(SettingSpaces)

namespace lorvane {

namespace {

class FakePortal : public QDBusAbstractAdaptor {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.portal.Settings")

 public:
    explicit FakePortal(QObject* parent) : QDBusAbstractAdaptor(parent) {}
    SettingSpaces settings;

 public Q_SLOTS:
    SettingSpaces ReadAll(const QStringList& namespaces) {
        ++questions;
        SettingSpaces asked;
        for (const QString& space : namespaces) {
            if (settings.contains(space)) {
                asked.insert(space, settings.value(space));
            }
        }
        return asked;
    }

 Q_SIGNALS:
    void SettingChanged(const QString& space, const QString& key, const QDBusVariant& value);

 public:
    int questions = 0;
};

class PortalComfortTest : public ::testing::Test {
 protected:
    void SetUp() override {
        qDBusRegisterMetaType<SettingSpaces>();
        qunsetenv("GTK_THEME");
        ASSERT_TRUE(bus.isConnected());
    }
    ~PortalComfortTest() override {
        bus.unregisterObject(path);
        bus.unregisterService(name);
    }
    void openPortal() {
        ASSERT_TRUE(bus.registerObject(path, &object));
        ASSERT_TRUE(bus.registerService(name));
    }
    void writeGtk(const QByteArray& content) {
        ASSERT_TRUE(QDir(folder.path()).mkpath(QStringLiteral("gtk-3.0")));
        QFile file(folder.filePath(QStringLiteral("gtk-3.0/settings.ini")));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(content);
    }
    void change(const char* space, const char* key, const QVariant& value) {
        Q_EMIT portal.SettingChanged(QString::fromLatin1(space), QString::fromLatin1(key),
                                     QDBusVariant(value));
    }

    const QString name = QStringLiteral("org.freedesktop.portal.Desktop");
    const QString path = QStringLiteral("/org/freedesktop/portal/desktop");
    QDBusConnection bus = QDBusConnection::sessionBus();
    QTemporaryDir folder;
    QObject object;
    FakePortal& portal = *new FakePortal(&object);
};

TEST_F(PortalComfortTest, ReadsThePortalAtTheStart) {
    portal.settings = {
        {QStringLiteral("org.gnome.desktop.interface"), {{QStringLiteral("enable-animations"), false}}},
        {QStringLiteral("org.freedesktop.appearance"), {{QStringLiteral("contrast"), 1U}}}};
    openPortal();
    const PortalComfort comfort(bus, folder.path());
    EXPECT_TRUE(waitUntil([&] { return comfort.wantsLessMotion() && comfort.wantsMoreContrast(); }));
}

TEST_F(PortalComfortTest, FollowsThePortalAndTellsOfChanges) {
    openPortal();
    PortalComfort comfort(bus, folder.path());
    ASSERT_TRUE(waitUntil([this] { return portal.questions == 1; }));
    int told = 0;
    const Handle watch = comfort.onChange([&told] { ++told; });
    change("org.gnome.desktop.interface", "enable-animations", false);
    EXPECT_TRUE(waitUntil([&] { return comfort.wantsLessMotion(); }));
    change("org.gnome.desktop.a11y.interface", "high-contrast", true);
    EXPECT_TRUE(waitUntil([&] { return comfort.wantsMoreContrast(); }));
    change("org.gnome.desktop.interface", "enable-animations", true);
    EXPECT_TRUE(waitUntil([&] { return !comfort.wantsLessMotion(); }));
    EXPECT_TRUE(comfort.wantsMoreContrast());
    EXPECT_EQ(told, 3);
}

TEST_F(PortalComfortTest, WithoutAPortalItReadsTheFileOfGtk) {
    writeGtk("[Settings]\ngtk-enable-animations=false\n");
    const PortalComfort comfort(bus, folder.path());
    EXPECT_TRUE(comfort.wantsLessMotion());
    EXPECT_FALSE(comfort.wantsMoreContrast());
}

TEST_F(PortalComfortTest, TheThemeOfTheEnvironmentStandsAboveTheFile) {
    writeGtk("gtk-theme-name=HighContrast\n");
    qputenv("GTK_THEME", "Adwaita");
    EXPECT_FALSE(PortalComfort(bus, folder.path()).wantsMoreContrast());
    qputenv("GTK_THEME", "HighContrastInverse");
    EXPECT_TRUE(PortalComfort(bus, folder.path()).wantsMoreContrast());
}

} // namespace

} // namespace lorvane

#include "PortalComfort_test.moc"
