// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Task.h"
#include "platform/linux/clipboard/ClipboardOffer.h"
#include "platform/linux/clipboard/DataControlDevice.h"
#include "platform/linux/clipboard/PipeTransfer.h"

#include <optional>

namespace lorvane {

/// One of the compositor's clipboards: reads it while it is another program's and serves it while it is ours.
///
/// The compositor does not tell who asks. A lent text is therefore told apart by time: until `keysGoOut`
/// whoever asks is served what was there before, since a program that keeps a history asks at once when the
/// owner changes; from then on the text. The types that are offered are those of the text throughout, because
/// a change of them would be another copy in the eyes of all. Main thread.
class ControlledSelection {
 public:
    ControlledSelection(WaylandConnection& connection, DataControlDevice& device, PipeWriters& writers,
                        Clock& clock, WaylandSelection selection);
    ControlledSelection(const ControlledSelection&) = delete;
    ControlledSelection& operator=(const ControlledSelection&) = delete;

    struct Read {
        ClipboardContent content;
        bool readable = true;
    };
    /// An owner that is silent for 0.5 s is given up; one that goes on answering has 3 s in all, or
    /// `patience`.
    QCoro::Task<Read> readAll(qsizetype mostBytes, Duration patience, TaskScope scope);
    /// The text alone; what was read with it may be replaced from then on.
    QCoro::Task<std::optional<QString>> readText(qsizetype mostBytes, TaskScope scope);

    /// Takes the clipboard from whoever has it.
    void take(ClipboardOffer offer);
    /// Offers something else, or nothing (`release`), unless another program has taken the clipboard, even
    /// when that news is still on its way.
    void replace(ClipboardOffer offer);
    void release();
    void keysGoOut() { keysWentOut_ = true; }

    [[nodiscard]] bool isOwned() const { return isOwned_; }
    [[nodiscard]] bool isLost() const { return isLost_; }
    [[nodiscard]] const ClipboardOffer& offer() const { return offer_; }
    [[nodiscard]] std::optional<Instant> lastRequest() const { return lastRequest_; }

 private:
    [[nodiscard]] bool mayReplace() const { return isOwned_ || readAt_ == changes_; }
    QCoro::Task<Read> attempt(std::shared_ptr<ForeignOffer> offer, QStringList types, qsizetype mostBytes,
                              Instant end, TaskScope scope);
    /// The compositor has told everything that it had to tell; false when it does not answer.
    QCoro::Task<bool> caughtUp(TaskScope scope);
    void send(const QString& type, FileDescriptor end);
    [[nodiscard]] std::optional<ProcessId> assumedRequestor() const;

    WaylandConnection& connection_;
    DataControlDevice& device_;
    PipeWriters& writers_;
    Clock& clock_;
    WaylandSelection selection_;
    ClipboardOffer offer_;
    bool keysWentOut_ = false;
    bool isOwned_ = false;
    bool isLost_ = false;
    std::uint32_t changes_ = 0;
    std::optional<std::uint32_t> readAt_;
    std::optional<Instant> lastRequest_;
    Handle changing_;
    Handle watch_;
};

} // namespace lorvane
