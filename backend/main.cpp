// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/Activation.h"
#include "app/Backend.h"
#include "app/Options.h"
#include "app/ParentWatch.h"
#include "engines/PocketsphinxEngine.h"
#include "engines/UpstreamEngine.h"
#include "storage/PostgresStorage.h"
#include "storage/SqliteStorage.h"
#include "util/Log.h"

#include <csignal>
#include <cstdio>
#include <fstream>
#include <optional>
#include <stdexcept>

using namespace lorvane::backend;

namespace {

constexpr int parentSignal = SIGUSR1;
constexpr timespec parentPoll{1, 0};

sigset_t endSignals() {
    sigset_t signals;
    sigemptyset(&signals);
    for (const int signal : {SIGTERM, SIGINT, SIGHUP, parentSignal})
        sigaddset(&signals, signal);
    return signals;
}

// Whole or not at all: whoever waits for the file never reads half a number.
void writePort(const std::filesystem::path& file, std::uint16_t port) {
    auto fresh = file;
    fresh += ".new";
    {
        std::ofstream out(fresh);
        out << port << '\n';
        if (!out.flush())
            throw std::runtime_error("cannot write " + fresh.string());
    }
    std::filesystem::rename(fresh, file);
}

std::unique_ptr<Storage> openStorage(const ProgramOptions& options) {
    if (options.postgres)
        return std::make_unique<PostgresStorage>(*options.postgres);
    const auto& file = options.database;
    if (file.has_parent_path())
        std::filesystem::create_directories(file.parent_path());
    return std::make_unique<SqliteStorage>(file);
}

std::unique_ptr<Engine> makeEngine(const ProgramOptions& options) {
    if (!options.speech.empty())
        return std::make_unique<UpstreamEngine>(options.speech);
    return std::make_unique<PocketsphinxEngine>(options.models, options.backend.workers);
}

// Waits for an end signal, or for the parent to be gone. True when the parent is gone.
bool waitForEnd(const sigset_t& signals, const std::optional<ParentWatch>& parent) {
    for (;;) {
        if (parent && parent->parentGone())
            return true;
        const int signal =
            parent ? sigtimedwait(&signals, nullptr, &parentPoll) : sigwaitinfo(&signals, nullptr);
        if (signal > 0 && signal != parentSignal)
            return false;
    }
}

// Whoever sends requests here is told by /readyz that they should go elsewhere, and gets some time to see it.
void waitForSecondSignal(const sigset_t& signals, std::chrono::seconds atMost) {
    const timespec time{atMost.count(), 0};
    if (atMost.count() > 0)
        sigtimedwait(&signals, nullptr, &time);
}

void tellWhere(const ServerOptions& server, std::uint16_t port) {
    const bool bracketed = server.address.find(':') != std::string::npos;
    if (server.inherited >= 0)
        std::printf("listening on the socket that was handed over, port %u\n", unsigned{port});
    else
        std::printf("listening on http://%s%s%s:%u\n", bracketed ? "[" : "", server.address.c_str(),
                    bracketed ? "]" : "", unsigned{port});
    std::fflush(stdout);
}

int run(ProgramOptions options) {
    // Blocked before the first thread starts, so that every thread leaves them to waitForEnd.
    const auto signals = endSignals();
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    std::signal(SIGPIPE, SIG_IGN);
    std::optional<ParentWatch> parent;
    if (options.watchParent)
        parent.emplace(options.parent, parentSignal);

    auto& server = options.backend.server;
    server.inherited = inheritedSocket();
    Backend backend(options.backend, openStorage(options), makeEngine(options));
    backend.start();
    if (!options.portFile.empty())
        writePort(options.portFile, backend.port());
    tellWhere(server, backend.port());

    const bool orphaned = waitForEnd(signals, parent);
    logLine(orphaned ? "the parent is gone, ending" : "ending");
    backend.announceEnd();
    if (!orphaned)
        waitForSecondSignal(signals, options.drainDelay);
    backend.stop(orphaned ? std::chrono::seconds(0) : options.drain);
    if (!options.portFile.empty())
        std::filesystem::remove(options.portFile);
    return 0;
}

} // namespace

int main(int argc, char** argv) {
    auto parsed = parseOptions(argc, argv);
    if (!parsed.options)
        return parsed.exitStatus;
    try {
        return run(std::move(*parsed.options));
    } catch (const std::exception& error) {
        logLine(std::string("cannot start: ") + error.what());
        return 1;
    }
}
