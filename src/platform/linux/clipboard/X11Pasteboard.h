// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Clock.h"
#include "core/Pasteboard.h"
#include "platform/linux/clipboard/ClipboardLoans.h"
#include "platform/linux/clipboard/IncrementalSender.h"
#include "platform/linux/clipboard/ReadingWindows.h"
#include "platform/linux/clipboard/SelectionOwner.h"
#include "platform/linux/clipboard/SelectionReader.h"
#include "platform/linux/clipboard/XcbConnection.h"

#include <memory>
#include <optional>

namespace lorvane {

/// The clipboard of an X11 desktop, over a connection of its own. Owned by this program, it is answered by
/// requestor, so that a borrowed text is seen by the process it was lent to and by nobody else;
/// docs/clipboard.md tells why and what is decided where. Main thread; nothing here waits for another program
/// inside a call, except the destructor.
class X11Pasteboard final : public Pasteboard {
 public:
    /// Null without an X server.
    [[nodiscard]] static std::unique_ptr<X11Pasteboard> open(Clock& clock);
    /// Ends a loan and leaves what is on the clipboard to the desktop's clipboard manager, if there is one;
    /// waits at most one second for it.
    ~X11Pasteboard() override;

    /// A content of at most 64 MB, all types together. What this program offers itself is answered from
    /// memory.
    QCoro::Task<PasteboardSnapshot> snapshot(TaskScope scope) override;
    QCoro::Task<std::optional<QString>> string(TaskScope scope) override;
    /// Ends a loan; the middle mouse button keeps a borrowed text when it is this very text.
    void setString(const QString& text) override { loans_.setString(text); }
    /// The selection of the middle mouse button is given back as it was at the time of the last `snapshot`.
    void lend(PasteboardLoan loan) override;
    /// For a target that others ask on behalf of: until `keysGoOut` everyone is served the old text, then the
    /// lent one.
    void lendToAll(PasteboardLoan loan);
    void keysGoOut() { loans_.keysGoOut(); }
    [[nodiscard]] LoanState loanState() const override { return loans_.state(); }
    /// A copy that another program has made meanwhile stays, unless `string` has read it: then the caller
    /// knows what it replaces. An unreadable snapshot leaves the text of a loan to everyone.
    void restore(const PasteboardSnapshot& snapshot) override { loans_.restore(snapshot); }

 private:
    X11Pasteboard(std::unique_ptr<XcbConnection> connection, Clock& clock);
    void rememberPrimary();
    QCoro::Task<void> readPrimary(TaskScope scope);
    void handOver();

    std::unique_ptr<XcbConnection> connection_;
    Clock& clock_;
    IncrementalSender sender_;
    ReadingWindows windows_;
    SelectionOwner clipboard_;
    SelectionOwner primary_;
    SelectionReader clipboardReader_;
    SelectionReader primaryReader_;
    ClipboardLoans loans_{clipboard_, primary_};
    Completion<bool> primaryDone_;
    TaskHandle primaryRead_;
};

} // namespace lorvane
