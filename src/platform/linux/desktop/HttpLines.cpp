// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/desktop/HttpLines.h"

namespace lorvane {

namespace {

QByteArray withoutCarriageReturn(QByteArray line) {
    if (line.endsWith('\r')) {
        line.chop(1);
    }
    return line;
}

} // namespace

QCoro::Task<Result<std::optional<QByteArray>, TransportError>> HttpLines::nextLine(TaskScope scope) {
    for (;;) {
        if (auto line = takeLine()) {
            co_return std::move(line);
        }
        if (pending_.size() > longestLine) {
            co_return failure(TransportError{QStringLiteral("a line is too long")});
        }
        const QByteArray more = exchange_->take();
        if (!more.isEmpty()) {
            exchange_->advanced();
            pending_ += more;
            continue;
        }
        if (exchange_->isFinished()) {
            co_return atEnd();
        }
        const bool alive = co_await exchange_->progress(scope);
        if (!alive) {
            co_return failure(HttpExchange::timedOut());
        }
    }
}

std::optional<QByteArray> HttpLines::takeLine() {
    const qsizetype end = pending_.indexOf('\n', searched_);
    if (end < 0) {
        searched_ = pending_.size();
        return std::nullopt;
    }
    QByteArray line = pending_.left(end);
    pending_.remove(0, end + 1);
    searched_ = 0;
    return withoutCarriageReturn(std::move(line));
}

HttpLines::Line HttpLines::atEnd() {
    if (const auto& error = exchange_->transportError()) {
        return failure(*error);
    }
    if (pending_.isEmpty()) {
        return std::optional<QByteArray>();
    }
    searched_ = 0;
    return std::optional(withoutCarriageReturn(std::exchange(pending_, QByteArray())));
}

} // namespace lorvane
