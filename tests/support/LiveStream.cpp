// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/LiveStream.h"

#include <condition_variable>
#include <deque>
#include <mutex>

#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>

namespace lorvane {

namespace {

QByteArray line(const QJsonObject& object) {
    return QJsonDocument(object).toJson(QJsonDocument::Compact) + '\n';
}

} // namespace

QByteArray streamLine::delta(const QString& text) {
    return line({{QStringLiteral("type"), QStringLiteral("delta")}, {QStringLiteral("text"), text}});
}

QByteArray streamLine::done(const QString& text) {
    return line({{QStringLiteral("type"), QStringLiteral("done")},
                 {QStringLiteral("text"), text},
                 {QStringLiteral("raw"), text}});
}

struct LiveStream::Lines {
    void add(const QByteArray& piece) {
        const std::lock_guard lock(mutex);
        waiting.push_back(piece);
        changed.notify_all();
    }
    /// The next piece; an empty one when there is none for a moment, so that the server can look whether the
    /// client is still there.
    std::optional<QByteArray> next();

    std::mutex mutex;
    std::condition_variable changed;
    std::deque<QByteArray> waiting;
    QByteArray last; // with it, the stream is over
    bool isOver = false;
    std::optional<std::chrono::steady_clock::time_point> finishedAt;
};

std::optional<QByteArray> LiveStream::Lines::next() {
    constexpr std::chrono::milliseconds moment{5};
    std::unique_lock lock(mutex);
    if (waiting.empty() && isOver)
        return std::nullopt;
    changed.wait_for(lock, moment, [this] { return !waiting.empty(); });
    if (waiting.empty())
        return QByteArray();
    QByteArray piece = waiting.front();
    waiting.pop_front();
    if (piece == last) {
        isOver = true;
        finishedAt = std::chrono::steady_clock::now();
    }
    return piece;
}

LiveStream::LiveStream() : lines_(std::make_shared<Lines>()) {}

ScriptedReply LiveStream::reply() const {
    ScriptedReply reply;
    reply.more = [lines = lines_] { return lines->next(); };
    reply.endsInTheMiddle = [lines = lines_] { return lines->last.isEmpty(); };
    return reply;
}

void LiveStream::say(const QString& delta) { lines_->add(streamLine::delta(delta)); }

void LiveStream::say(const QStringList& deltas) {
    for (const QString& delta : deltas)
        say(delta);
}

void LiveStream::finish(const QString& text) {
    {
        const std::lock_guard lock(lines_->mutex);
        lines_->last = streamLine::done(text);
    }
    lines_->add(streamLine::done(text));
}

void LiveStream::breakOff() {
    const std::lock_guard lock(lines_->mutex);
    lines_->isOver = true;
    lines_->changed.notify_all();
}

std::optional<std::chrono::steady_clock::time_point> LiveStream::finishedAt() const {
    const std::lock_guard lock(lines_->mutex);
    return lines_->finishedAt;
}

} // namespace lorvane
