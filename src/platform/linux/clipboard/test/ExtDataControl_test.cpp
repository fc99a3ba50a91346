// SPDX-License-Identifier: GPL-3.0-or-later
// Data control by its newer protocol, and what becomes of it when the compositor takes its parts away,
// against a compositor of our own: none that is packaged offers it.
#include "platform/linux/clipboard/DataControlPasteboard.h"
#include "platform/linux/desktop/QtClock.h"
#include "support/Wait.h"

#include <QProcess>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <csignal>

namespace lorvane {
namespace {

class ClipboardCompositor {
 public:
    explicit ClipboardCompositor(const QList<QByteArray>& offers) {
        std::signal(SIGPIPE, SIG_IGN);
        qputenv("XDG_RUNTIME_DIR", runtime_.path().toUtf8());
        process_.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        process_.start(QStringLiteral(LORVANE_CLIPBOARD_COMPOSITOR), {});
        socket = runtime_.filePath(QString::fromUtf8(line())).toUtf8();
        for (const QByteArray& name : offers) {
            tell(name + " on");
        }
    }
    ~ClipboardCompositor() {
        process_.closeWriteChannel();
        process_.waitForFinished();
    }
    ClipboardCompositor(const ClipboardCompositor&) = delete;
    ClipboardCompositor& operator=(const ClipboardCompositor&) = delete;

    /// What it prints before "done".
    QByteArray tell(const QByteArray& command) {
        process_.write(command + '\n');
        QByteArray said;
        for (QByteArray next = line(); next != "done"; next = line()) {
            said += next;
        }
        return said;
    }
    QByteArray socket;

 private:
    QByteArray line() {
        while (!process_.canReadLine()) {
            if (!process_.waitForReadyRead(static_cast<int>(generously.count()))) {
                throw std::runtime_error("the compositor says nothing");
            }
        }
        return process_.readLine().trimmed();
    }
    QTemporaryDir runtime_;
    QProcess process_;
};

template <typename T>
T finish(const std::function<QCoro::Task<T>(TaskScope)>& work) {
    std::optional<T> result;
    const auto task = startTask([&](TaskScope scope) -> QCoro::Task<void> { result = co_await work(scope); });
    if (!waitUntil([&] { return result.has_value(); })) {
        throw std::runtime_error("the task did not end");
    }
    return std::move(*result);
}

/// One program at the clipboard.
class Peer {
 public:
    explicit Peer(const QByteArray& socket) : connection(log, socket) {
        if (!connection.awaitGlobals(clock, generously)) {
            throw std::runtime_error("no compositor");
        }
        seat = std::make_unique<WaylandSeat>(connection);
        pasteboard = DataControlPasteboard::open(connection, *seat, clock);
    }
    std::optional<QString> string() {
        using Text = std::optional<QString>;
        return finish<Text>([this](TaskScope scope) { return pasteboard->string(std::move(scope)); });
    }
    PasteboardSnapshot snapshot() {
        return finish<PasteboardSnapshot>(
            [this](TaskScope scope) { return pasteboard->snapshot(std::move(scope)); });
    }
    void settle() {
        bool isDone = false;
        const Handle answer = connection.afterServer([&] { isDone = true; });
        connection.flush();
        if (!waitUntil([&] { return isDone; })) {
            throw std::runtime_error("the compositor does not answer");
        }
    }

    QtClock clock;
    DiagnosticLog log{clock, std::nullopt};
    WaylandConnection connection;
    std::unique_ptr<WaylandSeat> seat;
    std::unique_ptr<DataControlPasteboard> pasteboard;
};

TEST(ExtDataControl, IsPreferredToTheOlderProtocol) {
    ClipboardCompositor compositor({"seat", "wlr", "ext"});
    Peer peer(compositor.socket);
    ASSERT_TRUE(peer.pasteboard);
    peer.settle();
    EXPECT_TRUE(peer.connection.isAlive());
    EXPECT_EQ(compositor.tell("bound").trimmed(), "ext");
}

TEST(ExtDataControl, ATextIsLentAndTheOldContentGivenBackToBothSelections) {
    ClipboardCompositor compositor({"seat", "ext"});
    Peer ours(compositor.socket);
    Peer other(compositor.socket);
    other.pasteboard->setString("old");
    other.settle();
    const PasteboardSnapshot held = ours.snapshot();
    PasteboardLoan loan;
    loan.text = "dictated";
    loan.target = 1;
    loan.previous = held;
    loan.primaryToo = true;
    ours.pasteboard->lend(loan);
    ours.settle();
    EXPECT_EQ(other.string(), "old") << "before the keys";
    ours.pasteboard->keysGoOut();
    EXPECT_EQ(other.string(), "dictated");
    EXPECT_TRUE(ours.pasteboard->loanState().lastRequest);
    ours.pasteboard->restore(held);
    ours.settle();
    ours.settle();
    EXPECT_EQ(other.string(), "old");
}

TEST(ExtDataControl, ACopyOfAnotherProgramTakesTheClipboardFromUs) {
    ClipboardCompositor compositor({"seat", "ext"});
    Peer ours(compositor.socket);
    Peer other(compositor.socket);
    ours.pasteboard->setString("ours");
    ours.settle();
    other.pasteboard->setString("theirs");
    other.settle();
    ASSERT_TRUE(waitUntil([&] { return ours.pasteboard->loanState().lost; }));
    EXPECT_EQ(ours.string(), "theirs");
}

TEST(ExtDataControl, TheClipboardIsThereAgainWhenTheSeatComesBack) {
    ClipboardCompositor compositor({"seat", "ext"});
    Peer ours(compositor.socket);
    ours.pasteboard->setString("before");
    ours.settle();
    compositor.tell("seat off");
    ASSERT_TRUE(waitUntil([&] { return ours.pasteboard->loanState().lost; })) << "it went with the seat";
    EXPECT_FALSE(ours.snapshot().readable);
    compositor.tell("seat on");
    ASSERT_TRUE(waitUntil([&] { return ours.seat->seat() != nullptr; }));
    Peer other(compositor.socket);
    other.pasteboard->setString("after");
    other.settle();
    EXPECT_TRUE(waitUntil([&] { return ours.string() == "after"; }));
    ours.pasteboard->setString("ours again");
    ours.settle();
    EXPECT_EQ(other.string(), "ours again");
}

TEST(ExtDataControl, TheClipboardIsThereAgainWhenTheManagerComesBack) {
    ClipboardCompositor compositor({"seat", "ext"});
    Peer ours(compositor.socket);
    ours.pasteboard->setString("before");
    ours.settle();
    compositor.tell("ext off");
    ASSERT_TRUE(waitUntil([&] { return ours.pasteboard->loanState().lost; }));
    compositor.tell("ext on");
    ASSERT_TRUE(waitUntil([&] { return ours.connection.offers("ext_data_control_manager_v1"); }));
    ours.pasteboard->setString("again");
    ours.settle();
    Peer other(compositor.socket);
    EXPECT_TRUE(waitUntil([&] { return other.string() == "again"; }));
}

TEST(ExtDataControl, WithoutAnyProtocolThereIsNoSuchPasteboard) {
    ClipboardCompositor compositor({"seat"});
    Peer peer(compositor.socket);
    EXPECT_FALSE(peer.pasteboard);
}

} // namespace
} // namespace lorvane
