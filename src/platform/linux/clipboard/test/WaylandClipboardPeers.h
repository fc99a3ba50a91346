// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/linux/clipboard/DataControlPasteboard.h"
#include "platform/linux/desktop/QtClock.h"
#include "support/Wait.h"

#include <QMap>
#include <QProcess>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <csignal>
#include <memory>
#include <optional>
#include <stdexcept>

/// The other programs that a compositor's clipboard has to do with, as real processes.
namespace lorvane {

using Types = QMap<QString, QByteArray>;

/// Owns the clipboard in a process of its own.
class ForeignWaylandOwner {
 public:
    explicit ForeignWaylandOwner(const Types& types, const QStringList& options = {}) {
        QStringList arguments = options;
        int count = 0;
        for (auto it = types.begin(); it != types.end(); ++it) {
            QFile file(folder_.filePath(QString::number(++count)));
            if (!file.open(QIODevice::WriteOnly) || file.write(it.value()) != it.value().size()) {
                throw std::runtime_error("no room for a clipboard's content");
            }
            arguments.append(it.key() + u'=' + file.fileName());
        }
        process_.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        process_.start(QStringLiteral(LORVANE_WAYLAND_CLIPBOARD_OWNER), arguments);
        if (!waitUntil([this] { return says("ready"); })) {
            throw std::runtime_error("the other owner of the clipboard did not come up");
        }
    }
    ~ForeignWaylandOwner() { kill(); }
    ForeignWaylandOwner(const ForeignWaylandOwner&) = delete;
    ForeignWaylandOwner& operator=(const ForeignWaylandOwner&) = delete;

    void hang() { ::kill(static_cast<pid_t>(process_.processId()), SIGSTOP); }
    void kill() {
        if (process_.state() != QProcess::NotRunning) {
            process_.kill();
            process_.waitForFinished();
        }
    }
    [[nodiscard]] bool says(const char* word) {
        said_ += process_.readAllStandardOutput();
        return said_.contains(word);
    }

 private:
    QTemporaryDir folder_;
    QProcess process_;
    QByteArray said_;
};

/// What another program finds (wl-paste); nothing when it finds nothing.
inline std::optional<QByteArray> pastedByAnother(const QString& type, const QStringList& options = {}) {
    // KWin says nothing at all of an empty clipboard, and wl-paste waits for a word.
    constexpr std::chrono::seconds longEnough{5};
    const auto result =
        runTool("wl-paste", QStringList{"--no-newline", "--type", type} + options, longEnough);
    return result.status == 0 ? std::optional(result.output) : std::nullopt;
}
inline QStringList typesSeenByAnother(const QStringList& options = {}) {
    const auto result = runTool("wl-paste", QStringList{"--list-types"} + options);
    return QString::fromUtf8(result.output).split(u'\n', Qt::SkipEmptyParts);
}
inline Types everythingPastedByAnother() {
    Types types;
    for (const auto& name : typesSeenByAnother()) {
        types.insert(name, pastedByAnother(name).value_or("(refused)"));
    }
    return types;
}

/// Runs a task to its end in the event loop.
template <typename T>
T finish(const std::function<QCoro::Task<T>(TaskScope)>& work) {
    std::optional<T> result;
    const auto task = startTask([&](TaskScope scope) -> QCoro::Task<void> { result = co_await work(scope); });
    if (!waitUntil([&] { return result.has_value(); })) {
        throw std::runtime_error("the task did not end");
    }
    return std::move(*result);
}

/// The compositor of the session with our pasteboard on it.
class WaylandClipboard {
 public:
    WaylandClipboard() {
        std::signal(SIGPIPE, SIG_IGN);
        if (!connection.awaitGlobals(clock, generously)) {
            throw std::runtime_error("no compositor");
        }
        runTool("wl-copy", {"--clear"});
        runTool("wl-copy", {"--clear", "--primary"});
        seat = std::make_unique<WaylandSeat>(connection);
        pasteboard = DataControlPasteboard::open(connection, *seat, clock);
        if (!pasteboard) {
            throw std::runtime_error("no data control");
        }
    }
    PasteboardSnapshot snapshot() {
        return finish<PasteboardSnapshot>(
            [this](TaskScope scope) { return pasteboard->snapshot(std::move(scope)); });
    }
    std::optional<QString> string() {
        using Text = std::optional<QString>;
        return finish<Text>([this](TaskScope scope) { return pasteboard->string(std::move(scope)); });
    }
    void lend(const QString& text, ProcessId target, const PasteboardSnapshot& previous,
              bool primaryToo = false) {
        PasteboardLoan loan;
        loan.text = text;
        loan.target = target;
        loan.previous = previous;
        loan.primaryToo = primaryToo;
        pasteboard->lend(loan);
    }
    /// What was asked of the compositor so far is done, and told.
    void settle() {
        bool isDone = false;
        const Handle answer = connection.afterServer([&] { isDone = true; });
        if (!waitUntil([&] { return isDone; })) {
            throw std::runtime_error("the compositor does not answer");
        }
    }

    QtClock clock;
    DiagnosticLog log{clock, std::nullopt};
    WaylandConnection connection{log};
    std::unique_ptr<WaylandSeat> seat;
    std::unique_ptr<DataControlPasteboard> pasteboard;
};

} // namespace lorvane
