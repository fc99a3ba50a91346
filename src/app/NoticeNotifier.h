// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/Notification.h"
#include "base/Handle.h"
#include "core/DictationController.h"

namespace lorvane {

/// Shows each notice of the controller as a notification of the desktop.
class NoticeNotifier {
 public:
    NoticeNotifier(DictationController& controller, const QDBusConnection& bus);

 private:
    Notification notification_;
    Handle subscription_;
};

} // namespace lorvane
