// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Clock.h"
#include "base/DiagnosticLog.h"
#include "base/Task.h"
#include "platform/linux/kde/helper/HelperWire.h"

#include <QObject>
#include <QString>

#include <map>
#include <memory>

class QSocketNotifier;

namespace lorvane {

/// The program's end of the socket of `lorvane-input-method`. Connects when it is asked something and is not
/// connected; a helper of another version, of another user, or one that says what is no message, is left.
/// Main thread; every wait is bounded by 150 ms.
class HelperLink final : public QObject {
 public:
    /// `path`: of the socket; `standardPath` in the program.
    HelperLink(Clock& clock, DiagnosticLog& log, QString path);
    ~HelperLink() override;
    HelperLink(const HelperLink&) = delete;
    HelperLink& operator=(const HelperLink&) = delete;

    /// In the folder of the session; empty when there is none.
    [[nodiscard]] static QString standardPath();

    /// Connected; whether it speaks our version may still be open. Tries to connect when it is not.
    [[nodiscard]] bool isThere();
    /// The field that may be written into; none when no helper answered in time.
    QCoro::Task<helper::ContextState> context(TaskScope scope);
    /// Whether the helper handed the text on; absent when it did not answer in time, and may still do it.
    QCoro::Task<std::optional<bool>> commit(std::uint32_t context, QString text, TaskScope scope);

 private:
    bool connectNow();
    void readAll();
    void handle(const helper::Message& message);
    bool send(const helper::Message& message);
    void leave(const QString& reason);

    Clock& clock_;
    DiagnosticLog& log_;
    QString path_;
    int socket_ = -1;
    std::unique_ptr<QSocketNotifier> readable_;
    helper::Decoder decoder_;
    bool hasGreeted_ = false;
    bool knowsState_ = false;
    helper::ContextState state_;
    QString lastReason_;
    std::uint32_t lastRequest_ = 0;
    std::optional<Completion<bool>> stateWaiter_;
    std::map<std::uint32_t, Completion<std::optional<bool>>> answers_;
};

} // namespace lorvane
