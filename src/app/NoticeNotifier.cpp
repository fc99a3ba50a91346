// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/NoticeNotifier.h"

namespace lorvane {

NoticeNotifier::NoticeNotifier(DictationController& controller, const QDBusConnection& bus)
    : notification_(bus) {
    subscription_ = controller.subscribePhase([this](const Phase& phase) {
        if (const auto* const notice = std::get_if<Notice>(&phase)) {
            notification_.show(notice->text);
        }
    });
}

} // namespace lorvane
