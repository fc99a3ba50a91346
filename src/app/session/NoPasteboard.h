// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/DiagnosticLog.h"
#include "core/Pasteboard.h"

namespace lorvane {

/// Where the session gives no clipboard to a program without the focus. Nothing is read and nothing arrives;
/// the log says so each time.
class NoPasteboard final : public Pasteboard {
 public:
    explicit NoPasteboard(DiagnosticLog& log) : log_(log) {}

    QCoro::Task<PasteboardSnapshot> snapshot(TaskScope scope) override;
    QCoro::Task<std::optional<QString>> string(TaskScope scope) override;
    void setString(const QString& text) override;
    void lend(PasteboardLoan loan) override;
    [[nodiscard]] LoanState loanState() const override { return {std::nullopt, true}; }
    void restore(const PasteboardSnapshot& snapshot) override;

 private:
    DiagnosticLog& log_;
};

} // namespace lorvane
