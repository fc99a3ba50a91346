// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/desktop/JsonPreferenceStore.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QSaveFile>

namespace lorvane {

namespace {

constexpr auto ownerOnly = QFile::ReadOwner | QFile::WriteOwner;

QSet<QString> allKeys(const QJsonObject& a, const QJsonObject& b) {
    const QStringList keys = a.keys() + b.keys();
    return {keys.begin(), keys.end()};
}

} // namespace

JsonPreferenceStore::JsonPreferenceStore(QString path, DiagnosticLog& log)
    : path_(std::move(path)), log_(log) {
    makeFolder();
    if (const auto stored = read()) {
        values_ = *stored;
    }
    // The folder tells of a file that is replaced, the file of one that is written in place.
    connect(&watcher_, &QFileSystemWatcher::directoryChanged, this, [this] { follow(); });
    connect(&watcher_, &QFileSystemWatcher::fileChanged, this, [this] { follow(); });
    watch();
}

void JsonPreferenceStore::makeFolder() const {
    const QString folder = QFileInfo(path_).absolutePath();
    if (!QFileInfo::exists(folder) && QDir().mkpath(folder)) {
        QFile::setPermissions(folder, ownerOnly | QFile::ExeOwner);
    }
}

void JsonPreferenceStore::watch() {
    watcher_.addPath(QFileInfo(path_).absolutePath());
    if (QFileInfo::exists(path_)) {
        watcher_.addPath(path_);
    }
}

QJsonValue JsonPreferenceStore::value(const QString& key) const {
    const std::lock_guard lock(mutex_);
    return values_.value(key);
}

void JsonPreferenceStore::setValue(const QString& key, const QJsonValue& value) {
    if (this->value(key) == value) {
        return;
    }
    // What somebody else wrote a moment ago is not undone by this change.
    follow();
    QJsonObject fresh = values_;
    if (value.isUndefined()) {
        fresh.remove(key);
    } else {
        fresh.insert(key, value);
    }
    {
        const std::lock_guard lock(mutex_);
        values_ = fresh;
    }
    write();
    changed_.emit(key);
}

void JsonPreferenceStore::follow() {
    watch();
    if (const auto fresh = read()) {
        replace(*fresh);
    }
}

void JsonPreferenceStore::replace(const QJsonObject& fresh) {
    const QJsonObject before = values_;
    if (before == fresh) {
        return;
    }
    {
        const std::lock_guard lock(mutex_);
        values_ = fresh;
    }
    for (const QString& key : allKeys(before, fresh)) {
        if (before.value(key) != fresh.value(key)) {
            changed_.emit(key);
        }
    }
}

// A file that is missing, cut short or no JSON object changes nothing: an editor may be half way through
// writing it.
std::optional<QJsonObject> JsonPreferenceStore::read() {
    QFile file(path_);
    if (!file.open(QIODevice::ReadOnly)) {
        return std::nullopt;
    }
    const QByteArray content = file.readAll();
    const QJsonDocument document = QJsonDocument::fromJson(content);
    const bool unreadable = !document.isObject() && !content.trimmed().isEmpty();
    if (unreadable && !isUnreadable_) {
        log_.diagLog(
            QStringLiteral("[lorvane-preferences] the file is no JSON object; what it said before holds"));
    }
    isUnreadable_ = unreadable;
    return document.isObject() ? std::optional(document.object()) : std::nullopt;
}

void JsonPreferenceStore::write() {
    makeFolder();
    if (isUnreadable_) {
        const QString aside = path_ + QStringLiteral(".unreadable");
        QFile::remove(aside);
        QFile::copy(path_, aside);
        isUnreadable_ = false;
    }
    QSaveFile file(path_);
    if (!file.open(QIODevice::WriteOnly)) {
        log_.diagLog(QStringLiteral("[lorvane-preferences] cannot be stored: %1").arg(file.errorString()));
        return;
    }
    file.setPermissions(ownerOnly);
    const QByteArray content = QJsonDocument(values_).toJson();
    if (file.write(content) != content.size() || !file.commit()) {
        log_.diagLog(QStringLiteral("[lorvane-preferences] cannot be stored: %1").arg(file.errorString()));
    }
    watch();
}

} // namespace lorvane
