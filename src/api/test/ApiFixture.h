// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "api/MacAPI.h"
#include "api/testing/FakeHttpClient.h"
#include "api/testing/FakeIdentityCloud.h"
#include "api/testing/FakeSecretStore.h"
#include "base/PreferenceCatalogue.h"
#include "base/testing/TestFoundation.h"

#include <gtest/gtest.h>

#include <memory>
#include <utility>

namespace lorvane {

/// Runs a coroutine in a task and keeps its result.
template <typename T>
class Running {
 public:
    explicit Running(std::function<QCoro::Task<T>(TaskScope)> call)
        : result_(std::make_shared<std::optional<T>>()), task_(startTask(body(std::move(call), result_))) {}
    [[nodiscard]] bool isDone() const { return result_->has_value(); }
    [[nodiscard]] T& value() {
        EXPECT_TRUE(isDone());
        return result_->value();
    }
    void cancel() { task_.cancel(); }
    [[nodiscard]] bool isRunning() const { return task_.isRunning(); }

 private:
    static QCoro::Task<void> run(std::function<QCoro::Task<T>(TaskScope)> call,
                                 std::shared_ptr<std::optional<T>> result, TaskScope scope) {
        T value = co_await call(scope);
        result->emplace(std::move(value));
    }
    static TaskBody body(std::function<QCoro::Task<T>(TaskScope)> call,
                         std::shared_ptr<std::optional<T>> result) {
        return [call = std::move(call), result](TaskScope scope) { return run(call, result, scope); };
    }

    std::shared_ptr<std::optional<T>> result_;
    TaskHandle task_;
};

inline bool isTransport(const DictationResult& result) {
    return !result && std::holds_alternative<TransportError>(result.error());
}

class ApiFixture : public ::testing::Test {
 protected:
    static constexpr const char* registerPath = "/api/register";
    static constexpr const char* streamPath = "/api/dictate-stream";
    static constexpr const char* dictatePath = "/api/dictate";
    static constexpr const char* partPath = "/api/transcribe-part";

    ApiFixture() { api.setBackendURL(QUrl("http://127.0.0.1:4242")); }

    void holdToken(const QString& token = "t0ken") { preferences.set(preference::token, token); }
    void answer(const char* path, FakeReply reply) { http.answer(path, std::move(reply)); }
    [[nodiscard]] std::size_t count(const char* path) const { return http.requestsTo(path).size(); }
    [[nodiscard]] HttpRequest last(const char* path) const {
        const auto found = http.requestsTo(path);
        EXPECT_FALSE(found.empty());
        return found.empty() ? HttpRequest() : found.back();
    }

    void registerNow() {
        const TaskHandle task = startTask([this](TaskScope scope) { return api.registerDevice(scope); });
        EXPECT_FALSE(task.isRunning());
    }
    QString deviceID() {
        return Running<QString>([this](TaskScope scope) { return api.deviceID(scope); }).value();
    }
    Running<DictationResult> stream(DictationRequest request = plain(), DeltaConsumer onDelta = {}) {
        if (!onDelta) {
            onDelta = [this](QString text) { return note(std::move(text)); };
        }
        return Running<DictationResult>(
            [this, request, onDelta](TaskScope scope) { return api.dictateStream(request, onDelta, scope); });
    }
    Running<DictationResult> dictate(DictationRequest request = plain()) {
        return Running<DictationResult>(
            [this, request](TaskScope scope) { return api.dictate(request, scope); });
    }
    Running<std::optional<QString>> part(const QString& context = {}) {
        return Running<std::optional<QString>>([this, context](TaskScope scope) {
            return api.transcribePart("audio", QStringLiteral("m4a"), context, scope);
        });
    }
    static DictationRequest plain() {
        return {QByteArray("audio"), QStringLiteral("m4a"), {}, QStringLiteral("TAKE-1"), {}, true};
    }
    static DictationError failed(Failure::Kind kind, std::optional<RegistrationFailure> reason = {}) {
        return Failure{kind, reason};
    }

    QCoro::Task<void> note(QString text) {
        deltas.append(text);
        co_return;
    }

    TestFoundation foundation;
    Preferences& preferences = foundation.preferences;
    FakeHttpClient http{foundation.clock};
    FakeSecretStore secrets;
    FakeIdentityCloud cloud{preferences};
    MacAPI api{http, secrets, preferences, cloud};
    QStringList deltas;
};

} // namespace lorvane
