// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Clock.h"
#include "base/Task.h"
#include "platform/linux/clipboard/FileDescriptor.h"

#include <QByteArray>

#include <list>
#include <memory>
#include <optional>

class QSocketNotifier;

namespace lorvane {

/// A pipe whose ends do not block; not open when the system has none left.
struct Pipe {
    FileDescriptor readEnd;
    FileDescriptor writeEnd;
};
[[nodiscard]] Pipe makePipe();

/// How long a read may take and how much it may bring.
struct ReadLimits {
    /// Without a byte.
    Duration silence;
    Instant end;
    qsizetype mostBytes = 0;
};

/// Everything up to the end of a pipe; absent when a limit was met first.
[[nodiscard]] QCoro::Task<std::optional<QByteArray>>
readPipe(std::shared_ptr<FileDescriptor> end, Clock& clock, ReadLimits limits, TaskScope scope);

/// Writes contents into pipes of others as fast as they read. At most 64 at a time, each given up when its
/// reader has taken nothing for 5 s. SIGPIPE is to be ignored by the process. Main thread.
class PipeWriters {
 public:
    explicit PipeWriters(Clock& clock);
    ~PipeWriters();
    PipeWriters(const PipeWriters&) = delete;
    PipeWriters& operator=(const PipeWriters&) = delete;

    /// Shares the bytes. Closes the pipe when they are written.
    void write(FileDescriptor end, QByteArray bytes);
    [[nodiscard]] bool isIdle() const { return transfers_.empty(); }

 private:
    struct Transfer;
    using Transfers = std::list<std::unique_ptr<Transfer>>;
    /// False when it is over.
    bool advance(Transfer& transfer);
    void drop(const Transfer* transfer);

    Clock& clock_;
    Transfers transfers_;
};

} // namespace lorvane
