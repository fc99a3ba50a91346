// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/DiagnosticLog.h"
#include "base/Preferences.h"
#include "base/Signal.h"

#include <QFileSystemWatcher>
#include <QJsonObject>
#include <QObject>

#include <mutex>

namespace lorvane {

/// Preferences in one JSON file that only its owner may read. Every change is on the disk, whole, when
/// `setValue` returns. Edits from outside are taken up while the program runs; keys that nobody here knows
/// are kept. A file that is no JSON object is set aside as "<name>.unreadable" before the first change would
/// overwrite it.
class JsonPreferenceStore final : public QObject, public PreferenceStore {
 public:
    JsonPreferenceStore(QString path, DiagnosticLog& log);

    [[nodiscard]] QJsonValue value(const QString& key) const override;
    void setValue(const QString& key, const QJsonValue& value) override;
    [[nodiscard]] Handle subscribe(std::function<void(const QString& key)> changed) override {
        return changed_.subscribe(std::move(changed));
    }

 private:
    void makeFolder() const;
    void watch();
    /// Reads the file anew and tells of every key that differs.
    void follow();
    [[nodiscard]] std::optional<QJsonObject> read();
    void replace(const QJsonObject& fresh);
    void write();

    QString path_;
    DiagnosticLog& log_;
    mutable std::mutex mutex_;
    QJsonObject values_;
    bool isUnreadable_ = false;
    QFileSystemWatcher watcher_;
    Signal<QString> changed_;
};

} // namespace lorvane
