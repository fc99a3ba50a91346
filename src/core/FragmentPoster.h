// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Task.h"
#include "input/FieldAccess.h"
#include "input/Workspace.h"

#include <QString>

namespace lorvane {

/// Where a fragment of text has to go.
struct PostingTarget {
    RunningApplication application;
    /// The field that has the keyboard.
    FieldElement element;
    /// Where the caret is believed to be, in UTF-16 units: the text comes in there.
    qint64 caret = 0;
};

enum class PostOutcome {
    posted,  ///< the application said yes, or the keys went out; whether the text stands there is read back
    refused, ///< nothing was posted, and nothing will come
    unknown, ///< it may be carried out later, when the application answers again
};

/// One way of putting text into a field of another application, a fragment at a time. Lives as long as the
/// program; nothing is made anew for a text. Main thread.
class FragmentPoster {
 public:
    virtual ~FragmentPoster() = default;

    /// For the log.
    [[nodiscard]] virtual QString name() const = 0;
    /// A line feed or a tab lands as text. False where it is the key: there it may send, or leave the field.
    [[nodiscard]] virtual bool takesLineBreaks() const = 0;
    /// `posted` is the application's own word that it is done, and not only that the text is on its way.
    [[nodiscard]] virtual bool tellsWhenDone() const { return false; }
    /// Whether that field may be tried at all. Waits at most 150 ms.
    virtual QCoro::Task<bool> canPost(PostingTarget target, TaskScope scope) = 0;
    /// At most 12 UTF-16 units of whole characters without control characters, but for those that
    /// `takesLineBreaks` allows. Returns when the text is on its way.
    virtual QCoro::Task<PostOutcome> post(PostingTarget target, QString text, TaskScope scope) = 0;
    /// The typing of a take is over: what was changed for it is put back. Everything that was posted has been
    /// read back by then, or been given up.
    virtual void finish() = 0;
};

} // namespace lorvane
