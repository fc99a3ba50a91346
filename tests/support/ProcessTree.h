// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QtCore/QList>

// Processes and what descends from them, as the kernel lists them.
namespace lorvane::processes {

// The process itself and everything below it; empty when it is gone.
QList<qint64> family(qint64 root);
// False for one that has ended and waits to be collected.
bool isRunning(qint64 pid);
// Processor time that the process has used so far.
double processorSeconds(qint64 pid);
// Kills all of them and waits until none runs; what they start meanwhile is not among them.
void end(const QList<qint64>& pids);

} // namespace lorvane::processes
