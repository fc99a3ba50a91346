// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/atspi/ActiveWindow.h"

namespace lorvane {

namespace {

constexpr qsizetype mostRemembered = 8;

} // namespace

bool ActiveWindow::handle(const FocusEvent& event) {
    switch (event.kind) {
    case FocusEvent::Kind::windowActivated:
        return bringToFront(event.source);
    case FocusEvent::Kind::windowDeactivated:
        if (window_ != event.source) {
            return false;
        }
        window_.reset();
        return true;
    case FocusEvent::Kind::focusGained: // a field has it while its window was never active
    case FocusEvent::Kind::focusLost:
        return false;
    }
    return false;
}

void ActiveWindow::remember(const AccessibleRef& window) { bringToFront(window); }

bool ActiveWindow::forget(const QString& bus) {
    before_.removeIf([&bus](const AccessibleRef& window) { return window.bus == bus; });
    if (!window_ || window_->bus != bus) {
        return false;
    }
    window_.reset();
    return true;
}

bool ActiveWindow::bringToFront(const AccessibleRef& window) {
    if (window_ == window) {
        return false;
    }
    window_ = window;
    before_.removeAll(window);
    before_.prepend(window);
    before_.resize(std::min(before_.size(), mostRemembered));
    return true;
}

} // namespace lorvane
