// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/Pasteboard.h"
#include "platform/linux/clipboard/ClipboardLoans.h"
#include "platform/linux/clipboard/ControlledSelection.h"
#include "platform/linux/wayland/WaylandSeat.h"

#include <memory>

namespace lorvane {

/// The clipboard of a compositor that lets a program without the focus control it. Main thread.
class DataControlPasteboard final : public Pasteboard {
 public:
    /// Null when the compositor does not offer it. The connection knows its globals already.
    [[nodiscard]] static std::unique_ptr<DataControlPasteboard> open(WaylandConnection& connection,
                                                                     WaylandSeat& seat, Clock& clock);
    ~DataControlPasteboard() override;

    QCoro::Task<PasteboardSnapshot> snapshot(TaskScope scope) override;
    QCoro::Task<std::optional<QString>> string(TaskScope scope) override;
    void setString(const QString& text) override { loans_.setString(text); }
    void lend(PasteboardLoan loan) override;
    [[nodiscard]] LoanState loanState() const override { return loans_.state(); }
    void restore(const PasteboardSnapshot& snapshot) override { loans_.restore(snapshot); }

    /// The keys that paste go out now: from here on whoever asks is served the lent text.
    void keysGoOut() { loans_.keysGoOut(); }

 private:
    DataControlPasteboard(WaylandConnection& connection, std::unique_ptr<DataControlDevice> device,
                          Clock& clock);
    QCoro::Task<void> rememberPrimary(TaskScope scope);

    std::unique_ptr<DataControlDevice> device_;
    PipeWriters writers_;
    ControlledSelection clipboard_;
    ControlledSelection primary_;
    ClipboardLoans loans_{clipboard_, primary_};
};

} // namespace lorvane
