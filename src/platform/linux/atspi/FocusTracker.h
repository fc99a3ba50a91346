// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/linux/atspi/AccessibleRef.h"

#include <QHash>
#include <QStringList>

#include <optional>

namespace lorvane {

/// What an application says of its focus. A window becomes active by a window event or by its state.
struct FocusEvent {
    enum class Kind { focusGained, focusLost, windowActivated, windowDeactivated };
    Kind kind = Kind::focusGained;
    AccessibleRef source;
};

/// Which field of each application has, or had last, the keyboard; a pure value over the events.
///
/// Each application is kept by itself, since the order of events of two applications is not fixed ("the old
/// one lost it" may come 100 ms after "the new one gained it"): which application counts is for the window
/// manager to say. Within one, the last that gained the focus has it, and losing it is believed only of the
/// one that has it.
class FocusTracker {
 public:
    void handle(const FocusEvent& event);
    /// A field that was found without an event.
    void remember(const AccessibleRef& field);
    /// The field turned out not to have the focus any more.
    void dropFocus(const QString& bus);
    /// The application is gone.
    void forget(const QString& bus) { applications_.remove(bus); }

    [[nodiscard]] std::optional<AccessibleRef> focusOf(const QString& bus) const;
    /// Every application with a focus, the one that gained it last first.
    [[nodiscard]] QStringList applications() const;

 private:
    struct Application {
        std::optional<QString> field;
        QString activeWindow;
        std::uint64_t gained = 0;
    };
    void gain(Application& application, const QString& path);
    void dropEldest();

    QHash<QString, Application> applications_;
    std::uint64_t lastGain_ = 0;
};

} // namespace lorvane
