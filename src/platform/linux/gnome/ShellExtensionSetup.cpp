// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/gnome/ShellExtensionSetup.h"

#include "platform/linux/gnome/ShellExtension.h"

#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QRegularExpression>

#include <algorithm>

namespace lorvane {

namespace {

const QString shell = QStringLiteral("org.gnome.Shell");
const QString shellPath = QStringLiteral("/org/gnome/Shell");
const QString schema = QStringLiteral("org.gnome.shell");
const QString enabledKey = QStringLiteral("enabled-extensions");
const QStringList files{QStringLiteral("extension.js"), QStringLiteral("metadata.json")};
constexpr int bound = 3000; // milliseconds
constexpr int firstVersion = 43;
constexpr int firstWithModules = 45;
constexpr int lastVersion = 48;

/// The command's output; absent when it failed.
std::optional<QString> gsettings(const QStringList& arguments) {
    QProcess process;
    process.start(QStringLiteral("gsettings"), arguments);
    if (!process.waitForFinished(bound) || process.exitStatus() != QProcess::NormalExit ||
        process.exitCode() != 0) {
        return std::nullopt;
    }
    return QString::fromUtf8(process.readAllStandardOutput()).trimmed();
}

/// The names in a list as gsettings writes it: ['a', 'b'], @as [] when empty.
std::optional<QStringList> enabledExtensions() {
    const auto text = gsettings({QStringLiteral("get"), schema, enabledKey});
    if (!text) {
        return std::nullopt;
    }
    static const QRegularExpression quoted(QStringLiteral("['\"]([^'\"]*)['\"]"));
    QStringList names;
    for (auto match = quoted.globalMatch(*text); match.hasNext();) {
        names.append(match.next().captured(1));
    }
    return names;
}

std::optional<QByteArray> contentOf(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? std::optional(file.readAll()) : std::nullopt;
}

QString asList(const QStringList& names) {
    return names.isEmpty() ? QStringLiteral("[]")
                           : QStringLiteral("['") + names.join(QStringLiteral("', '")) + QStringLiteral("']");
}

} // namespace

const QString ShellExtensionSetup::uuid = QStringLiteral("keys@tirra.ostrand.com");

ShellExtensionSetup::ShellExtensionSetup(QDBusConnection session, QString source, QString dataFolder)
    : session_(std::move(session)), source_(std::move(source)), dataFolder_(std::move(dataFolder)) {}

QString ShellExtensionSetup::folder() const {
    return dataFolder_ + QStringLiteral("/gnome-shell/extensions/") + uuid;
}

QString ShellExtensionSetup::sourceFor(int version) const {
    const int shape = version < firstWithModules ? firstVersion : firstWithModules;
    return source_ + QLatin1Char('/') + QString::number(shape);
}

bool ShellExtensionSetup::isAsIn(const QString& source) const {
    return std::all_of(files.begin(), files.end(), [this, &source](const QString& name) {
        const auto wanted = contentOf(source + QLatin1Char('/') + name);
        return !wanted || wanted == contentOf(folder() + QLatin1Char('/') + name);
    });
}

std::optional<int> ShellExtensionSetup::shellVersion() const {
    auto question = QDBusMessage::createMethodCall(
        shell, shellPath, QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Get"));
    question << shell << QStringLiteral("ShellVersion");
    question.setAutoStartService(false);
    const QDBusMessage answer = session_.call(question, QDBus::Block, bound);
    const QString version = answer.arguments().value(0).value<QDBusVariant>().variant().toString();
    bool isNumber = false;
    const int number = version.section(QLatin1Char('.'), 0, 0).toInt(&isNumber);
    return isNumber ? std::optional(number) : std::nullopt;
}

bool ShellExtensionSetup::isRunning() const {
    return session_.interface()->isServiceRegistered(shellExtension::service);
}

ShellExtensionSetup::State ShellExtensionSetup::state() const {
    const auto version = shellVersion();
    if (!version) {
        return State::noShell;
    }
    if (*version < firstVersion || *version > lastVersion) {
        return State::unknown;
    }
    const bool isInstalled = QFile::exists(folder() + QStringLiteral("/metadata.json"));
    if (isInstalled && !isAsIn(sourceFor(*version))) {
        return State::outdated;
    }
    if (isRunning()) {
        return State::running;
    }
    if (!isInstalled) {
        return State::absent;
    }
    const auto enabled = enabledExtensions();
    return enabled && enabled->contains(uuid) ? State::afterLogin : State::switchedOff;
}

QString ShellExtensionSetup::install() {
    const State before = state();
    if (before == State::noShell) {
        return QStringLiteral("no GNOME Shell is running");
    }
    if (before == State::unknown) {
        return QStringLiteral("there is no extension for this version of the GNOME Shell");
    }
    const QString source = sourceFor(*shellVersion());
    if (!QDir().mkpath(folder())) {
        return QStringLiteral("%1 cannot be made").arg(folder());
    }
    for (const QString& name : files) {
        const QString from = source + QLatin1Char('/') + name;
        const QString to = folder() + QLatin1Char('/') + name;
        QFile::remove(to);
        if (!QFile::copy(from, to)) {
            return QStringLiteral("%1 cannot be copied to %2").arg(from, to);
        }
    }
    return setEnabled(true);
}

QString ShellExtensionSetup::remove() {
    QString problem = setEnabled(false);
    if (!problem.isEmpty()) {
        return problem;
    }
    return !QDir(folder()).exists() || QDir(folder()).removeRecursively()
               ? QString()
               : QStringLiteral("%1 cannot be removed").arg(folder());
}

// A shell learns of new files at its start only; what it knows already follows the settings at once.
QString ShellExtensionSetup::setEnabled(bool enabled) {
    auto names = enabledExtensions();
    if (!names) {
        return QStringLiteral("the list of extensions cannot be read with gsettings");
    }
    if (names->contains(uuid) == enabled) {
        return {};
    }
    if (enabled) {
        names->append(uuid);
    } else {
        names->removeAll(uuid);
    }
    return gsettings({QStringLiteral("set"), schema, enabledKey, asList(*names)})
               ? QString()
               : QStringLiteral("the list of extensions cannot be written with gsettings");
}

} // namespace lorvane
