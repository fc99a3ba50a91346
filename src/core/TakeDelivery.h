// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "api/DictationEndpoints.h"
#include "base/Foundation.h"
#include "core/DictationStatus.h"
#include "core/TakeCapture.h"
#include "core/TakeJournal.h"
#include "core/TextLanding.h"
#include "input/Workspace.h"

#include <memory>

namespace lorvane {

/// Carries a finished take to the backend and its text to the user and the journal. Every outcome becomes a
/// phase; a cancelled delivery shows nothing. Main thread.
class TakeDelivery {
 public:
    TakeDelivery(const Foundation& foundation, DictationEndpoints& endpoints, DictationStatus& status,
                 TextLanding& landing, TakeJournal& journal, Workspace& workspace);
    TakeDelivery(const TakeDelivery&) = delete;
    TakeDelivery& operator=(const TakeDelivery&) = delete;

    /// `attempt` counts from 0; the backend's own failures are tried three times in all.
    QCoro::Task<void> deliverTake(FinishedTake take, int attempt, TaskScope scope);
    /// Takes back what a cancelled delivery has typed.
    QCoro::Task<void> abandonTyping(QString reason, TaskScope scope);
    /// The take is over, however it ended.
    void endTyping() { landing_.typing().endTyping(); }
    /// The take that is under way to its text, as the backend was sent it; null when none is.
    [[nodiscard]] std::shared_ptr<const FinishedTake> underWay() const { return underWay_.lock(); }
    /// Leaves a text on the clipboard.
    void copy(const QString& text) { landing_.copy(text); }

 private:
    [[nodiscard]] DictationRequest requestFor(const FinishedTake& take);
    QCoro::Task<DictationResult> send(DictationRequest request, TaskScope scope);
    QCoro::Task<void> succeed(DictationResponse response, double seconds, TaskScope scope);
    void fail(const DictationError& error);
    void record(const QString& text, const DictationResponse& response, double seconds,
                const QString& application);

    const Foundation foundation_;
    DictationEndpoints& endpoints_;
    DictationStatus& status_;
    TextLanding& landing_;
    TakeJournal& journal_;
    Workspace& workspace_;
    /// Owned by the delivery itself, so that it is over with it.
    std::weak_ptr<const FinishedTake> underWay_;
};

} // namespace lorvane
