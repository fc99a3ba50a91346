// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "api/DictationEndpoints.h"
#include "base/Foundation.h"
#include "core/TakeCapture.h"
#include "core/TakeJournal.h"

#include <QJsonObject>
#include <QString>

namespace lorvane {

/// Takes that the end of their process has left without a text, each a file of its own in a folder, readable
/// by the user alone. Whoever finds them has them recognised and puts the text into the history. Main thread.
class UnsentTakes {
 public:
    UnsentTakes(const Foundation& foundation, QString folder)
        : foundation_(foundation), folder_(std::move(folder)) {}

    /// $XDG_DATA_HOME/Tirra/unsent
    [[nodiscard]] static QString standardFolder();

    /// Writes the file at once; false when it could not be written or the take holds nothing.
    bool keep(const FinishedTake& take) const;
    [[nodiscard]] bool isEmpty() const;
    /// Sends each to the backend, the eldest first, but for those that another process has in hand. One that
    /// yields no text, or is no take, goes away; one that the backend did not answer stays for the next time.
    QCoro::Task<void> deliver(DictationEndpoints& endpoints, TakeJournal& journal, TaskScope scope) const;

 private:
    [[nodiscard]] QStringList files() const;
    QCoro::Task<bool> deliverOne(QJsonObject kept, DictationEndpoints& endpoints, TakeJournal& journal,
                                 TaskScope scope) const;

    const Foundation foundation_;
    QString folder_;
};

} // namespace lorvane
