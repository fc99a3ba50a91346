// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Clock.h"
#include "base/Task.h"
#include "platform/linux/clipboard/ClipboardContent.h"
#include "platform/linux/clipboard/ReadingWindows.h"
#include "platform/linux/clipboard/SelectionConversion.h"
#include "platform/linux/clipboard/XcbConnection.h"

#include <optional>

namespace lorvane {

/// What a selection of another program holds. Not `readable`: it has an owner that did not answer, or more
/// than was allowed for.
struct SelectionRead {
    ClipboardContent content;
    bool readable = true;
};

/// Reads a selection from another program, one type after the other, since many owners keep only one transfer
/// at a time for each window. An owner that is silent for 0.5 s is given up; one that goes on answering has 3
/// s in all. When the selection changes in the middle, the read begins again. Main thread.
class SelectionReader {
 public:
    SelectionReader(XcbConnection& connection, ReadingWindows& windows, Clock& clock,
                    const QString& selection);

    /// Every type, up to `mostBytes` together.
    QCoro::Task<SelectionRead> readAll(qsizetype mostBytes, TaskScope scope);
    /// The text alone; nothing when there is none or the owner is silent.
    QCoro::Task<std::optional<QString>> readText(qsizetype mostBytes, TaskScope scope);

 private:
    struct Converted {
        ConversionOutcome outcome = ConversionOutcome::refused;
        TypedBytes content;
    };
    struct Progress {
        Instant end;
        qsizetype room = 0;
        std::uint32_t since = 0;
    };
    struct Attempt {
        ConversionOutcome outcome = ConversionOutcome::data;
        ClipboardContent content;
    };
    QCoro::Task<Attempt> attempt(Progress progress, TaskScope scope);
    QCoro::Task<Attempt> attemptText(Progress progress, TaskScope scope);
    QCoro::Task<Converted> convert(xcb_window_t window, QString type, Progress& progress, TaskScope scope);
    [[nodiscard]] QStringList contentTypes(const QByteArray& targets);

    XcbConnection& connection_;
    ReadingWindows& windows_;
    Clock& clock_;
    xcb_atom_t selection_;
};

} // namespace lorvane
