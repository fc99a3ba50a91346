// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/Backend.h"

#include "api/Routes.h"
#include "util/Log.h"

#include <condition_variable>
#include <mutex>

namespace lorvane::backend {

namespace {

constexpr std::size_t quickThreads = 2;
constexpr std::size_t quickQueue = 4096;
constexpr std::chrono::seconds sweepPause{10};
constexpr std::size_t slowThreads = 16; // they mostly wait for other servers
constexpr std::size_t slowQueue = 256;

std::unique_ptr<Mailer> mailerFor(const MailOptions& options) {
    if (options.smtp)
        return std::make_unique<SmtpMailer>(*options.smtp);
    return std::make_unique<SpoolMailer>(options.spool);
}

} // namespace

Backend::Backend(const BackendOptions& options, std::unique_ptr<Storage> storage,
                 std::unique_ptr<Engine> engine)
    : storage_(std::move(storage)), engine_(std::move(engine)), mailer_(mailerFor(options.mail)),
      releases_(options.releases), takeBytes_(std::make_shared<ByteBudget>(options.takeBytes)),
      linguist_(options.language, options.apertium),
      dictation_(*storage_, *engine_, memory_, linguist_, options.maxAudioSeconds, takeBytes_),
      tokens_(*storage_, options.tokenTime),
      services_{options.service, *storage_, dictation_,
                linguist_,       *mailer_,  releases_,
                metrics_,        codes_,    [this] { return unready(); }},
      quick_(quickThreads, quickQueue), slow_(slowThreads, slowQueue),
      takes_(options.workers, options.queue, options.language.empty() ? 0 : options.writtenAtOnce),
      server_(options.server, makeRoutes(services_),
              {[this](std::string_view token) { return tokens_.deviceOf(token); },
               [this](std::string_view token) { return tokens_.recall(token); }},
              {quick_, slow_, takes_},
              [this](std::string_view what, int status, std::chrono::milliseconds took) {
                  metrics_.countRequest(what, status, took);
              }) {
    addGauges();
}

Backend::~Backend() { stopping_.request_stop(); }

void Backend::start() {
    server_.start();
    const bool queued = takes_.submit([this] {
        try {
            engine_->warmUp();
            engineState_ = EngineState::ready;
        } catch (const std::exception& error) {
            engineState_ = EngineState::failed;
            logLine(std::string("the speech engine is not ready: ") + error.what());
        }
    });
    if (!queued)
        logLine("the speech engine loads with the first take");
    sweeping_ = std::jthread([this](const std::stop_token& stop) { sweep(stop); });
    if (!slow_.submit([this] { linguist_.prepare(stopping_.get_token()); }))
        logLine("no local translation");
}

void Backend::sweep(const std::stop_token& stop) {
    std::mutex mutex;
    std::condition_variable_any changed;
    std::unique_lock lock(mutex);
    while (!changed.wait_for(lock, stop, sweepPause, [&] { return stop.stop_requested(); }))
        memory_.sweep();
}

void Backend::announceEnd() {
    ending_ = true;
    server_.announceEnd();
}

void Backend::stop(std::chrono::milliseconds grace) {
    announceEnd();
    stopping_.request_stop();
    server_.stop(grace);
}

std::string_view Backend::unready() const {
    if (ending_)
        return "ending";
    switch (engineState_) {
    case EngineState::loading:
        return "the speech engine is loading";
    case EngineState::failed:
        return "the speech engine failed to load";
    case EngineState::ready:
        break;
    }
    return {};
}

void Backend::addGauges() {
    const auto add = [this](const char* name, const char* help, auto value) {
        metrics_.addGauge(name, help, [value] { return static_cast<double>(value()); });
    };
    add("lorvane_connections", "Open connections.", [this] { return server_.connections(); });
    add("lorvane_takes_running", "Takes that are worked on.", [this] { return takes_.running(); });
    add("lorvane_takes_waiting", "Takes that wait for a worker.", [this] { return takes_.queued(); });
    add("lorvane_takes_writing", "Takes that a language server writes.", [this] { return takes_.aside(); });
    add("lorvane_take_bytes", "Memory that the sound of takes holds.",
        [this, whole = takeBytes_->left()] { return whole - takeBytes_->left(); });
    add("lorvane_slow_waiting", "Letters and texts that wait.", [this] { return slow_.queued(); });
    add("lorvane_ready", "1 when requests may come.", [this] { return unready().empty() ? 1 : 0; });
    addServers("speech", [this] { return engine_->figures(); });
    addServers("language", [this] { return linguist_.figures(); });
}

void Backend::addServers(const std::string& kind, const std::function<ServerFigures()>& figures) {
    const auto add = [&](const char* what, const std::string& help, auto value) {
        metrics_.addCounter("lorvane_" + kind + '_' + what + "_total", help + ' ' + kind + " servers.",
                            [figures, value] { return static_cast<double>(value(figures())); });
    };
    add("calls", "Requests to", [](const ServerFigures& all) { return all.calls; });
    add("failures", "Requests that failed by the fault of",
        [](const ServerFigures& all) { return all.failures; });
    add("seconds", "Time of all requests to", [](const ServerFigures& all) { return all.seconds; });
}

} // namespace lorvane::backend
