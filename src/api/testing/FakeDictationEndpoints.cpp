// SPDX-License-Identifier: GPL-3.0-or-later
#include "api/testing/FakeDictationEndpoints.h"

namespace lorvane {

QCoro::Task<DictationResult> FakeDictationEndpoints::dictateStream(DictationRequest request,
                                                                   DeltaConsumer onDelta, TaskScope scope) {
    streamRequests.push_back(std::move(request));
    FakeDictation script = next(streams);
    co_return co_await play(std::move(script), std::move(onDelta), scope);
}

QCoro::Task<DictationResult> FakeDictationEndpoints::dictate(DictationRequest request, TaskScope scope) {
    uploadRequests.push_back(std::move(request));
    FakeDictation script = next(uploads);
    co_return co_await play(std::move(script), DeltaConsumer(), scope);
}

QCoro::Task<std::optional<QString>> FakeDictationEndpoints::transcribePart(QByteArray audio, QString ext,
                                                                           QString context, TaskScope scope) {
    partRequests.push_back({std::move(audio), std::move(ext), std::move(context)});
    if (parts.empty()) {
        co_return std::nullopt;
    }
    FakePart script = std::move(parts.front());
    parts.pop_front();
    try {
        if (script.delay > Duration::zero()) {
            co_await sleep(clock_, script.delay, scope);
        }
        co_return co_await script.outcome.wait(scope);
    } catch (const TaskCancelled&) {
        ++cancelledCalls;
        throw;
    }
}

QCoro::Task<DictationResult> FakeDictationEndpoints::play(FakeDictation script, DeltaConsumer onDelta,
                                                          TaskScope scope) {
    try {
        if (script.delay > Duration::zero()) {
            co_await sleep(clock_, script.delay, scope);
        }
        for (const auto& delta : script.deltas) {
            QString text = co_await delta.wait(scope);
            if (onDelta) {
                co_await onDelta(std::move(text));
            }
        }
        co_return co_await script.outcome.wait(scope);
    } catch (const TaskCancelled&) {
        ++cancelledCalls;
        throw;
    }
}

FakeDictation FakeDictationEndpoints::answer(DictationResult outcome, const QStringList& deltas,
                                             Duration delay) {
    FakeDictation script{arrived(std::move(outcome)), {}, delay};
    for (const QString& delta : deltas) {
        script.deltas.push_back(arrived(delta));
    }
    return script;
}

FakeDictation FakeDictationEndpoints::next(std::deque<FakeDictation>& script) const {
    if (script.empty()) {
        return answer(otherwise);
    }
    FakeDictation first = std::move(script.front());
    script.pop_front();
    return first;
}

} // namespace lorvane
