// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/Backend.h"
#include "engines/Upstreams.h"
#include "storage/PostgresLink.h"

#include <filesystem>
#include <optional>
#include <sys/types.h>

namespace lorvane::backend {

struct ProgramOptions {
    BackendOptions backend;
    std::filesystem::path database;
    std::optional<PostgresOptions> postgres; // instead of the file
    std::filesystem::path portFile;          // empty: none
    std::filesystem::path models;
    std::vector<SpeechUpstream> speech; // none: pocketsphinx
    bool watchParent = false;
    pid_t parent = 0;
    std::chrono::seconds drainDelay{0};
    std::chrono::seconds drain{5};
};

struct ParsedOptions {
    std::optional<ProgramOptions> options; // absent: end with exitStatus, all has been said
    int exitStatus = 0;
};

ParsedOptions parseOptions(int argc, char** argv);

} // namespace lorvane::backend
