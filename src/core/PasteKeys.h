// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Task.h"
#include "input/Workspace.h"

namespace lorvane {

/// Which keys paste in an application.
enum class PasteRoute {
    standard,        ///< Ctrl+V, or Shift+Insert where the layout has no v
    terminal,        ///< Ctrl+Shift+V
    primaryTerminal, ///< Shift+Insert, which reads the selection of the middle mouse button
};

/// The route for an application, from the one table of terminals.
[[nodiscard]] PasteRoute pasteRouteFor(const RunningApplication& application);

/// Posts the keys that paste. Main thread.
class PasteKeys {
 public:
    virtual ~PasteKeys() = default;
    /// Waits at most 0.5 s for modifiers that the user still holds, lifts what is held then, posts the chord.
    /// False when the keys could not be made. Not cut short by a cancellation when given a shielded scope.
    virtual QCoro::Task<bool> post(PasteRoute route, TaskScope scope) = 0;
};

} // namespace lorvane
