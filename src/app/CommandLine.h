// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/setup/SetupDialogue.h"

#include <QStringList>

#include <optional>

namespace lorvane {

/// What one call of `lorvane` asks for.
struct Command {
    enum class Verb { run, start, stop, toggle, cancel, status, open, quit, doctor, setup, help, version };
    Verb verb = Verb::run;
    bool json = false;
    /// What `setup` is asked for, and whether it is to read key devices.
    SetupRequest setup;
    bool keyDevices = false;
};

/// What `main` was called with, without the program's name; needs no application object.
[[nodiscard]] QStringList argumentsOf(int argc, const char* const* argv);

/// The command in `arguments` (without the program's name), or nothing when they make none; `problem` says
/// why.
[[nodiscard]] std::optional<Command> parseCommand(const QStringList& arguments, QString& problem);

/// The text of --help.
[[nodiscard]] QString usageText();

} // namespace lorvane
