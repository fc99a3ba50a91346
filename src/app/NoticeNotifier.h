// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Handle.h"
#include "core/DictationController.h"

#include <QDBusConnection>
#include <QObject>

namespace lorvane {

/// Shows each notice of the controller as a notification of the desktop, one at a time in the same place. A
/// desktop without a notification service shows nothing.
class NoticeNotifier : public QObject {
 public:
    NoticeNotifier(DictationController& controller, QDBusConnection bus);

 private:
    void show(const Phase& phase);

    QDBusConnection bus_;
    /// The notification on screen, which the next one replaces; 0 for none.
    quint32 shownId_ = 0;
    Handle subscription_;
};

} // namespace lorvane
