// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/atspi/FocusTracker.h"

#include <algorithm>

namespace lorvane {

namespace {
constexpr qsizetype mostApplications = 256;
}

void FocusTracker::handle(const FocusEvent& event) {
    auto& application = applications_[event.source.bus];
    switch (event.kind) {
    case FocusEvent::Kind::focusGained:
        gain(application, event.source.path);
        break;
    case FocusEvent::Kind::focusLost:
        if (application.field == event.source.path) {
            application.field.reset();
        }
        break;
    case FocusEvent::Kind::windowActivated:
        application.activeWindow = event.source.path;
        break;
    case FocusEvent::Kind::windowDeactivated:
        // The late word of a window that another window of the same application has already followed says
        // nothing.
        if (application.activeWindow.isEmpty() || application.activeWindow == event.source.path) {
            application.activeWindow.clear();
            application.field.reset();
        }
        break;
    }
    dropEldest();
}

void FocusTracker::remember(const AccessibleRef& field) { gain(applications_[field.bus], field.path); }

void FocusTracker::dropFocus(const QString& bus) {
    if (const auto found = applications_.find(bus); found != applications_.end()) {
        found->field.reset();
    }
}

std::optional<AccessibleRef> FocusTracker::focusOf(const QString& bus) const {
    const auto found = applications_.constFind(bus);
    if (found == applications_.constEnd() || !found->field) {
        return std::nullopt;
    }
    return AccessibleRef{bus, *found->field};
}

QStringList FocusTracker::applications() const {
    QStringList names;
    for (auto it = applications_.constBegin(); it != applications_.constEnd(); ++it) {
        if (it->field) {
            names.append(it.key());
        }
    }
    std::sort(names.begin(), names.end(), [this](const QString& a, const QString& b) {
        return applications_.constFind(a)->gained > applications_.constFind(b)->gained;
    });
    return names;
}

void FocusTracker::gain(Application& application, const QString& path) {
    application.field = path;
    application.gained = ++lastGain_;
}

void FocusTracker::dropEldest() {
    if (applications_.size() <= mostApplications) {
        return;
    }
    const auto eldest = std::min_element(applications_.cbegin(), applications_.cend(),
                                         [](const auto& a, const auto& b) { return a.gained < b.gained; });
    applications_.erase(eldest);
}

} // namespace lorvane
