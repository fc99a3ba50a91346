// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/FragmentPoster.h"
#include "input/FieldAccess.h"
#include "input/Workspace.h"

#include <QString>

#include <optional>
#include <vector>

namespace lorvane {

/// What is known of the typing of one attempt to deliver a take. Positions count UTF-16 units. As long as
/// the field is armed and `n` units were typed, its caret is `typedStart + n` and its length
/// `typedStart + n + typingSlack`.
struct TypingAttempt {
    /// The text that has reached the field.
    QString typedLive;
    /// The application that is typed into; present means armed.
    std::optional<ProcessId> typingTarget;
    /// The caret when armed.
    std::optional<qint64> typedStart;
    /// The field that is typed into.
    std::optional<FieldElement> typingElement;
    /// Blank units after the caret when armed; they stay after the typed text.
    qint64 typingSlack = 0;
    /// Typing stopped but what is typed stays; the rest is to be pasted.
    bool typingHalted = false;
    /// Text in the field could not be taken back.
    bool typingStuck = false;

    /// As it was when armed.
    RunningApplication application;
    /// The field takes line feeds and tabs as text.
    bool multiLine = false;
    /// The ways of posting that are left for this field, best first; absent until the first fragment.
    std::optional<std::vector<FragmentPoster*>> ways;

    /// Nothing may be typed, and nothing typed is known, from here on.
    void disarm() {
        typedLive.clear();
        typingTarget.reset();
        typedStart.reset();
        typingElement.reset();
    }
};

} // namespace lorvane
