// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Task.h"
#include "input/Workspace.h"

#include <QByteArray>
#include <QList>
#include <QMap>
#include <QString>

#include <optional>

namespace lorvane {

/// What the clipboard held: for each item its types and their bytes. Types without data are left out.
struct PasteboardSnapshot {
    QList<QMap<QString, QByteArray>> items;
    /// False when the clipboard has an owner that did not answer: nothing true can be put back.
    bool readable = true;
};

/// A text on the clipboard for one paste only.
struct PasteboardLoan {
    QString text;
    /// The only process that is served the text; everyone else is served `previous`. A requestor whose
    /// process cannot be told is served the text. 0 when it is not known: then everyone is served, and
    /// counts as the target. Everyone is served as well when `previous` could not be read. Where the system
    /// never tells who asks, everyone is served `previous` until the keys that paste go out.
    ProcessId target = 0;
    PasteboardSnapshot previous;
    /// Lend the selection of the middle mouse button as well, and give it back with the clipboard.
    bool primaryToo = false;
};

/// How far a loan has come.
struct LoanState {
    /// The target has asked for the text since it was lent; questions about the types alone do not count.
    std::optional<Instant> lastRequest;
    /// Another program has taken the clipboard since it was last lent, set or restored here.
    bool lost = false;
};

/// The general clipboard of the desktop. Main thread; a read waits at most 0.5 s in all for an owner that
/// hangs.
class Pasteboard {
 public:
    virtual ~Pasteboard() = default;

    virtual QCoro::Task<PasteboardSnapshot> snapshot(TaskScope scope) = 0;
    /// The text, or nothing when the clipboard holds none.
    virtual QCoro::Task<std::optional<QString>> string(TaskScope scope) = 0;
    /// Replaces the content for good.
    virtual void setString(const QString& text) = 0;
    /// Replaces the content with a borrowed text, marked for clipboard histories to skip, until `restore` or
    /// until another program takes the clipboard.
    virtual void lend(PasteboardLoan loan) = 0;
    [[nodiscard]] virtual LoanState loanState() const = 0;
    /// Puts a snapshot back, all items in one step; an empty one clears the clipboard, and for one that was
    /// not readable a lent text stays, for everyone. Ends a loan. Does nothing when another program has taken
    /// the clipboard, unless its text has been read with `string` since.
    virtual void restore(const PasteboardSnapshot& snapshot) = 0;
};

} // namespace lorvane
