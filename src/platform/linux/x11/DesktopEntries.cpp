// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/x11/DesktopEntries.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QStandardPaths>

namespace lorvane {

namespace {

const QByteArray mainGroup("[Desktop Entry]");

/// The keys of the main group; other groups tell of single actions.
QHash<QByteArray, QByteArray> mainKeys(const QByteArray& text) {
    QHash<QByteArray, QByteArray> keys;
    bool inside = false;
    for (const QByteArray& rawLine : text.split('\n')) {
        const QByteArray line = rawLine.trimmed();
        if (line.startsWith('[')) {
            inside = line == mainGroup;
        }
        const qsizetype equals = line.indexOf('=');
        if (inside && equals > 0 && !line.startsWith('#')) {
            keys.insert(line.left(equals).trimmed(), line.mid(equals + 1).trimmed());
        }
    }
    return keys;
}

QByteArray localized(const QHash<QByteArray, QByteArray>& keys, const QByteArray& key,
                     const QString& language) {
    const QByteArray full = language.toUtf8();
    QByteArray whole = keys.value(key + '[' + full + ']');
    if (!whole.isEmpty()) {
        return whole;
    }
    const QByteArray general = keys.value(key + '[' + full.split('_').first() + ']');
    return general.isEmpty() ? keys.value(key) : general;
}

QString programOf(const QString& exec) {
    const QStringList words = QProcess::splitCommand(exec);
    for (const QString& word : words) {
        // "env NAME=value program" starts the program.
        if (word != "env" && !word.contains('=')) {
            return QFileInfo(word).fileName();
        }
    }
    return {};
}

bool isNamedAfterProgram(const DesktopEntry& entry) {
    const QString id = entry.id.toLower();
    const QString program = entry.program.toLower();
    return !program.isEmpty() && (id == program || id.endsWith(u'.' + program));
}

} // namespace

std::optional<DesktopEntry> parseDesktopEntry(const QString& id, const QByteArray& text,
                                              const QString& language) {
    const auto keys = mainKeys(text);
    if (keys.value("Type", "Application") != "Application" || keys.value("Hidden") == "true") {
        return std::nullopt;
    }
    return DesktopEntry{id, QString::fromUtf8(localized(keys, "Name", language)),
                        QString::fromUtf8(keys.value("StartupWMClass")),
                        programOf(QString::fromUtf8(keys.value("Exec")))};
}

QStringList DesktopEntries::standardFolders() {
    return QStandardPaths::standardLocations(QStandardPaths::ApplicationsLocation);
}

std::optional<DesktopEntry> DesktopEntries::find(const WindowTraits& traits) {
    readIfChanged();
    const std::pair<const QHash<QString, std::size_t>*, QString> tries[]{
        {&byId_, traits.gtkApplicationId},  {&byWmClass_, traits.className},
        {&byWmClass_, traits.instanceName}, {&byId_, traits.className},
        {&byId_, traits.instanceName},      {&byProgram_, traits.program}};
    for (const auto& [index, key] : tries) {
        if (const DesktopEntry* const entry = first(*index, key)) {
            return *entry;
        }
    }
    return std::nullopt;
}

const DesktopEntry* DesktopEntries::first(const QHash<QString, std::size_t>& index,
                                          const QString& key) const {
    const auto found = index.constFind(key.toLower());
    return key.isEmpty() || found == index.constEnd() ? nullptr : &entries_[*found];
}

void DesktopEntries::readIfChanged() {
    std::vector<QDateTime> changedAt;
    for (const QString& folder : folders_) {
        changedAt.push_back(QFileInfo(folder).lastModified());
    }
    if (changedAt == readAt_) {
        return;
    }
    readAt_ = changedAt;
    entries_.clear();
    for (auto* const index : {&byId_, &byWmClass_, &byProgram_}) {
        index->clear();
    }
    for (const QString& folder : folders_) {
        readFolder(folder);
    }
}

void DesktopEntries::readFolder(const QString& folder) {
    const QDir dir(folder);
    for (const QString& fileName : dir.entryList({"*.desktop"}, QDir::Files, QDir::Name)) {
        const QString id = fileName.chopped(8);
        QFile file(dir.filePath(fileName));
        if (byId_.contains(id.toLower()) || !file.open(QIODevice::ReadOnly)) {
            continue; // an entry of a more important folder stands for this one
        }
        const auto entry = parseDesktopEntry(id, file.readAll(), language_);
        if (!entry) {
            continue;
        }
        const std::size_t place = entries_.size();
        const auto note = [place](QHash<QString, std::size_t>& index, const QString& key) {
            if (!key.isEmpty() && !index.contains(key.toLower())) {
                index.insert(key.toLower(), place);
            }
        };
        note(byId_, entry->id);
        note(byWmClass_, entry->startupWmClass);
        note(byProgram_, entry->program);
        entries_.push_back(*entry);
        // Before one of the same program for its settings, say.
        if (isNamedAfterProgram(*entry) &&
            !isNamedAfterProgram(entries_[byProgram_[entry->program.toLower()]])) {
            byProgram_.insert(entry->program.toLower(), place);
        }
    }
}

} // namespace lorvane
