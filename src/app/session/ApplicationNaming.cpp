// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/session/ApplicationNaming.h"

#include "core/PasteKeys.h"

#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>

namespace lorvane {

namespace {

constexpr qint64 mostBytes = 65536;

/// What lies below its root may be anything, a pipe that nobody writes into among it.
QByteArray contentOf(ProcessId process, const char* name) {
    QFile file(QStringLiteral("/proc/%1/%2").arg(process).arg(QLatin1String(name)));
    const bool isOpen = QFileInfo(file).isFile() && file.open(QIODevice::ReadOnly);
    return isOpen ? file.read(mostBytes) : QByteArray();
}

bool isInterpreter(const QString& program) {
    static const QRegularExpression names(
        QStringLiteral("^(python|perl|ruby|node|gjs|java|bash|sh)[0-9.]*(-console)?$"));
    return names.match(program).hasMatch();
}

/// The first argument that is a file of its own; options of the interpreter come before it.
QString scriptOf(const QByteArray& commandLine) {
    for (const QByteArray& argument : commandLine.split('\0').mid(1)) {
        if (!argument.isEmpty() && !argument.startsWith('-')) {
            return QFileInfo(QString::fromLocal8Bit(argument)).fileName();
        }
    }
    return {};
}

QString sandboxIdFrom(const QByteArray& info) {
    static const QRegularExpression name(QStringLiteral("^name=(\\S+)$"),
                                         QRegularExpression::MultilineOption);
    return name.match(QString::fromUtf8(info)).captured(1);
}

/// Names of units keep a dash as \x2d.
QString unescaped(QString name) {
    static const QRegularExpression code(QStringLiteral("\\\\x([0-9a-f]{2})"));
    for (auto found = code.match(name); found.hasMatch(); found = code.match(name)) {
        const int character = found.captured(1).toInt(nullptr, 16);
        name.replace(found.capturedStart(), found.capturedLength(), QChar(character));
    }
    return name;
}

} // namespace

QStringList applicationIdsOf(const QByteArray& controlGroup) {
    const QString unit = QString::fromUtf8(controlGroup.trimmed().split('/').last());
    static const QRegularExpression form(QStringLiteral("^app-(.+?)(?:@[^.]*)?\\.(scope|service)$"));
    const auto found = form.match(unit);
    if (!found.hasMatch()) {
        return {};
    }
    QStringList parts = found.captured(1).split(QLatin1Char('-'));
    const bool endsInNumber = found.captured(2) == QLatin1String("scope") && parts.size() > 1;
    if (endsInNumber) {
        parts.removeLast();
    }
    // app-ID or app-LAUNCHER-ID, and nothing tells which.
    QStringList ids{unescaped(parts.last())};
    if (parts.size() > 1) {
        ids.append(unescaped(parts.join(QLatin1Char('-'))));
    }
    return ids;
}

ProcessTraits traitsOf(ProcessId process) {
    ProcessTraits traits;
    if (process <= 0) {
        return traits;
    }
    traits.program = QFileInfo(QFile::symLinkTarget(QStringLiteral("/proc/%1/exe").arg(process))).fileName();
    if (isInterpreter(traits.program)) {
        traits.script = scriptOf(contentOf(process, "cmdline"));
    }
    traits.sandboxId = sandboxIdFrom(contentOf(process, "root/.flatpak-info"));
    traits.scopeIds = applicationIdsOf(contentOf(process, "cgroup"));
    return traits;
}

RunningApplication ApplicationNaming::nameFrom(ProcessId process, const ProcessTraits& traits,
                                               const QString& shownName) {
    if (const auto entry = find(traits, shownName)) {
        return {process, entry->name.isEmpty() ? shownName : entry->name, entry->id};
    }
    const QString known = shownName.isEmpty() ? traits.program : shownName;
    return {process, known, known};
}

// The control group comes last, and never names a terminal: what is started from one stays in its group.
std::optional<DesktopEntry> ApplicationNaming::find(const ProcessTraits& traits, const QString& shownName) {
    const bool runsScript = !traits.script.isEmpty();
    if (auto entry = entries_.find({traits.sandboxId, {}, {}, runsScript ? traits.script : traits.program})) {
        return entry;
    }
    if (auto entry = entries_.find({{}, shownName, shownName, {}})) {
        return entry;
    }
    for (const QString& id : traits.scopeIds) {
        auto entry = entries_.find({id, {}, {}, {}});
        if (entry && pasteRouteFor({0, entry->name, entry->id}) == PasteRoute::standard) {
            return entry;
        }
    }
    return std::nullopt;
}

} // namespace lorvane
