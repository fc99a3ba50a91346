// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Foundation.h"
#include "base/Task.h"
#include "core/ArmedField.h"
#include "core/FragmentTyping.h"
#include "core/TextInsertion.h"
#include "input/Accessibility.h"
#include "input/Workspace.h"

#include <QString>

#include <memory>
#include <vector>

namespace lorvane {

/// How the final text stands to what was typed while it streamed.
enum class SettleOutcome {
    landed,   ///< the field holds the text
    paste,    ///< nothing of it is in the field
    handOver, ///< the field holds something that could not be taken back
};

/// What live typing needs of the desktop.
struct TypingDesktop {
    Workspace& workspace;
    Accessibility& accessibility;
    FieldAccess& fields;
    EditingKeys& keys;
    /// The ways of posting text, best first.
    std::vector<FragmentPoster*> posters;
};

/// Types a take's text into the focused field while it streams, in a closed loop: a few characters are
/// posted, and the field is read back until the caret stands where the count says. What does not keep up gets
/// the rest pasted; what turns out wrong is taken back; what cannot be taken back is left, and the text is
/// the user's to paste. Nothing here fails to its caller. Main thread.
///
/// A step that has begun is not cut short by a cancellation of its task, since the field would be left half
/// done.
class LiveTyping {
 public:
    LiveTyping(const Foundation& foundation, TypingDesktop desktop, TextInsertion& insertion);
    LiveTyping(const LiveTyping&) = delete;
    LiveTyping& operator=(const LiveTyping&) = delete;

    /// At the start of each attempt: aims at the field that has the focus, or logs why not.
    QCoro::Task<void> armTyping(TaskScope scope);
    /// One fragment of the stream. Returns when it stands in the field, or at once when typing is not armed.
    QCoro::Task<void> typeLive(QString fragment, TaskScope scope);
    /// The final text, without blanks at its ends.
    QCoro::Task<SettleOutcome> settleTyping(QString text, TaskScope scope);
    /// Takes back what was typed. True when the field is as it was.
    QCoro::Task<bool> abandonTyping(QString reason, TaskScope scope);
    /// The take is over: what typing has borrowed of the desktop is put back soon.
    void endTyping();

    [[nodiscard]] const TypingAttempt& attempt() const { return *attempt_; }

 private:
    using Attempt = std::shared_ptr<TypingAttempt>;

    QCoro::Task<void> aim(Attempt attempt, RunningApplication front, TaskScope scope);
    QCoro::Task<TypedFragment> typeFragment(Attempt attempt, QString text, TaskScope scope);
    QCoro::Task<void> typeFailed(Attempt attempt, TypedFragment typed, QString fragment, TaskScope scope);
    QCoro::Task<Arrival> awaitCaret(Attempt attempt, qint64 expected, FragmentTyping::Post post,
                                    TaskScope scope);
    QCoro::Task<Arrival> catchUp(Attempt attempt, ArrivalWatch watch, qint64 expected, TaskScope scope);
    QCoro::Task<SettleOutcome> confirm(Attempt attempt, TaskScope scope);
    QCoro::Task<SettleOutcome> typeRest(Attempt attempt, QString text, QString rest, TaskScope scope);
    QCoro::Task<SettleOutcome> pasteRest(Attempt attempt, QString rest, TaskScope scope);
    QCoro::Task<bool> abandon(Attempt attempt, QString reason, TaskScope scope);

    [[nodiscard]] QString frontmostName() const;
    void rememberItCannotKeepUp();
    void log(const QString& line) { foundation_.log.diagLog(line); }

    const Foundation foundation_;
    TypingDesktop desktop_;
    TextInsertion& insertion_;
    ArmedField field_;
    FragmentTyping fragments_;
    Attempt attempt_ = std::make_shared<TypingAttempt>();
    /// Text that is being taken back now.
    int takingBack_ = 0;
    Handle finishLater_;
};

} // namespace lorvane
