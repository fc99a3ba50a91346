// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "api/DictationEndpoints.h"
#include "base/Clock.h"

#include <QStringList>

#include <deque>
#include <utility>
#include <vector>

namespace lorvane {

/// A value that is there already, for a script that does not hold it back.
template <typename T>
[[nodiscard]] Completion<T> arrived(T value) {
    Completion<T> completion;
    completion.complete(std::move(value));
    return completion;
}

/// What one dictation call does: it waits for `delay`, hands over each delta once that has arrived, and ends
/// with the outcome once that has arrived. Keep a copy of a Completion to let it arrive later.
struct FakeDictation {
    Completion<DictationResult> outcome;
    std::vector<Completion<QString>> deltas;
    Duration delay = Duration::zero();
};

struct FakePart {
    Completion<std::optional<QString>> outcome;
    Duration delay = Duration::zero();
};

struct PartRequest {
    QByteArray audio;
    QString ext;
    QString context;
};

/// A backend in memory. Each call takes the next entry of its script; with none left it answers `otherwise`
/// at once. A call that a cancellation ended is counted.
class FakeDictationEndpoints final : public DictationEndpoints {
 public:
    explicit FakeDictationEndpoints(Clock& clock) : clock_(clock) {}

    QCoro::Task<DictationResult> dictateStream(DictationRequest request, DeltaConsumer onDelta,
                                               TaskScope scope) override;
    QCoro::Task<DictationResult> dictate(DictationRequest request, TaskScope scope) override;
    QCoro::Task<std::optional<QString>> transcribePart(QByteArray audio, QString ext, QString context,
                                                       TaskScope scope) override;

    static DictationResult text(const QString& finished) {
        return DictationResponse{finished, finished, {}, {}, {}};
    }
    static DictationResult failed(Failure::Kind kind, std::optional<RegistrationFailure> reason = {}) {
        return lorvane::failure(DictationError(Failure{kind, reason}));
    }
    static DictationResult dropped(const QString& description = QStringLiteral("connection lost")) {
        return lorvane::failure(DictationError(TransportError{description}));
    }
    /// An entry of a script whose outcome is known already.
    static FakeDictation answer(DictationResult outcome, const QStringList& deltas = {},
                                Duration delay = Duration::zero());

    std::deque<FakeDictation> streams;
    std::deque<FakeDictation> uploads;
    std::deque<FakePart> parts;
    DictationResult otherwise = text(QStringLiteral("text"));

    std::vector<DictationRequest> streamRequests;
    std::vector<DictationRequest> uploadRequests;
    std::vector<PartRequest> partRequests;
    int cancelledCalls = 0;

 private:
    QCoro::Task<DictationResult> play(FakeDictation script, DeltaConsumer onDelta, TaskScope scope);
    FakeDictation next(std::deque<FakeDictation>& script) const;

    Clock& clock_;
};

} // namespace lorvane
