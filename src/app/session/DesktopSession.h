// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/EditingKeys.h"
#include "core/FragmentPoster.h"
#include "core/PasteKeys.h"
#include "core/Pasteboard.h"
#include "input/KeyEvents.h"
#include "input/Workspace.h"

#include <vector>

namespace lorvane {

/// What the window system of the session decides: which keys are seen, who is in front, how text and keys get
/// there, whose clipboard it is. One for the life of the process. Main thread.
class DesktopSession {
 public:
    virtual ~DesktopSession() = default;

    [[nodiscard]] virtual Workspace& workspace() = 0;
    [[nodiscard]] virtual KeyEvents& keyEvents() = 0;
    [[nodiscard]] virtual EditingKeys& editingKeys() = 0;
    [[nodiscard]] virtual PasteKeys& pasteKeys() = 0;
    [[nodiscard]] virtual Pasteboard& pasteboard() = 0;
    /// The ways of typing text that come after the insertion through accessibility, best first.
    [[nodiscard]] virtual std::vector<FragmentPoster*> posters() = 0;
    /// Whether any key can be posted now.
    [[nodiscard]] virtual bool canPostKeys() = 0;
    /// The program's own windows are there from now on, and their keys have to be looked at.
    virtual void watchOwnWindows() = 0;
};

} // namespace lorvane
