// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/setup/SetupPlan.h"
#include "app/setup/SetupWorld.h"

#include <QJsonArray>

namespace lorvane {

/// Carries plans out and takes them back. Before anything is changed, what was there is written to a journal;
/// undoing gives each file back byte for byte, or, when somebody else has changed it since, takes only our
/// own part out of it.
class SetupRunner {
 public:
    /// `journal`: the file that remembers; one for each topic.
    SetupRunner(SetupWorld& world, QString journal) : world_(world), journal_(std::move(journal)) {}

    /// The problems, in order; none when all was done. What was done before a problem stays and can be
    /// undone.
    QStringList apply(const SetupPlan& plan);
    /// The files that could not be given back; with none, everything is as it was and the journal is gone.
    QStringList undo();
    [[nodiscard]] bool hasAnythingToUndo() const;

 private:
    void applyKey(const SetupKey& key);
    void placeShellExtension(bool wanted);
    void replace(const QString& path, const QByteArray& content, QJsonObject note);
    [[nodiscard]] bool note(const QJsonObject& done);
    void undoFile(const QJsonObject& done);
    void undoOne(const QJsonObject& done);
    void refresh(const std::vector<QStringList>& commands);
    void refuse(const QString& path, const QString& reason);
    [[nodiscard]] Result<QJsonArray, QString> journal() const;

    SetupWorld& world_;
    QString journal_;
    QStringList problems_;
};

} // namespace lorvane
