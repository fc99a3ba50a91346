// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Foundation.h"
#include "base/Signal.h"
#include "input/Accessibility.h"
#include "platform/linux/atspi/AccessibilitySwitch.h"
#include "platform/linux/atspi/AtspiBus.h"

namespace lorvane {

/// Trusted: the accessibility bus answers, its switch is on, and keys can be posted. Main thread.
class AtspiAccessibility final : public Accessibility {
 public:
    /// `canPostKeys`: whether this session takes synthetic keys; asked each time. `session`: where
    /// notifications go.
    AtspiAccessibility(const Foundation& foundation, AtspiBus& bus, AccessibilitySwitch& accessibilitySwitch,
                       std::function<bool()> canPostKeys, QDBusConnection session);

    [[nodiscard]] bool isTrusted() const override;
    void openAccessibilitySettings() override;
    [[nodiscard]] Handle subscribe(std::function<void()> changed) override;

 private:
    [[nodiscard]] QString advice() const;
    void notify(const QString& title, const QString& text);

    Foundation foundation_;
    AtspiBus& bus_;
    AccessibilitySwitch& switch_;
    std::function<bool()> canPostKeys_;
    QDBusConnection session_;
    Signal<> changed_;
    Handle busWatch_;
    Handle switchWatch_;
};

} // namespace lorvane
