// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Task.h"
#include "input/Workspace.h"

#include <functional>
#include <type_traits>
#include <utility>

namespace lorvane {

/// Which keys paste in an application.
enum class PasteRoute {
    standard,        ///< Ctrl+V, or Shift+Insert where the layout has no v
    terminal,        ///< Ctrl+Shift+V, or Shift+Insert where no v can be had
    primaryTerminal, ///< Shift+Insert, which reads the selection of the middle mouse button
};

/// The route for an application, from the one table of terminals.
[[nodiscard]] PasteRoute pasteRouteFor(const RunningApplication& application);

enum class KeysOutcome {
    posted,
    notPosted, ///< nothing of them has gone out, and nothing will
    unknown,   ///< they may have gone out, or may do so yet: to post them again could paste twice
};

/// Posts the keys that paste. Main thread.
class PasteKeys {
 public:
    /// What one post of the keys is for.
    class Aim {
     public:
        template <typename Take>
        requires std::is_invocable_r_v<PasteRoute, Take&> Aim(
            Take take, std::function<bool()> hasEffect = [] { return true; })
            : take_(std::move(take)), hasEffect_(std::move(hasEffect)) {}

        /// Asked right before the keys go out, when nothing is waited for any more: whoever has the keyboard
        /// then gets them. Once for each try.
        [[nodiscard]] PasteRoute operator()() const { return take_(); }
        /// Whether the text has been asked for since the aim was taken.
        [[nodiscard]] bool hasEffect() const { return hasEffect_(); }

     private:
        std::function<PasteRoute()> take_;
        std::function<bool()> hasEffect_;
    };

    virtual ~PasteKeys() = default;
    /// Whether the keys for that route read the selection of the middle mouse button. Asked when the text is
    /// lent, before the keys: what they need besides the layout is made ready.
    [[nodiscard]] virtual bool readsPrimary(PasteRoute route) { return route == PasteRoute::primaryTerminal; }
    /// Waits at most 0.5 s for modifiers that the user still holds, lifts what is held then, takes aim and
    /// posts the chord. Not cut short by a cancellation when given a shielded scope.
    virtual QCoro::Task<KeysOutcome> post(Aim aim, TaskScope scope) = 0;
};

} // namespace lorvane
