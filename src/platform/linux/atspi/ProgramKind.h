// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "input/Workspace.h"

namespace lorvane {

/// What a program that shows nothing of itself is made of, since that decides what helps.
enum class ProgramKind { unknown, qt, chromium };

/// Read from what the process has mapped (/proc/PID/maps) and from the files beside its program: Chromium and
/// what is built on it carries its resources there.
[[nodiscard]] ProgramKind programKind(ProcessId process);

/// The pure part: `maps` as the kernel writes it, and the names beside the program.
[[nodiscard]] ProgramKind kindFrom(const QByteArray& maps, const QStringList& filesBeside);

} // namespace lorvane
