// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/SettleTimes.h"
#include "app/session/DesktopSession.h"
#include "app/session/UncomposedPoster.h"
#include "base/Foundation.h"
#include "platform/linux/clipboard/X11Pasteboard.h"
#include "platform/linux/ibus/IbusPoster.h"
#include "platform/linux/x11/OwnWindowKeyFilter.h"
#include "platform/linux/x11/X11Capabilities.h"
#include "platform/linux/x11/X11EditingKeys.h"
#include "platform/linux/x11/X11ExtraKey.h"
#include "platform/linux/x11/X11KeyEvents.h"
#include "platform/linux/x11/X11KeyPoster.h"
#include "platform/linux/x11/X11PasteKeys.h"
#include "platform/linux/x11/X11Workspace.h"

#include <memory>

namespace lorvane {

/// A session of an X server. Without a display everything is there and does nothing.
class X11Session final : public DesktopSession {
 public:
    X11Session(const Foundation& foundation, X11Connection& display);

    [[nodiscard]] Workspace& workspace() override { return workspace_; }
    [[nodiscard]] KeyEvents& keyEvents() override { return keyEvents_; }
    [[nodiscard]] EditingKeys& editingKeys() override { return editingKeys_; }
    [[nodiscard]] PasteKeys& pasteKeys() override { return pasteKeys_; }
    [[nodiscard]] Pasteboard& pasteboard() override { return *pasteboard_; }
    [[nodiscard]] std::vector<FragmentPoster*> posters() override { return {&inputMethod_, &typedKeys_}; }
    [[nodiscard]] bool canPostKeys() override { return display_.isAlive() && capabilities_.canPostKeys(); }
    void watchOwnWindows() override;

 private:
    X11Connection& display_;
    X11Capabilities capabilities_;
    X11Workspace workspace_;
    X11KeyEvents keyEvents_;
    X11ExtraKey extraKey_;
    TypingLayout layout_;
    X11PasteKeys pasteKeys_;
    X11EditingKeys editingKeys_;
    SettleTimes settleTimes_;
    IbusPoster inputMethod_;
    X11KeyPoster keyPoster_;
    UncomposedPoster typedKeys_;
    std::unique_ptr<Pasteboard> pasteboard_;
    OwnWindowKeyFilter ownKeys_;
};

} // namespace lorvane
