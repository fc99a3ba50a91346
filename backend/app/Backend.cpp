// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/Backend.h"

#include "api/Handlers.h"
#include "util/Log.h"

namespace lorvane::backend {

namespace {
constexpr std::size_t quickThreads = 2;
constexpr std::size_t quickQueue = 4096;
} // namespace

Backend::Backend(const BackendOptions& options, std::unique_ptr<Storage> storage,
                 std::unique_ptr<Engine> engine)
    : storage_(std::move(storage)), engine_(std::move(engine)),
      dictation_(*storage_, *engine_, memory_, options.maxAudioSeconds), quick_(quickThreads, quickQueue),
      heavy_(options.workers, options.queue),
      server_(
          options.server, makeRoutes(*storage_, dictation_, options.takeLimit),
          [this](std::string_view token) { return storage_->deviceOfToken(sha256(token)); }, quick_, heavy_) {
}

Backend::~Backend() = default;

void Backend::start() {
    server_.start();
    const bool queued = heavy_.submit([this] {
        try {
            engine_->warmUp();
        } catch (const std::exception& error) {
            logLine(std::string("the speech engine is not ready: ") + error.what());
        }
    });
    if (!queued)
        logLine("the speech engine loads with the first take");
}

} // namespace lorvane::backend
