// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/session/SessionFacts.h"

namespace lorvane {

namespace {

/// Windows of the X server are placed where they should be, stay above what fills the screen and never get
/// the focus, under every compositor; a toolkit's own Wayland windows do none of this.
QtPlatform platformFor(const SessionFacts& facts) {
    if (facts.hasX) {
        return QtPlatform::xcb;
    }
    if (!facts.hasCompositor) {
        return QtPlatform::none;
    }
    return facts.hasWaylandPlugin ? QtPlatform::wayland : QtPlatform::offscreen;
}

QtPlatform chosenPlatform(const SessionFacts& facts) {
    const QString& chosen = facts.chosenQtPlatform;
    if (chosen.startsWith(QLatin1String("wayland")) && facts.hasCompositor && facts.hasWaylandPlugin) {
        return QtPlatform::wayland;
    }
    if (chosen == QLatin1String("offscreen") && facts.hasCompositor) {
        return QtPlatform::offscreen;
    }
    return platformFor(facts);
}

PillRoad pillFor(const SessionFacts& facts, QtPlatform platform) {
    if (platform == QtPlatform::xcb) {
        return PillRoad::xWindow;
    }
    const bool hasLayers = facts.offers("zwlr_layer_shell_v1") && facts.offers("wl_shm");
    return hasLayers ? PillRoad::layerShell : PillRoad::none;
}

ClipboardRoad clipboardFor(const SessionFacts& facts) {
    const bool hasControl =
        facts.offers("ext_data_control_manager_v1") || facts.offers("zwlr_data_control_manager_v1");
    if (facts.hasCompositor && hasControl && facts.offers("wl_seat")) {
        return ClipboardRoad::dataControl;
    }
    return facts.hasX ? ClipboardRoad::xSelection : ClipboardRoad::none;
}

} // namespace

SessionChoice chooseSession(const SessionFacts& facts) {
    SessionChoice choice;
    choice.windowing = facts.hasCompositor ? Windowing::wayland
                       : facts.hasX        ? Windowing::x11
                                           : Windowing::none;
    choice.platform = chosenPlatform(facts);
    choice.pill = pillFor(facts, choice.platform);
    choice.clipboard = clipboardFor(facts);
    return choice;
}

} // namespace lorvane
