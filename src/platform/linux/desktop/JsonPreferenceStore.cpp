// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/desktop/JsonPreferenceStore.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QSaveFile>

namespace lorvane {

namespace {

// Nothing that is kept here comes near; reading a folder, a pipe or a whole disk would hold up the program.
constexpr qint64 largestFile = 16 * 1024 * 1024;
constexpr auto ownersFile = QFile::ReadOwner | QFile::WriteOwner;
constexpr auto ownersFolder = ownersFile | QFile::ExeOwner;

QStringList changedKeys(const QJsonObject& before, const QJsonObject& after) {
    QStringList keys;
    for (auto entry = after.begin(); entry != after.end(); ++entry) {
        if (before.value(entry.key()) != entry.value()) {
            keys.append(entry.key());
        }
    }
    for (auto entry = before.begin(); entry != before.end(); ++entry) {
        if (!after.contains(entry.key())) {
            keys.append(entry.key());
        }
    }
    return keys;
}

QString freeName(const QString& wanted) {
    QString name = wanted;
    for (int number = 2; QFile::exists(name); ++number) {
        name = wanted + QLatin1Char('-') + QString::number(number);
    }
    return name;
}

} // namespace

JsonPreferenceStore::JsonPreferenceStore(const QString& configFolder, DiagnosticLog& log)
    : folder_(configFolder + QStringLiteral("/Tirra")),
      filePath_(folder_ + QStringLiteral("/preferences.json")), log_(log) {
    QDir().mkpath(folder_);
    QFile::setPermissions(folder_, ownersFolder);
    QJsonObject found;
    const Content content = readFile(found);
    if (content == Content::readable) {
        values_ = found;
        QFile::setPermissions(filePath_, ownersFile);
    } else if (content == Content::unreadable) {
        setAside();
    }
    QObject::connect(&watcher_, &QFileSystemWatcher::fileChanged, &watcher_, [this] { reload(); });
    QObject::connect(&watcher_, &QFileSystemWatcher::directoryChanged, &watcher_, [this] { reload(); });
    watch();
}

QJsonValue JsonPreferenceStore::value(const QString& key) const {
    const std::lock_guard lock(mutex_);
    return values_.value(key);
}

void JsonPreferenceStore::setValue(const QString& key, const QJsonValue& value) {
    QJsonObject found;
    const Content content = readFile(found);
    if (content == Content::readable) {
        takeOver(found);
    } else if (content == Content::unreadable) {
        setAside();
    }
    if (this->value(key) == value) {
        return;
    }
    {
        const std::lock_guard lock(mutex_);
        if (value.isUndefined()) {
            values_.remove(key);
        } else {
            values_.insert(key, value);
        }
    }
    save();
    changed_.emit(key);
}

Handle JsonPreferenceStore::subscribe(std::function<void(const QString& key)> changed) {
    return changed_.subscribe(std::move(changed));
}

JsonPreferenceStore::Content JsonPreferenceStore::readFile(QJsonObject& found) {
    const QFileInfo about(filePath_);
    if (!about.exists()) {
        return Content::absent;
    }
    QFile file(filePath_);
    if (!about.isFile() || about.size() > largestFile || !file.open(QIODevice::ReadOnly)) {
        return Content::unreadable;
    }
    const QByteArray bytes = file.readAll();
    if (bytes == onDisk_ && !bytes.isEmpty()) {
        return Content::asKnown;
    }
    const QJsonDocument document = QJsonDocument::fromJson(bytes);
    if (!document.isObject()) {
        return Content::unreadable;
    }
    onDisk_ = bytes;
    found = document.object();
    return Content::readable;
}

void JsonPreferenceStore::takeOver(const QJsonObject& found) {
    QStringList keys;
    {
        const std::lock_guard lock(mutex_);
        keys = changedKeys(values_, found);
        values_ = found;
    }
    for (const QString& key : keys) {
        changed_.emit(key);
    }
}

void JsonPreferenceStore::setAside() {
    const QString aside = freeName(filePath_ + QStringLiteral(".unreadable"));
    const bool moved = QFile::rename(filePath_, aside);
    log_.diagLog(moved ? QStringLiteral("[tirra-preferences] unreadable, set aside as %1").arg(aside)
                       : QStringLiteral("[tirra-preferences] unreadable, and it cannot be set aside"));
}

void JsonPreferenceStore::save() {
    QByteArray bytes;
    {
        const std::lock_guard lock(mutex_);
        bytes = QJsonDocument(values_).toJson(QJsonDocument::Indented);
    }
    QDir().mkpath(folder_);
    QSaveFile file(filePath_);
    const bool written = file.open(QIODevice::WriteOnly) && file.setPermissions(ownersFile) &&
                         file.write(bytes) == bytes.size() && file.commit();
    if (!written) {
        log_.diagLog(QStringLiteral("[tirra-preferences] could not be written: %1").arg(file.errorString()));
        return;
    }
    QFile::setPermissions(filePath_, ownersFile);
    onDisk_ = bytes;
    watch();
}

void JsonPreferenceStore::watch() {
    for (const QString& path : {folder_, filePath_}) {
        if (!watcher_.files().contains(path) && !watcher_.directories().contains(path) &&
            QFile::exists(path)) {
            watcher_.addPath(path);
        }
    }
}

void JsonPreferenceStore::reload() {
    watch();
    QJsonObject found;
    if (readFile(found) == Content::readable) {
        takeOver(found);
    }
}

} // namespace lorvane
