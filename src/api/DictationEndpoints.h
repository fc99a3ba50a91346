// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "api/Failure.h"
#include "base/Result.h"
#include "base/Task.h"

#include <QByteArray>
#include <QString>

#include <functional>
#include <optional>
#include <variant>

namespace lorvane {

struct DailyGoal {
    int phoneWords = 0;
    int goal = 0;
    bool met = false;
    int streak = 0;
    friend bool operator==(const DailyGoal&, const DailyGoal&) = default;
};

/// The result of a dictation.
struct DictationResponse {
    QString text;
    QString raw;
    std::optional<QString> original;
    std::optional<QString> category;
    std::optional<DailyGoal> goal;
    friend bool operator==(const DictationResponse&, const DictationResponse&) = default;
};

/// One take as it goes to the backend.
struct DictationRequest {
    QByteArray audio;
    QString ext;
    std::optional<QString> translate;
    std::optional<QString> takeID;
    QString prefix;
    bool allowRetry = true;
};

/// A failure of the connection, kept apart from what the backend said.
struct TransportError {
    QString description;
    friend bool operator==(const TransportError&, const TransportError&) = default;
};

using DictationError = std::variant<Failure, TransportError>;
using DictationResult = Result<DictationResponse, DictationError>;
/// Awaited for each fragment, in order; the next line is read only when it has returned.
using DeltaConsumer = std::function<QCoro::Task<void>(QString text)>;

/// The three calls that carry audio. Main thread; a scope that ends closes the connection and throws
/// TaskCancelled.
class DictationEndpoints {
 public:
    virtual ~DictationEndpoints() = default;
    virtual QCoro::Task<DictationResult> dictateStream(DictationRequest request, DeltaConsumer onDelta,
                                                       TaskScope scope) = 0;
    virtual QCoro::Task<DictationResult> dictate(DictationRequest request, TaskScope scope) = 0;
    /// Nothing on any failure.
    virtual QCoro::Task<std::optional<QString>> transcribePart(QByteArray audio, QString ext, QString context,
                                                               TaskScope scope) = 0;
};

} // namespace lorvane
