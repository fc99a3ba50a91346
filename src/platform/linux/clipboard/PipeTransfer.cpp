// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/clipboard/PipeTransfer.h"

#include <QSocketNotifier>

#include <array>
#include <cerrno>
#include <fcntl.h>

namespace lorvane {

namespace {

constexpr std::size_t mostTransfers = 64;
constexpr Duration writerPatience = std::chrono::seconds(5);

enum class ReadState { open, ended, failed };

ReadState readWhatIsThere(int end, QByteArray& into, qsizetype mostBytes) {
    std::array<char, 65536> buffer{};
    for (;;) {
        const ssize_t count = read(end, buffer.data(), buffer.size());
        if (count == 0) {
            return ReadState::ended;
        }
        if (count < 0) {
            return errno == EAGAIN || errno == EINTR ? ReadState::open : ReadState::failed;
        }
        if (into.size() + count > mostBytes) {
            return ReadState::failed;
        }
        into.append(buffer.data(), count);
    }
}

} // namespace

Pipe makePipe() {
    std::array<int, 2> ends{-1, -1};
    if (pipe2(ends.data(), O_CLOEXEC | O_NONBLOCK) != 0) {
        return {};
    }
    return {FileDescriptor(ends[0]), FileDescriptor(ends[1])};
}

QCoro::Task<std::optional<QByteArray>> readPipe(std::shared_ptr<FileDescriptor> end, Clock& clock,
                                                ReadLimits limits, TaskScope scope) {
    QByteArray bytes;
    QSocketNotifier notifier(end->number(), QSocketNotifier::Read);
    for (;;) {
        const ReadState state = readWhatIsThere(end->number(), bytes, limits.mostBytes);
        if (state == ReadState::ended) {
            co_return bytes;
        }
        const Duration left = std::min(limits.silence, limits.end - clock.now());
        if (state == ReadState::failed || left <= Duration::zero()) {
            co_return std::nullopt;
        }
        const Completion<bool> more;
        const auto readable =
            QObject::connect(&notifier, &QSocketNotifier::activated, &notifier, [more, &notifier] {
                notifier.setEnabled(false);
                more.complete(true);
            });
        notifier.setEnabled(true);
        const Handle bound = clock.after(left, [more] { more.complete(false); });
        const bool came = co_await more.wait(scope);
        QObject::disconnect(readable);
        if (!came) {
            co_return std::nullopt;
        }
    }
}

struct PipeWriters::Transfer {
    FileDescriptor end;
    QByteArray bytes;
    qsizetype done = 0;
    std::unique_ptr<QSocketNotifier> notifier;
    Handle patience;
};

PipeWriters::PipeWriters(Clock& clock) : clock_(clock) {}

PipeWriters::~PipeWriters() = default;

void PipeWriters::write(FileDescriptor end, QByteArray bytes) {
    if (transfers_.size() >= mostTransfers) {
        return;
    }
    const int flags = fcntl(end.number(), F_GETFL);
    fcntl(end.number(), F_SETFL, flags | O_NONBLOCK);
    auto transfer = std::make_unique<Transfer>();
    transfer->end = std::move(end);
    transfer->bytes = std::move(bytes);
    if (!advance(*transfer)) {
        return;
    }
    Transfer* const kept = transfer.get();
    kept->notifier = std::make_unique<QSocketNotifier>(kept->end.number(), QSocketNotifier::Write);
    QObject::connect(kept->notifier.get(), &QSocketNotifier::activated, kept->notifier.get(), [this, kept] {
        if (!advance(*kept)) {
            drop(kept);
        }
    });
    transfers_.push_back(std::move(transfer));
}

bool PipeWriters::advance(Transfer& transfer) {
    while (transfer.done < transfer.bytes.size()) {
        const ssize_t count = ::write(transfer.end.number(), transfer.bytes.constData() + transfer.done,
                                      static_cast<std::size_t>(transfer.bytes.size() - transfer.done));
        if (count < 0) {
            const bool isFull = errno == EAGAIN || errno == EINTR;
            if (isFull) {
                transfer.patience = clock_.after(writerPatience, [this, &transfer] { drop(&transfer); });
            }
            return isFull;
        }
        transfer.done += count;
    }
    return false;
}

// Told from inside its own notifier or timer, so it ends a little later.
void PipeWriters::drop(const Transfer* transfer) {
    const auto found = std::find_if(transfers_.begin(), transfers_.end(),
                                    [&](const auto& one) { return one.get() == transfer; });
    if (found == transfers_.end()) {
        return;
    }
    (*found)->end.close();
    if (auto* const notifier = (*found)->notifier.release()) {
        notifier->setEnabled(false);
        notifier->deleteLater();
    }
    transfers_.erase(found);
}

} // namespace lorvane
