// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/session/SessionProbe.h"

#include "platform/linux/desktop/QtClock.h"

#include <QFileInfo>
#include <QGuiApplication>
#include <QLibraryInfo>

#include <xcb/xcb.h>

namespace lorvane {

namespace {

/// A compositor that is busy at the login answers late, and without its answer the roads would be those of
/// X11 as long as the program runs.
constexpr Duration patience = std::chrono::seconds(15);

bool hasWaylandPlugin() {
    return QFileInfo::exists(QLibraryInfo::path(QLibraryInfo::PluginsPath) +
                             QStringLiteral("/platforms/libqwayland-generic.so"));
}

/// What Qt runs on once it runs; what the user wants before.
QString qtPlatform() {
    return qobject_cast<QGuiApplication*>(QCoreApplication::instance()) != nullptr
               ? QGuiApplication::platformName()
               : qEnvironmentVariable("QT_QPA_PLATFORM");
}

bool displayAnswers() {
    xcb_connection_t* const connection = xcb_connect(nullptr, nullptr);
    const bool answers = xcb_connection_has_error(connection) == 0;
    xcb_disconnect(connection);
    return answers;
}

SessionFacts factsOf(WaylandConnection& wayland, const Clock& clock) {
    SessionFacts facts;
    facts.hasCompositor = wayland.awaitGlobals(clock, patience);
    for (const auto& [name, global] : wayland.globals()) {
        auto& version = facts.globals[global.interface];
        version = std::max(version, global.version);
    }
    facts.hasWaylandPlugin = hasWaylandPlugin();
    facts.chosenQtPlatform = qtPlatform();
    return facts;
}

} // namespace

SessionFacts factsOf(X11Connection& display, WaylandConnection& wayland, const Clock& clock) {
    SessionFacts facts = factsOf(wayland, clock);
    facts.hasX = display.isAlive();
    return facts;
}

SessionFacts probeSession() {
    const QtClock clock;
    DiagnosticLog log(clock, std::nullopt);
    WaylandConnection wayland(log);
    SessionFacts facts = factsOf(wayland, clock);
    facts.hasX = displayAnswers();
    return facts;
}

} // namespace lorvane
