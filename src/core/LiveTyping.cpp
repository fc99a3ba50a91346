// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/LiveTyping.h"

namespace lorvane {

QCoro::Task<void> LiveTyping::armTyping(TaskScope) {
    const auto front = workspace_.frontmostApplication();
    const QString name = front && !front->localizedName.isEmpty() ? front->localizedName : QString("?");
    log_.diagLog(QStringLiteral("[tirra-type] live typing is not built yet: the text for %1 will be pasted")
                     .arg(name));
    co_return;
}

QCoro::Task<void> LiveTyping::typeLive(QString, TaskScope) { co_return; }

QCoro::Task<SettleOutcome> LiveTyping::settleTyping(QString, TaskScope) {
    log_.diagLog(
        QStringLiteral("[tirra-type] settle: nothing was typed live (target gone, typed 0) — pasting"));
    co_return SettleOutcome::paste;
}

QCoro::Task<bool> LiveTyping::abandonTyping(QString, TaskScope) {
    co_return true; // nothing was typed
}

} // namespace lorvane
