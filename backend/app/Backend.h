// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "api/Dictation.h"
#include "api/HttpServer.h"
#include "api/TakeMemory.h"
#include "util/WorkPool.h"

#include <chrono>
#include <memory>

namespace lorvane::backend {

struct BackendOptions {
    ServerOptions server;
    std::size_t workers = 2;                       // recognitions at once
    std::size_t queue = 64;                        // takes that wait for one
    std::size_t takeLimit = std::size_t(64) << 20; // bytes of a take's body
    double maxAudioSeconds = 30 * 60;
};

// The whole service, put together. Listens from its construction on and answers after start().
class Backend {
 public:
    Backend(const BackendOptions& options, std::unique_ptr<Storage> storage, std::unique_ptr<Engine> engine);
    ~Backend();

    std::uint16_t port() const { return server_.port(); }
    // Also begins to load the engine, beside the answering.
    void start();
    // Running requests get `grace` to end. Blocks. Once.
    void stop(std::chrono::milliseconds grace) { server_.stop(grace); }
    std::size_t connections() const { return server_.connections(); }
    // Takes that are worked on or wait.
    std::size_t busy() const { return heavy_.running() + heavy_.queued(); }

 private:
    const std::unique_ptr<Storage> storage_;
    const std::unique_ptr<Engine> engine_;
    TakeMemory memory_;
    const Dictation dictation_;
    WorkPool quick_;
    WorkPool heavy_;
    HttpServer server_; // goes first, then the pools with the work it has left
};

} // namespace lorvane::backend
