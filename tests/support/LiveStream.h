// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "support/ScriptedBackend.h"

#include <QtCore/QStringList>

namespace lorvane {

/// The lines of a take's stream.
namespace streamLine {
QByteArray delta(const QString& text);
QByteArray done(const QString& text);
} // namespace streamLine

/// The stream of a take that a test feeds while it watches what becomes of it.
class LiveStream {
 public:
    LiveStream();

    /// What the backend is scripted with; for one request.
    [[nodiscard]] ScriptedReply reply() const;
    void say(const QString& delta);
    void say(const QStringList& deltas);
    /// The last line, with the whole text.
    void finish(const QString& text);
    /// The connection ends without a last line.
    void breakOff();
    /// When the last line was handed to the socket.
    [[nodiscard]] std::optional<std::chrono::steady_clock::time_point> finishedAt() const;

 private:
    struct Lines;
    std::shared_ptr<Lines> lines_;
};

} // namespace lorvane
