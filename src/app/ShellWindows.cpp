// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/ShellWindows.h"

#include "base/PreferenceCatalogue.h"

namespace lorvane {

void ShellWindows::openHomeWindow() {
    if (!rules_.open(WindowKind::home)) {
        callbacks_.tell(foundation_.words.text("The window cannot be opened; the log says why."));
    }
}

void ShellWindows::presentOnboarding() {
    rules_.setFirstRunActive(true);
    if (rules_.open(WindowKind::firstRun)) {
        return;
    }
    firstRun_ = foundation_.clock.after(Duration::zero(), [this] {
        foundation_.preferences.set(preference::onboarded, true);
        onFirstRunOver();
    });
}

void ShellWindows::closeOnboarding() {
    rules_.setFirstRunActive(false);
    rules_.close(WindowKind::firstRun);
}

void ShellWindows::openFeedback(const QString& context) {
    if (!rules_.open(WindowKind::feedback, context)) {
        callbacks_.tell(foundation_.words.text("Feedback cannot be sent from here yet."));
    }
}

void ShellWindows::openWhatsNew() {
    callbacks_.tell(foundation_.words.text("There is no list of changes to show yet."));
}

} // namespace lorvane
