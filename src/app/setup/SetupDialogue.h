// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/setup/SetupPlan.h"
#include "app/setup/SetupRunner.h"

#include <functional>

namespace lorvane {

/// What one call of `lorvane setup` asks for.
struct SetupRequest {
    SetupTopic topic = SetupTopic::hold;
    bool undo = false;
    /// Nobody is asked.
    bool yes = false;
};

/// Where the conversation takes place.
struct SetupTerminal {
    std::function<void(const QString& text)> print;
    /// The user's line to a question; empty at the end of the input.
    std::function<QString(const QString& question)> ask;
};

/// Tells what would be done, asks, does it, and tells what is left to the user. The exit status: 0 done or
/// nothing to do, 1 when something could not be done, or the user said no.
[[nodiscard]] int runSetupDialogue(const SetupRequest& request, const SetupFacts& facts, SetupRunner& runner,
                                   const SetupTerminal& terminal, const Localisation& words);

} // namespace lorvane
