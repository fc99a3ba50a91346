// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/setup/SetupProbe.h"

#include "app/setup/DesktopEntry.h"
#include "base/IniEdit.h"
#include "platform/linux/evdev/InputFolder.h"
#include "platform/linux/kde/KwinKeySight.h"
#include "platform/linux/portal/PortalRequests.h"

#include <QCoreApplication>
#include <QDBusConnectionInterface>
#include <QDBusReply>
#include <QDBusVariant>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>

namespace lorvane {

namespace {

constexpr int busPatience = 3000; // milliseconds
constexpr uint tokenVersion = 2;

QVariant property(const QDBusConnection& session, const QString& service, const QString& path,
                  const QString& interface, const QString& name) {
    auto call = QDBusMessage::createMethodCall(
        service, path, QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Get"));
    call << interface << name;
    const QDBusReply<QDBusVariant> reply = session.call(call, QDBus::Block, busPatience);
    return reply.isValid() ? reply.value().variant() : QVariant();
}

DesktopSigns signsOf(const QDBusConnection& session) {
    const auto isSet = [](const char* name) { return !qEnvironmentVariableIsEmpty(name); };
    DesktopSigns signs;
    signs.isWayland = isSet("WAYLAND_DISPLAY") || qEnvironmentVariable("XDG_SESSION_TYPE") == u"wayland";
    if (const auto* const bus = session.interface()) {
        signs.busNames = bus->registeredServiceNames().value();
    }
    signs.hasSwaySocket = isSet("SWAYSOCK");
    signs.hasHyprland = isSet("HYPRLAND_INSTANCE_SIGNATURE");
    signs.hasNiri = isSet("NIRI_SOCKET");
    return signs;
}

/// Beside the program as it is installed, or where the build puts it.
QString sharedFolder() {
    const QDir program(QCoreApplication::applicationDirPath());
    for (const char* const below : {"../share/lorvane", "../share"}) {
        const QString folder = program.absoluteFilePath(QString::fromLatin1(below));
        if (QFileInfo::exists(folder + QStringLiteral("/gnome-shell-extension"))) {
            return folder + QStringLiteral("/gnome-shell-extension");
        }
    }
    return {};
}

QString helperBeside(const QString& program) {
    const QDir folder = QFileInfo(program).dir();
    for (const char* const place : {"lorvane-input-method", "../lib/lorvane/lorvane-input-method"}) {
        const QFileInfo helper(folder.absoluteFilePath(QString::fromLatin1(place)));
        if (helper.isExecutable()) {
            return helper.canonicalFilePath();
        }
    }
    return {};
}

QString chosenInputMethod(const QString& kwinrc) {
    QFile file(kwinrc);
    const QByteArray content = file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    const QByteArray line = iniLine(content, "Wayland", "InputMethod").value_or(QByteArray());
    return QString::fromUtf8(line.mid(line.indexOf('=') + 1)).trimmed();
}

} // namespace

SetupDesktop desktopFrom(const DesktopSigns& signs) {
    if (!signs.isWayland) {
        return SetupDesktop::x11;
    }
    if (signs.hasSwaySocket) {
        return SetupDesktop::sway;
    }
    if (signs.hasHyprland) {
        return SetupDesktop::hyprland;
    }
    if (signs.hasNiri) {
        return SetupDesktop::niri;
    }
    if (signs.busNames.contains(QStringLiteral("org.kde.KWin"))) {
        return SetupDesktop::kde;
    }
    return signs.busNames.contains(QStringLiteral("org.gnome.Shell")) ? SetupDesktop::gnome
                                                                      : SetupDesktop::other;
}

QString inputMethodEntry(const QString& helper, const QStringList& folders) {
    for (const QString& folder : folders) {
        QString entry = folder + QStringLiteral("/com.ostrand.tirra.inputmethod.desktop");
        QFile file(entry);
        if (!helper.isEmpty() && file.open(QIODevice::ReadOnly) &&
            file.readAll().contains("\nExec=" + execWord(helper) + '\n')) {
            return entry;
        }
    }
    return {};
}

ShellExtensionSetup shellExtension(const QDBusConnection& session) {
    return {session, sharedFolder(), QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation)};
}

SetupFacts probeSetup(const QDBusConnection& session) {
    SetupFacts facts;
    facts.desktop = desktopFrom(signsOf(session));
    facts.configFolder = QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation);
    facts.dataFolder = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation);
    facts.program = QFileInfo(QCoreApplication::applicationFilePath()).canonicalFilePath();
    facts.inputMethod = helperBeside(facts.program);
    facts.chosenInputMethod = chosenInputMethod(facts.configFolder + QStringLiteral("/kwinrc"));
    // The user's own folder is not looked at: what stands there is what a setup writes.
    facts.inputMethodEntry = inputMethodEntry(
        facts.inputMethod, QStandardPaths::standardLocations(QStandardPaths::ApplicationsLocation).mid(1));
    facts.hasX = !qEnvironmentVariableIsEmpty("DISPLAY");
    facts.showsModifiers = KwinKeySight(session).sight() != XKeySight::none;
    facts.mayReadDevices = InputFolder().access() != KeyDevices::Access::refused;
    facts.userName = qEnvironmentVariable("USER", QStringLiteral("$USER"));
    if (facts.desktop == SetupDesktop::gnome) {
        using State = ShellExtensionSetup::State;
        const State state = shellExtension(session).state();
        facts.hasShellExtension = state != State::noShell && state != State::unknown;
        facts.isShellExtensionInPlace = state == State::running || state == State::afterLogin;
        facts.isShellExtensionForNextLogin = state == State::afterLogin;
        facts.isShellExtensionOutdated = state == State::outdated;
    }
    facts.portalPostsKeys =
        property(session, PortalRequests::serviceName(), PortalRequests::objectPath(),
                 QStringLiteral("org.freedesktop.portal.RemoteDesktop"), QStringLiteral("version"))
            .toUInt() >= tokenVersion;
    return facts;
}

} // namespace lorvane
