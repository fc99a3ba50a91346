// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Clock.h"
#include "core/Phase.h"
#include "core/Published.h"
#include "core/ScreenPresence.h"
#include "input/Accessibility.h"

#include <functional>

namespace lorvane {

/// How long `done` and nearly every notice stay on screen.
inline constexpr Duration briefly = std::chrono::milliseconds(1400);

/// What the program publishes of a dictation: its phase, and what goes with it. Main thread.
class DictationStatus {
 public:
    DictationStatus(Clock& clock, ScreenPresence& screen, Accessibility& accessibility);
    DictationStatus(const DictationStatus&) = delete;
    DictationStatus& operator=(const DictationStatus&) = delete;

    /// The user interface reads and subscribes; `showPhase` is the only way to `done` and to a notice.
    Published<Phase> phase;
    /// The last known answer of `Accessibility::isTrusted`.
    Published<bool> permissionsGranted{false};
    /// The text of the last take that yielded text.
    Published<QString> lastText;
    /// From the start of a delivery with a target language until the take ends.
    Published<bool> isTranslating{false};

    /// Brings the pill to the front and goes back to idle after `hideAfter`, unless the phase is another by
    /// then.
    void showPhase(const Phase& shown, Duration hideAfter);
    void showNotice(const QString& text, NoticeSeverity severity, Duration hideAfter = briefly) {
        showPhase(Notice{text, severity}, hideAfter);
    }
    /// What is on screen stays until something replaces it.
    void cancelHide() { hide_.reset(); }
    void refreshPill() { screen_.refreshPill(phase.get()); }

    /// Asks anew and publishes the answer.
    bool recheckPermissions();
    /// Asks anew whenever the answer may have changed; `granted` is called when it became true.
    void watchPermissions(std::function<void()> granted);

 private:
    Clock& clock_;
    ScreenPresence& screen_;
    Accessibility& accessibility_;
    Handle hide_;
    Handle permissionWatch_;
};

} // namespace lorvane
