// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/Pasteboard.h"
#include "platform/linux/clipboard/ControlledSelection.h"
#include "platform/linux/wayland/WaylandSeat.h"

#include <memory>

namespace lorvane {

/// The clipboard of a compositor that lets a program without the focus control it. Main thread.
class DataControlPasteboard final : public Pasteboard {
 public:
    /// Null when the compositor does not offer it. The connection knows its globals already.
    [[nodiscard]] static std::unique_ptr<DataControlPasteboard> open(WaylandConnection& connection,
                                                                     const WaylandSeat& seat, Clock& clock);
    ~DataControlPasteboard() override;

    QCoro::Task<PasteboardSnapshot> snapshot(TaskScope scope) override;
    QCoro::Task<std::optional<QString>> string(TaskScope scope) override;
    void setString(const QString& text) override;
    void lend(PasteboardLoan loan) override;
    [[nodiscard]] LoanState loanState() const override;
    void restore(const PasteboardSnapshot& snapshot) override;

    /// The keys that paste go out now: from here on whoever asks is served the lent text.
    void keysGoOut();

 private:
    DataControlPasteboard(WaylandConnection& connection, std::unique_ptr<DataControlDevice> device,
                          Clock& clock);
    QCoro::Task<void> rememberPrimary(TaskScope scope);
    void returnPrimary();

    std::unique_ptr<DataControlDevice> device_;
    PipeWriters writers_;
    ControlledSelection clipboard_;
    ControlledSelection primary_;
    /// The order of the types of the last snapshot.
    ClipboardContent form_;
    /// What the selection of the middle mouse button held when the last snapshot was taken; absent when it
    /// could not be read.
    std::optional<ClipboardContent> primaryBefore_;
    bool isPrimaryLent_ = false;
};

} // namespace lorvane
