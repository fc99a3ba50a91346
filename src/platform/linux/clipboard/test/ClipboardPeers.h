// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Task.h"
#include "platform/linux/clipboard/X11Pasteboard.h"
#include "platform/linux/desktop/QtClock.h"
#include "support/Wait.h"

#include <QMap>
#include <QProcess>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <memory>
#include <optional>

/// The other programs that a clipboard has to do with, as real processes.
namespace lorvane {

using Types = QMap<QString, QByteArray>;

/// Owns a selection through Qt, in a process of its own.
class ForeignOwner {
 public:
    explicit ForeignOwner(const Types& types, const QStringList& options = {});
    ~ForeignOwner();
    ForeignOwner(const ForeignOwner&) = delete;
    ForeignOwner& operator=(const ForeignOwner&) = delete;

    void hang();
    void wake();
    void kill();
    [[nodiscard]] qint64 pid() const { return process_.processId(); }

 private:
    QTemporaryDir folder_;
    QProcess process_;
    bool hangs_ = false;
};

/// Asks as another program does (xclip): the bytes, or nothing when it was refused.
std::optional<QByteArray> askedByAnother(const QString& type, const QString& selection = "clipboard");
/// Every type in the list of targets with its bytes, without the names of the protocol.
Types everythingAskedByAnother();
QStringList targetsAskedByAnother();

/// A random text that is nowhere else.
QString uniqueText(const QString& name);

/// Runs a task to its end in the event loop. Throws std::runtime_error when it does not end.
template <typename T>
T finish(const std::function<QCoro::Task<T>(TaskScope)>& work) {
    std::optional<T> result;
    const auto task = startTask([&](TaskScope scope) -> QCoro::Task<void> { result = co_await work(scope); });
    if (!waitUntil([&] { return result.has_value(); })) {
        throw std::runtime_error("the task did not end");
    }
    return std::move(*result);
}

/// A pasteboard under test with the real clock.
class PasteboardOnDesktop : public testing::Test {
 protected:
    PasteboardOnDesktop();
    PasteboardSnapshot snapshot();
    std::optional<QString> string();
    void lend(const QString& text, ProcessId target, const PasteboardSnapshot& previous,
              bool primaryToo = false);

    QtClock clock_;
    std::unique_ptr<X11Pasteboard> pasteboard_;
};

} // namespace lorvane
