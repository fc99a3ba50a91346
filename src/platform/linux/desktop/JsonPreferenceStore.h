// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/DiagnosticLog.h"
#include "base/Preferences.h"
#include "base/Signal.h"

#include <QFileSystemWatcher>
#include <QJsonObject>

#include <mutex>

namespace lorvane {

/// Preferences as one JSON object in a file of mode 0600 in a folder of mode 0700.
///
/// A value is on the disk when `setValue` returns: preferences change seldom and by hand, and a token that a
/// crash forgets would cost a registration. The file is replaced as a whole, never written in place. Edits
/// from outside are taken over when the file changes and, at the latest, right before the next write, so
/// neither side loses keys. A file that cannot be read as one JSON object changes nothing while the program
/// runs; at the start and before a write it is set aside as "preferences.json.unreadable" (with a number when
/// that name is taken) and a log line says so. A file that vanishes while the program runs changes nothing.
class JsonPreferenceStore final : public PreferenceStore {
 public:
    /// `configFolder`: the folder of per-user settings; the file is Tirra/preferences.json below it.
    JsonPreferenceStore(const QString& configFolder, DiagnosticLog& log);

    [[nodiscard]] QJsonValue value(const QString& key) const override;
    void setValue(const QString& key, const QJsonValue& value) override;
    [[nodiscard]] Handle subscribe(std::function<void(const QString& key)> changed) override;

    [[nodiscard]] const QString& filePath() const { return filePath_; }

 private:
    enum class Content { asKnown, readable, unreadable, absent };
    Content readFile(QJsonObject& found);
    void takeOver(const QJsonObject& found);
    void setAside();
    void save();
    void watch();
    void reload();

    QString folder_;
    QString filePath_;
    DiagnosticLog& log_;
    mutable std::mutex mutex_;
    QJsonObject values_;
    QByteArray onDisk_;
    Signal<QString> changed_;
    QFileSystemWatcher watcher_;
};

} // namespace lorvane
