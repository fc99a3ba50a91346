// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Clock.h"
#include "base/SerialQueue.h"

#include <QString>

#include <functional>
#include <optional>

namespace lorvane {

/// The one log: finished lines with a bracketed tag at their head, to the console and to a small append-only
/// file. Any thread; never fails and never blocks on the file.
class DiagnosticLog {
 public:
    using Console = std::function<void(const QString& line)>;

    /// `stateFolder`: the folder of per-user state; the file is Logs/Tirra/tirra.log below it. Absent:
    /// console only.
    DiagnosticLog(const Clock& clock, const std::optional<QString>& stateFolder, Console console = {});

    /// To the console and the file.
    void diagLog(const QString& message);
    /// To the console alone.
    void consoleLog(const QString& message) const;
    /// Where the lines go; empty when there is no file.
    [[nodiscard]] const QString& filePath() const { return filePath_; }
    /// Blocks until every line handed over so far was written.
    void drain() { queue_.drain(); }

 private:
    const Clock& clock_;
    Console console_;
    QString filePath_;
    SerialQueue queue_;
};

} // namespace lorvane
