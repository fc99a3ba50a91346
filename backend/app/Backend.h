// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "api/Dictation.h"
#include "api/HttpServer.h"
#include "api/Metrics.h"
#include "api/ReleaseFeed.h"
#include "api/Services.h"
#include "api/TakeMemory.h"
#include "api/TokenCache.h"
#include "language/Linguist.h"
#include "mail/Mailer.h"
#include "util/WorkPool.h"

#include <atomic>
#include <chrono>
#include <memory>
#include <optional>
#include <stop_token>
#include <thread>
#include <vector>

namespace lorvane::backend {

struct MailOptions {
    std::optional<SmtpOptions> smtp; // without it letters go into the spool
    std::filesystem::path spool;
};

struct BackendOptions {
    ServerOptions server;
    ServiceOptions service;
    MailOptions mail;
    ReleaseOptions releases;
    std::vector<ChatServer> language; // in order of preference
    std::filesystem::path apertium;   // empty: no local translation
    std::size_t workers = 2;          // recognitions at once
    std::size_t writtenAtOnce = 32;   // takes that wait for a language server, beside those at work
    std::size_t queue = 64;           // takes that wait for one
    double maxAudioSeconds = 30 * 60;
    std::size_t takeBytes = std::size_t(512) << 20; // the sound of all takes together
    std::chrono::seconds tokenTime{60};             // how long a good token stays so while the store is away
};

// The whole service, put together. Listens from its construction on and answers after start().
class Backend {
 public:
    Backend(const BackendOptions& options, std::unique_ptr<Storage> storage, std::unique_ptr<Engine> engine);
    ~Backend();

    std::uint16_t port() const { return server_.port(); }
    // Also begins to load the engine, beside the answering.
    void start();
    // Tells those who ask that requests should go elsewhere, and still answers them.
    void announceEnd();
    // Running requests get `grace` to end. Blocks. Once.
    void stop(std::chrono::milliseconds grace);
    std::size_t connections() const { return server_.connections(); }
    // Takes that are worked on or wait.
    std::size_t busy() const { return takes_.running() + takes_.aside() + takes_.queued(); }

 private:
    std::string_view unready() const;
    void addGauges();
    void addServers(const std::string& kind, const std::function<ServerFigures()>& figures);
    void sweep(const std::stop_token& stop);

    enum class EngineState { loading, ready, failed };
    const std::unique_ptr<Storage> storage_;
    const std::unique_ptr<Engine> engine_;
    const std::unique_ptr<Mailer> mailer_;
    const ReleaseFeed releases_;
    TakeMemory memory_;
    const std::shared_ptr<ByteBudget> takeBytes_;
    Linguist linguist_;
    const Dictation dictation_;
    Metrics metrics_;
    TokenCache tokens_;
    ReferralCodes codes_{100'000};
    std::atomic<EngineState> engineState_ = EngineState::loading;
    std::atomic<bool> ending_ = false;
    std::stop_source stopping_; // ends the preparations
    std::jthread sweeping_;     // what is past its time goes though no other take comes
    const Services services_;
    WorkPool quick_;
    WorkPool slow_;
    WorkPool takes_;
    HttpServer server_; // goes first, then the pools with the work it has left
};

} // namespace lorvane::backend
