// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "api/IdentityCloud.h"
#include "app/HistoryJournal.h"
#include "app/LoadedTakeCodec.h"
#include "app/session/DesktopSession.h"
#include "app/session/SessionFacts.h"
#include "base/Foundation.h"
#include "platform/linux/atspi/AccessibilitySwitch.h"
#include "platform/linux/atspi/AtspiAccessibility.h"
#include "platform/linux/atspi/AtspiBus.h"
#include "platform/linux/atspi/AtspiFieldAccess.h"
#include "platform/linux/atspi/AtspiInsertion.h"
#include "platform/linux/desktop/DiskStateFile.h"
#include "platform/linux/desktop/QtHttpClient.h"
#include "platform/linux/pulse/PulseAudioEngineFactory.h"
#include "platform/linux/pulse/PulseChime.h"
#include "platform/linux/pulse/PulseConnection.h"
#include "platform/linux/pulse/PulseInputDevices.h"
#include "platform/linux/secrets/KeychainSecretStore.h"
#include "platform/linux/wayland/WaylandSeat.h"
#include "platform/linux/x11/X11Connection.h"

#include <QDBusConnection>

#include <memory>

namespace lorvane {

/// The world as this desktop offers it: one adapter for each port, in the order in which they need each
/// other.
struct DesktopAdapters {
    DesktopAdapters(const Foundation& foundation, const QDBusConnection& session);

    /// The ways of typing text, best first.
    [[nodiscard]] std::vector<FragmentPoster*> posters();
    /// Whether there is a display that something can be shown on; nothing here works without one.
    [[nodiscard]] bool hasDisplay() const;

    // Applications look at the accessibility switch when they start, so it comes first.
    AccessibilitySwitch accessibilitySwitch;
    /// The X server: the session's own or the one beside a compositor. Not alive where there is none.
    X11Connection display;
    /// Not alive in a session of an X server.
    WaylandConnection wayland;
    WaylandSeat seat;
    SessionChoice choice;
    AtspiBus accessibilityBus;
    std::unique_ptr<DesktopSession> session;
    AtspiFieldAccess fields;
    AtspiInsertion insertion;
    AtspiAccessibility accessibility;
    PulseConnection sound;
    PulseInputDevices inputs;
    PulseAudioEngineFactory engines;
    PulseChime chime;
    LoadedTakeCodec codec;
    QtHttpClient http;
    KeychainSecretStore secrets;
    NoIdentityCloud cloud;
    DiskStateFile historyFile;
    MacHistoryStore history;
    HistoryJournal journal;
};

} // namespace lorvane
