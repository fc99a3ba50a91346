// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "api/Http.h"
#include "util/ByteBudget.h"
#include "util/WakeSlot.h"

#include <condition_variable>
#include <mutex>

namespace lorvane::backend {

class WorkPool;

// An exchange between the worker that handles a request and the connection that answers it. The worker gets
// ahead of the client by at most `backlog` bytes of lines, then waits.
class PendingExchange : public Exchange {
 public:
    PendingExchange(Request request, ByteBudget::Share held, std::size_t backlog);

    // The worker's side.
    void respond(Response response) override;
    void startLines() override;
    bool writeLine(std::string line) override;
    std::stop_token stopToken() const override { return stop_.get_token(); }
    void stepAside() override;
    void note(std::string_view text) override;
    // Runs the handler as a job of that pool, whatever it throws, and drops the request.
    void handle(const Handler& handler, WorkPool& pool);

    // The connection's side.
    struct Progress {
        bool started = false; // the answer is lines
        std::string lines;
        std::optional<Response> response;
        bool ended = false;
        bool empty() const { return lines.empty() && !response && !ended; }
    };
    // What has come since the last call. What the last one gave has been sent by now: only then is there room
    // for more, so that a client that does not read holds up the worker.
    Progress takeProgress();
    // The client is gone: the worker is asked to stop, and waits for nothing more.
    void abandon();
    std::string notes() const;
    WakeSlot& slot() { return slot_; }

 private:
    void fail(std::string_view reason);

    Request request_;
    ByteBudget::Share held_;
    const std::size_t backlog_;
    WorkPool* pool_ = nullptr;
    std::stop_source stop_;
    WakeSlot slot_;
    mutable std::mutex mutex_;
    std::condition_variable_any space_;
    Progress progress_;
    std::size_t beingSent_ = 0;
    std::string notes_;
};

} // namespace lorvane::backend
