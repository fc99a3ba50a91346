// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/Pasteboard.h"
#include "platform/linux/clipboard/X11Pasteboard.h"

#include <memory>

namespace lorvane {

/// The clipboard of a compositor by the X server beside it, which the compositor keeps equal to its own. What
/// a Wayland application asks for, the compositor asks for on its behalf, so such a loan is for everyone from
/// the keys on. Before them the compositor gets the old text: it makes a copy at each change, and its own
/// programs that keep a history ask then.
class XWaylandPasteboard final : public Pasteboard {
 public:
    /// Null without an X display. `ofX`: who is in front among the windows of the X server.
    [[nodiscard]] static std::unique_ptr<XWaylandPasteboard> open(Clock& clock, const Workspace& ofX);

    QCoro::Task<PasteboardSnapshot> snapshot(TaskScope scope) override {
        return inner_->snapshot(std::move(scope));
    }
    QCoro::Task<std::optional<QString>> string(TaskScope scope) override {
        return inner_->string(std::move(scope));
    }
    void setString(const QString& text) override { inner_->setString(text); }
    void lend(PasteboardLoan loan) override;
    void keysGoOut() { inner_->keysGoOut(); }
    [[nodiscard]] LoanState loanState() const override { return inner_->loanState(); }
    void restore(const PasteboardSnapshot& snapshot) override { inner_->restore(snapshot); }

 private:
    XWaylandPasteboard(std::unique_ptr<X11Pasteboard> inner, const Workspace& ofX)
        : inner_(std::move(inner)), ofX_(ofX) {}

    std::unique_ptr<X11Pasteboard> inner_;
    const Workspace& ofX_;
};

} // namespace lorvane
