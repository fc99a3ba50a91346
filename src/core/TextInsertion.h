// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Foundation.h"
#include "base/Task.h"
#include "core/PasteKeys.h"
#include "core/PasteWatch.h"
#include "core/Pasteboard.h"
#include "input/FieldAccess.h"
#include "input/Workspace.h"

#include <QString>

#include <functional>
#include <memory>
#include <optional>
#include <utility>

namespace lorvane {

struct PasteOutcome {
    enum class Kind {
        ok,     ///< the keys were posted, or nobody can tell that they were not
        secure, ///< a password field has the keyboard; nothing was done
        failed, ///< the keys could not be made, or showed no effect although nobody confirms them
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

    /// The next text has come whole; from here on its way is measured, for the log.
    void answered() { answered_ = clock_.now(); }
    /// The text of `answered` stands in its field without a paste; logged once, and not after a paste.
    void typed();

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
        /// What became of the keys.
        KeysOutcome keys = KeysOutcome::notPosted;
        /// The field before; nothing when it cannot be read.
        std::optional<PasteWatch::Before> field;
        PasteSight sight = PasteSight::unclear;
        std::optional<Instant> answered;
    };

    [[nodiscard]] RunningApplication frontmost() const;
    void lend(const Loan& loan);
    QCoro::Task<void> postKeys(std::shared_ptr<Loan> loan, TaskScope scope);
    /// The keys go to whoever is in front now, and it must find the text and not the old content.
    PasteRoute aim(const std::shared_ptr<Loan>& loan);
    [[nodiscard]] bool isAskedFor(const Loan& loan) const;
    [[nodiscard]] PasteOutcome outcomeOf(const Loan& loan) const;
    void logLanding(const Loan& loan, Instant landed, const QString& remark);
    QCoro::Task<void> lookAtField(std::shared_ptr<Loan> loan, Duration patience, TaskScope scope);
    QCoro::Task<void> giveBack(std::shared_ptr<Loan> loan, TaskScope scope);
    QCoro::Task<void> waitForQuiet(TaskScope scope);
    [[nodiscard]] bool isOver(const Loan& loan);
    void settle(const Loan& loan);
    void leave(const Loan& loan);

    Clock& clock_;
    DiagnosticLog& log_;
    Pasteboard& pasteboard_;
    PasteKeys& keys_;
    FieldAccess& fields_;
    Workspace& workspace_;
    PasteWatch watch_;
    std::optional<Instant> answered_;
    /// The newest loan that is still out.
    std::shared_ptr<Loan> current_;
    TaskGroup returns_;
};

} // namespace lorvane
