// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/setup/SetupRunner.h"

#include "base/IniEdit.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <utility>

namespace lorvane {

namespace {

// The words of the journal.
const QString kindField = QStringLiteral("kind");
const QString pathField = QStringLiteral("path");
const QString beforeField = QStringLiteral("before");
const QString afterField = QStringLiteral("after");
const QString groupField = QStringLiteral("group");
const QString keyField = QStringLiteral("key");
const QString lineField = QStringLiteral("line");
const QString commandsField = QStringLiteral("commands");
const QString foldersField = QStringLiteral("folders");

QStringList stringsOf(const QJsonValue& list) {
    return QVariant(list.toArray().toVariantList()).toStringList();
}

QJsonValue asBase64(const std::optional<QByteArray>& content) {
    return content ? QJsonValue(QString::fromLatin1(content->toBase64())) : QJsonValue();
}

std::optional<QByteArray> fromBase64(const QJsonValue& value) {
    return value.isString() ? std::optional(QByteArray::fromBase64(value.toString().toLatin1()))
                            : std::nullopt;
}

} // namespace

QStringList SetupRunner::apply(const SetupPlan& plan) {
    problems_.clear();
    QJsonArray commands;
    for (const QStringList& command : plan.refreshes) {
        commands.append(QJsonArray::fromStringList(command));
    }
    if (!commands.isEmpty()) {
        (void)note({{kindField, QStringLiteral("refresh")}, {commandsField, commands}});
    }
    for (const SetupFile& file : plan.files) {
        replace(file.path, file.content, {{kindField, QStringLiteral("file")}});
    }
    for (const SetupKey& key : plan.keys) {
        applyKey(key);
    }
    if (plan.placesShellExtension && note({{kindField, QStringLiteral("extension")}})) {
        placeShellExtension(true);
    }
    if (plan.switchesDevicesOn && note({{kindField, QStringLiteral("devices")}})) {
        world_.switchDevices(true);
    }
    if (plan.asksPortal && note({{kindField, QStringLiteral("portal")}}) && !world_.askPortal(true)) {
        problems_.append(QStringLiteral("org.freedesktop.portal.RemoteDesktop"));
    }
    refresh(plan.refreshes);
    return std::exchange(problems_, {});
}

void SetupRunner::placeShellExtension(bool wanted) {
    if (const QString problem = world_.placeShellExtension(wanted); !problem.isEmpty()) {
        problems_.append(problem);
    }
}

void SetupRunner::applyKey(const SetupKey& key) {
    const auto reading = world_.read(key.path);
    if (!reading) {
        return refuse(key.path, reading.error());
    }
    const QByteArray file = reading->value_or(QByteArray());
    const auto line = iniLine(file, key.group, key.key);
    replace(key.path, withIniLine(file, key.group, key.key, key.key + '=' + key.value),
            {{kindField, QStringLiteral("key")},
             {groupField, QString::fromUtf8(key.group)},
             {keyField, QString::fromUtf8(key.key)},
             {lineField, asBase64(line)}});
}

// The journal first: what cannot be taken back is not done.
void SetupRunner::replace(const QString& path, const QByteArray& content, QJsonObject done) {
    const auto before = world_.read(path);
    if (!before) {
        return refuse(path, before.error());
    }
    if (*before == content) {
        return;
    }
    done.insert(pathField, path);
    done.insert(beforeField, asBase64(*before));
    done.insert(afterField, asBase64(content));
    done.insert(foldersField, QJsonArray::fromStringList(world_.foldersToMake(path)));
    if (note(done) && !world_.write(path, content)) {
        problems_.append(path);
    }
}

QStringList SetupRunner::undo() {
    problems_.clear();
    const auto done = journal();
    if (!done) {
        refuse(journal_, done.error());
        return std::exchange(problems_, {});
    }
    std::vector<QStringList> commands;
    QStringList folders;
    for (qsizetype i = done->size() - 1; i >= 0; --i) {
        const QJsonObject one = done->at(i).toObject();
        const QJsonArray its = one.value(commandsField).toArray();
        for (const auto& command : its) {
            commands.push_back(stringsOf(command));
        }
        if (one.value(kindField).toString() == QLatin1String("journal")) {
            folders = stringsOf(one.value(foldersField));
        }
        undoOne(one);
    }
    refresh(commands);
    if (problems_.isEmpty()) {
        world_.remove(journal_, folders);
    }
    return std::exchange(problems_, {});
}

void SetupRunner::undoOne(const QJsonObject& done) {
    const QString kind = done.value(kindField).toString();
    if (kind == QLatin1String("file") || kind == QLatin1String("key")) {
        undoFile(done);
    } else if (kind == QLatin1String("extension")) {
        placeShellExtension(false);
    } else if (kind == QLatin1String("devices")) {
        world_.switchDevices(false);
    } else if (kind == QLatin1String("portal")) {
        (void)world_.askPortal(false);
    }
}

void SetupRunner::undoFile(const QJsonObject& done) {
    const QString path = done.value(pathField).toString();
    const auto before = fromBase64(done.value(beforeField));
    const auto reading = world_.read(path);
    if (!reading) {
        return refuse(path, reading.error());
    }
    const std::optional<QByteArray>& now = *reading;
    if (!now || now == before) {
        return;
    }
    const bool isOurs = now == fromBase64(done.value(afterField));
    bool worked = true;
    if (isOurs) {
        worked =
            before ? world_.write(path, *before) : world_.remove(path, stringsOf(done.value(foldersField)));
    } else if (done.value(kindField).toString() == QLatin1String("key")) {
        worked = world_.write(path, withIniLine(*now, done.value(groupField).toString().toUtf8(),
                                                done.value(keyField).toString().toUtf8(),
                                                fromBase64(done.value(lineField))));
    } else {
        worked = false; // somebody else's work by now
    }
    if (!worked) {
        problems_.append(path);
    }
}

void SetupRunner::refresh(const std::vector<QStringList>& commands) {
    for (const QStringList& command : commands) {
        (void)world_.run(command);
    }
}

void SetupRunner::refuse(const QString& path, const QString& reason) {
    problems_.append(QStringLiteral("%1 (%2)").arg(path, reason));
}

// One that cannot be read is tried, and named.
bool SetupRunner::hasAnythingToUndo() const {
    const auto done = journal();
    return !done || !done->isEmpty();
}

Result<QJsonArray, QString> SetupRunner::journal() const {
    const auto file = world_.read(journal_);
    if (!file) {
        return failure(file.error());
    }
    return QJsonDocument::fromJson(file->value_or(QByteArray())).array();
}

bool SetupRunner::note(const QJsonObject& done) {
    auto all = journal();
    if (!all) {
        refuse(journal_, all.error());
        return false;
    }
    if (all->contains(done)) {
        return true;
    }
    if (all->isEmpty()) {
        all->append(QJsonObject{{kindField, QStringLiteral("journal")},
                                {foldersField, QJsonArray::fromStringList(world_.foldersToMake(journal_))}});
    }
    all->append(done);
    const bool isWritten = world_.write(journal_, QJsonDocument(*all).toJson());
    if (!isWritten) {
        problems_.append(journal_);
    }
    return isWritten;
}

} // namespace lorvane
