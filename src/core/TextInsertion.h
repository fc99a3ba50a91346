// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Foundation.h"
#include "base/Task.h"
#include "core/PasteKeys.h"
#include "core/Pasteboard.h"
#include "input/FieldAccess.h"
#include "input/Workspace.h"

#include <QString>

#include <functional>
#include <memory>

namespace lorvane {

struct PasteOutcome {
    enum class Kind {
        ok,     ///< the keys were posted
        secure, ///< a password field has the keyboard; nothing was done
        failed, ///< the keys could not be made
    };
    Kind kind = Kind::ok;
    /// Only with `failed`.
    QString reason = {};
    friend bool operator==(const PasteOutcome&, const PasteOutcome&) = default;
};

/// Puts text into the focused field by the keys that paste. The clipboard is borrowed for that and given back
/// 1.6 s later, unless somebody has used it meanwhile. The one writer of the clipboard in the program's
/// behaviour. Main thread.
class TextInsertion {
 public:
    TextInsertion(const Foundation& foundation, Pasteboard& pasteboard, PasteKeys& keys, FieldAccess& fields,
                  Workspace& workspace);
    TextInsertion(const TextInsertion&) = delete;
    TextInsertion& operator=(const TextInsertion&) = delete;

    /// A cancellation ends it as long as the clipboard has not been touched, and nothing after that.
    QCoro::Task<PasteOutcome> pasteText(QString text, TaskScope scope);
    /// Leaves the text on the clipboard for the user; a loan that is still out is not returned any more.
    void handOver(const QString& text);

    /// The application never asked for a text that was pasted; the text was left on the clipboard.
    std::function<void()> onUnanswered;

 private:
    /// One borrowing of the clipboard.
    struct Loan {
        QString text;
        PasteboardSnapshot before;
        RunningApplication target;
        /// From when on a request for the text answers the keys.
        Instant posted;
    };

    [[nodiscard]] RunningApplication frontmost() const;
    void lend(const Loan& loan);
    QCoro::Task<bool> postKeys(std::shared_ptr<Loan> loan, TaskScope scope);
    QCoro::Task<void> giveBack(std::shared_ptr<Loan> loan, TaskScope scope);
    QCoro::Task<void> waitForQuiet(TaskScope scope);
    [[nodiscard]] bool isOver(const Loan& loan);
    void settle(const Loan& loan);

    Clock& clock_;
    DiagnosticLog& log_;
    Pasteboard& pasteboard_;
    PasteKeys& keys_;
    FieldAccess& fields_;
    Workspace& workspace_;
    /// The newest loan that is still out.
    std::shared_ptr<Loan> current_;
    TaskGroup returns_;
};

} // namespace lorvane
