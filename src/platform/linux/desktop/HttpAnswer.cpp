// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/desktop/HttpAnswer.h"

#include <algorithm>
#include <optional>
#include <utility>

namespace lorvane {

namespace {

constexpr qsizetype largestHead = 64 * 1024;
constexpr int highestInformation = 199;

// Digits and nothing else: no sign, no prefix, no blank within.
std::optional<qint64> numberIn(const QByteArray& digits, int base) {
    const bool clean = std::all_of(digits.begin(), digits.end(), [base](char c) {
        return (c >= '0' && c <= '9') || (base == 16 && ((c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F')));
    });
    bool isNumber = false;
    const qint64 number = clean ? digits.toLongLong(&isNumber, base) : 0;
    return isNumber ? std::optional(number) : std::nullopt;
}

int statusOf(const QByteArray& line) {
    const bool isHttp = line.startsWith("HTTP/1.") && line.size() >= 12 && line[8] == ' ';
    const int status = isHttp ? line.mid(9, 3).toInt() : 0;
    return status >= 100 && status <= 999 ? status : 0;
}

} // namespace

QByteArray HttpAnswer::feed(const QByteArray& bytes) {
    input_ += bytes;
    QByteArray body;
    while (step(body)) {
    }
    return body;
}

void HttpAnswer::close() {
    if (state_ != State::complete) {
        state_ = state_ == State::untilClose ? State::complete : State::broken;
    }
}

// True when there may be more to do with what is there.
bool HttpAnswer::step(QByteArray& body) {
    QByteArray line;
    switch (state_) {
    case State::head:
        return readHead();
    case State::counted:
        return readCounted(body, State::complete);
    case State::untilClose:
        body += std::exchange(input_, QByteArray());
        return false;
    case State::chunkSize:
        return readChunkSize();
    case State::chunk:
        return readCounted(body, State::chunkEnd);
    case State::chunkEnd:
        if (!readLine(line)) {
            return false;
        }
        state_ = line.isEmpty() ? State::chunkSize : State::broken;
        return true;
    case State::trailer:
        return readTrailer();
    case State::complete:
    case State::broken:
        return false;
    }
    return false;
}

bool HttpAnswer::readHead() {
    const qsizetype end = input_.indexOf("\r\n\r\n");
    if (end < 0) {
        if (input_.size() > largestHead) {
            state_ = State::broken;
        }
        return false;
    }
    const QList<QByteArray> lines = input_.left(end).split('\n');
    input_.remove(0, end + 4);
    const int status = statusOf(lines.front());
    if (status == 0 || !spend(end)) {
        state_ = State::broken;
        return false;
    }
    if (status > highestInformation) {
        status_ = status;
        beginBody(lines);
    }
    return true;
}

// Answers on the way and trailers may be many, and one after the other would never end.
bool HttpAnswer::spend(qsizetype bytes) {
    spent_ += bytes;
    return spent_ <= largestHead;
}

void HttpAnswer::beginBody(const QList<QByteArray>& lines) {
    if (status_ == 204 || status_ == 304) {
        state_ = State::complete;
        return;
    }
    state_ = State::untilClose;
    for (const QByteArray& line : lines) {
        const qsizetype colon = line.indexOf(':');
        const QByteArray name = line.left(colon).trimmed().toLower();
        const QByteArray value = line.mid(colon + 1).trimmed();
        if (name == "transfer-encoding" && value.toLower().endsWith("chunked")) {
            state_ = State::chunkSize;
            return;
        }
        if (name == "content-length") {
            beginCounted(value);
        }
    }
}

// Two lengths that differ say that somebody on the way has been deceived.
void HttpAnswer::beginCounted(const QByteArray& digits) {
    const auto count = numberIn(digits, 10);
    const bool isFirst = state_ == State::untilClose;
    const bool isSame = state_ == State::counted && count == left_;
    left_ = count.value_or(0);
    state_ = count && (isFirst || isSame) ? State::counted : State::broken;
}

bool HttpAnswer::readCounted(QByteArray& body, State after) {
    const qint64 count = std::min<qint64>(left_, input_.size());
    body += input_.left(count);
    input_.remove(0, count);
    left_ -= count;
    if (left_ > 0) {
        return false;
    }
    state_ = after;
    return true;
}

bool HttpAnswer::readChunkSize() {
    QByteArray line;
    if (!readLine(line)) {
        return false;
    }
    const auto size = numberIn(line.split(';').front().trimmed(), 16);
    left_ = size.value_or(0);
    if (!size) {
        state_ = State::broken;
    } else {
        state_ = left_ == 0 ? State::trailer : State::chunk;
    }
    return true;
}

bool HttpAnswer::readTrailer() {
    QByteArray line;
    if (!readLine(line)) {
        return false;
    }
    if (line.isEmpty()) {
        state_ = State::complete;
    } else if (!spend(line.size() + 2)) {
        state_ = State::broken;
    }
    return true;
}

bool HttpAnswer::readLine(QByteArray& line) {
    const qsizetype end = input_.indexOf("\r\n");
    if (end < 0) {
        if (input_.size() > largestHead) {
            state_ = State::broken;
        }
        return false;
    }
    line = input_.left(end);
    input_.remove(0, end + 2);
    return true;
}

} // namespace lorvane
