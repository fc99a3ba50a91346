// SPDX-License-Identifier: GPL-3.0-or-later
#include "api/PendingExchange.h"

#include "api/Wire.h"
#include "util/Log.h"
#include "util/WorkPool.h"

#include <exception>
#include <utility>

namespace lorvane::backend {

PendingExchange::PendingExchange(Request request, ByteBudget::Share held, std::size_t backlog)
    : request_(std::move(request)), held_(std::move(held)), backlog_(backlog) {}

void PendingExchange::respond(Response response) {
    {
        const std::lock_guard lock(mutex_);
        progress_.response = std::move(response);
    }
    slot_.wake();
}

void PendingExchange::startLines() {
    {
        const std::lock_guard lock(mutex_);
        progress_.started = true;
    }
    slot_.wake();
}

bool PendingExchange::writeLine(std::string line) {
    {
        std::unique_lock lock(mutex_);
        const auto stop = stop_.get_token();
        if (!space_.wait(lock, stop, [this] { return progress_.lines.size() + beingSent_ < backlog_; }) ||
            stop.stop_requested())
            return false;
        progress_.lines += line;
        progress_.lines += '\n';
    }
    slot_.wake();
    return true;
}

void PendingExchange::stepAside() { pool_->stepAside(); }

void PendingExchange::note(std::string_view text) {
    const std::lock_guard lock(mutex_);
    if (!notes_.empty())
        notes_ += ", ";
    notes_ += text;
}

void PendingExchange::handle(const Handler& handler, WorkPool& pool) {
    pool_ = &pool;
    try {
        if (!stop_.stop_requested())
            handler(request_, *this);
    } catch (const std::exception& error) {
        fail(error.what());
    }
    request_ = {};
    held_.release();
    {
        const std::lock_guard lock(mutex_);
        progress_.ended = true;
    }
    slot_.wake();
}

void PendingExchange::fail(std::string_view reason) {
    logLine("a handler failed: " + std::string(reason));
    bool started = false;
    {
        const std::lock_guard lock(mutex_);
        started = progress_.started;
    }
    if (started)
        writeLine(errorLine("server"));
    else
        respond({500, errorBody("server")});
}

PendingExchange::Progress PendingExchange::takeProgress() {
    Progress taken;
    {
        const std::lock_guard lock(mutex_);
        taken.started = progress_.started;
        taken.ended = progress_.ended;
        taken.lines.swap(progress_.lines);
        taken.response = std::exchange(progress_.response, std::nullopt);
        beingSent_ = taken.lines.size();
    }
    space_.notify_all();
    return taken;
}

void PendingExchange::abandon() { stop_.request_stop(); }

std::string PendingExchange::notes() const {
    const std::lock_guard lock(mutex_);
    return notes_;
}

} // namespace lorvane::backend
