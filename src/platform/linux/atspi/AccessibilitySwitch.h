// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Signal.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QObject>

namespace lorvane {

/// The desktop's accessibility switch: `IsEnabled` of org.a11y.Status on the session bus. Programs look at it
/// when they start (Qt only then), so it is switched on as soon as this is made. Answered from what was last
/// heard; nothing waits. Main thread.
class AccessibilitySwitch : public QObject {
    Q_OBJECT

 public:
    explicit AccessibilitySwitch(QDBusConnection session);

    [[nodiscard]] bool isOn() const { return isOn_; }
    void switchOn();
    [[nodiscard]] Handle subscribe(std::function<void()> changed) {
        return changed_.subscribe(std::move(changed));
    }

 private Q_SLOTS:
    void propertiesChanged(const QDBusMessage& message);

 private:
    void ask();
    void learn(bool isOn);

    QDBusConnection session_;
    bool isOn_ = false;
    Signal<> changed_;
};

} // namespace lorvane
