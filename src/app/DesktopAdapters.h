// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "api/IdentityCloud.h"
#include "app/HistoryJournal.h"
#include "app/LoadedTakeCodec.h"
#include "app/SettleTimes.h"
#include "base/Foundation.h"
#include "platform/linux/atspi/AccessibilitySwitch.h"
#include "platform/linux/atspi/AtspiAccessibility.h"
#include "platform/linux/atspi/AtspiBus.h"
#include "platform/linux/atspi/AtspiFieldAccess.h"
#include "platform/linux/atspi/AtspiInsertion.h"
#include "platform/linux/clipboard/X11Pasteboard.h"
#include "platform/linux/desktop/DiskStateFile.h"
#include "platform/linux/desktop/QtHttpClient.h"
#include "platform/linux/pulse/PulseAudioEngineFactory.h"
#include "platform/linux/pulse/PulseChime.h"
#include "platform/linux/pulse/PulseConnection.h"
#include "platform/linux/pulse/PulseInputDevices.h"
#include "platform/linux/secrets/KeychainSecretStore.h"
#include "platform/linux/x11/X11Capabilities.h"
#include "platform/linux/x11/X11EditingKeys.h"
#include "platform/linux/x11/X11ExtraKey.h"
#include "platform/linux/x11/X11KeyEvents.h"
#include "platform/linux/x11/X11KeyPoster.h"
#include "platform/linux/x11/X11PasteKeys.h"
#include "platform/linux/x11/X11Workspace.h"

#include <QDBusConnection>

#include <memory>

namespace lorvane {

/// The world as this desktop offers it: one adapter for each port, in the order in which they need each
/// other.
struct DesktopAdapters {
    DesktopAdapters(const Foundation& foundation, const QDBusConnection& session);

    /// The ways of typing text, best first.
    [[nodiscard]] std::vector<FragmentPoster*> posters() { return {&insertion, &keyPoster}; }
    /// Whether there is an X display at all; nothing here works without one.
    [[nodiscard]] bool hasDisplay() const { return display.isAlive() && pasteboard != nullptr; }

    // Applications look at the accessibility switch when they start, so it comes first.
    AccessibilitySwitch accessibilitySwitch;
    X11Connection display;
    X11Capabilities capabilities;
    X11Workspace workspace;
    X11KeyEvents keyEvents;
    X11ExtraKey extraKey;
    X11PasteKeys pasteKeys;
    X11EditingKeys editingKeys;
    SettleTimes settleTimes;
    X11KeyPoster keyPoster;
    std::unique_ptr<X11Pasteboard> pasteboard;
    AtspiBus accessibilityBus;
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
