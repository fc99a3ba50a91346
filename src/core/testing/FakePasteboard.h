// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Clock.h"
#include "core/Pasteboard.h"

#include <vector>

namespace lorvane {

/// A clipboard with the applications around it, in memory. A text is the type "text/plain;charset=utf-8".
class FakePasteboard final : public Pasteboard {
 public:
    static inline const QString textType = QStringLiteral("text/plain;charset=utf-8");

    explicit FakePasteboard(Clock& clock) : clock_(clock) {}

    QCoro::Task<PasteboardSnapshot> snapshot(TaskScope scope) override;
    QCoro::Task<std::optional<QString>> string(TaskScope scope) override;
    void setString(const QString& text) override;
    void lend(PasteboardLoan loan) override;
    [[nodiscard]] LoanState loanState() const override;
    void restore(const PasteboardSnapshot& snapshot) override;

    /// Another program takes the clipboard.
    void copyElsewhere(const PasteboardSnapshot& content);
    void copyElsewhere(const QString& text) { copyElsewhere(snapshotOfText(text)); }
    /// What a process that pastes now finds; the process that a loan is for makes its request by that.
    std::optional<QString> pasteInto(ProcessId process);
    [[nodiscard]] static PasteboardSnapshot snapshotOfText(const QString& text);

    /// The owner of the clipboard never answers, so a read of it takes 0.5 s.
    bool ownerHangs = false;
    /// Every read takes so long.
    Duration delay = Duration::zero();
    /// What is there for everyone; a loan stands in front of it for its target.
    [[nodiscard]] const QList<QMap<QString, QByteArray>>& items() const { return content_.items; }
    [[nodiscard]] std::optional<QString> text() const;
    [[nodiscard]] bool isLent() const { return loan_.has_value(); }
    std::vector<PasteboardLoan> loans;
    int writes = 0;

 private:
    void own(PasteboardSnapshot content);

    Clock& clock_;
    PasteboardSnapshot content_;
    std::optional<PasteboardLoan> loan_;
    std::optional<Instant> lastRequest_;
    bool isOwn_ = false;
    bool isLost_ = false;
    /// Another program's content has been read as text since it came.
    bool isRead_ = false;
};

} // namespace lorvane
