// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/SettleTimes.h"
#include "app/session/ApplicationNaming.h"
#include "app/session/CommonSession.h"
#include "app/session/DesktopSession.h"
#include "app/session/GnomeSession.h"
#include "app/session/KdeSession.h"
#include "app/session/SessionFacts.h"
#include "app/session/SessionKeyEvents.h"
#include "app/session/SessionKeys.h"
#include "app/session/SessionWorkspace.h"
#include "app/session/WindowWorkspace.h"
#include "app/session/WlrootsSession.h"
#include "platform/linux/atspi/AtspiWorkspace.h"
#include "platform/linux/x11/X11EditingKeys.h"
#include "platform/linux/x11/X11KeyPoster.h"
#include "platform/linux/x11/X11PasteKeys.h"
#include "platform/linux/x11/X11Workspace.h"

#include <memory>

namespace lorvane {

/// A session of a Wayland compositor, with or without an X server beside it. The families' roads are taken
/// together, each when it is open: what the compositor, the bus and the environment offer decides, not the
/// desktop's name.
class WaylandSession final : public DesktopSession {
 public:
    /// `bus`: the accessibility bus.
    WaylandSession(const SessionParts& parts, AtspiBus& bus, ClipboardRoad clipboard);

    [[nodiscard]] Workspace& workspace() override { return workspace_; }
    [[nodiscard]] KeyEvents& keyEvents() override { return keyEvents_; }
    [[nodiscard]] EditingKeys& editingKeys() override { return editingKeys_; }
    [[nodiscard]] PasteKeys& pasteKeys() override { return pasteKeys_; }
    [[nodiscard]] Pasteboard& pasteboard() override { return *pasteboard_; }
    [[nodiscard]] std::vector<FragmentPoster*> posters() override;
    [[nodiscard]] bool canPostKeys() override;
    void watchOwnWindows() override;

    /// Every road of every family, for a report.
    [[nodiscard]] const SessionPorts& roads() const { return roads_; }

 private:
    [[nodiscard]] bool isXInFront() const { return xWorkspace_.frontmostApplication().has_value(); }
    [[nodiscard]] std::optional<WindowIdentity> activeWindow() const;
    [[nodiscard]] SessionPorts collect();
    void gatePosters();
    void openPasteboard(const SessionParts& parts, ClipboardRoad clipboard);

    X11Connection& display_;
    WaylandConnection& wayland_;
    X11Workspace xWorkspace_;
    ApplicationNaming naming_;
    AtspiWorkspace atspiWorkspace_;
    WindowWorkspace windowWorkspace_;
    SessionWorkspace workspace_;
    WlrootsSession wlroots_;
    KdeSession kde_;
    GnomeSession gnome_;
    CommonSession common_;
    SessionPorts roads_;
    SessionKeyEvents keyEvents_;
    X11EditingKeys xEditingKeys_;
    SessionEditingKeys editingKeys_;
    TypingLayout xLayout_;
    X11PasteKeys xPasteKeys_;
    SessionPasteKeys pasteKeys_;
    SettleTimes settleTimes_;
    X11KeyPoster xKeyPoster_;
    std::vector<std::unique_ptr<GatedPoster>> posters_;
    std::unique_ptr<Pasteboard> pasteboard_;
};

} // namespace lorvane
