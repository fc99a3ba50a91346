// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Task.h"
#include "platform/linux/clipboard/DataControlDevice.h"
#include "platform/linux/clipboard/OwnedSelection.h"
#include "platform/linux/clipboard/PipeTransfer.h"

#include <optional>

namespace lorvane {

/// One of the compositor's clipboards: reads it while it is another program's and serves it while it is ours.
///
/// The compositor does not tell who asks, so a lent text is held back until the keys go out. Main thread.
class ControlledSelection final : public OwnedSelection {
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

    void take(ClipboardOffer offer) override;
    void replace(ClipboardOffer offer) override;
    void release() override;

 private:
    [[nodiscard]] bool mayReplace() const { return isOwned_ || readAt_ == changes_; }
    QCoro::Task<Read> attempt(std::shared_ptr<ForeignOffer> offer, QStringList types, qsizetype mostBytes,
                              Instant end, TaskScope scope);
    /// The compositor has told everything that it had to tell; false when it does not answer.
    QCoro::Task<bool> caughtUp(TaskScope scope);
    void send(const QString& type, FileDescriptor end);

    WaylandConnection& connection_;
    DataControlDevice& device_;
    PipeWriters& writers_;
    Clock& clock_;
    WaylandSelection selection_;
    std::uint32_t changes_ = 0;
    std::optional<std::uint32_t> readAt_;
    Handle changing_;
    Handle watch_;
};

} // namespace lorvane
