// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <chrono>
#include <functional>

#include <QtCore/QByteArray>
#include <QtCore/QStringList>

// Waiting for the real world. Everything here runs the event loop meanwhile, since the program under test may
// live in this process and have to answer first (as the clipboard's owner, for instance).
namespace lorvane {

// Far more than anything takes on a busy machine; a test that meets it has failed.
inline constexpr std::chrono::milliseconds generously{20000};

// True as soon as the condition holds; false when the time is over.
[[nodiscard]] bool waitUntil(const std::function<bool()>& condition,
                             std::chrono::milliseconds bound = generously);

struct ToolResult {
    int status = -1; // -1: did not start, crashed or took longer than the bound
    QByteArray output;
    QByteArray errors;
};
ToolResult runTool(const QString& program, const QStringList& arguments,
                   std::chrono::milliseconds bound = generously);

} // namespace lorvane
