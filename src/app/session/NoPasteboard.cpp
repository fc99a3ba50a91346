// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/session/NoPasteboard.h"

namespace lorvane {

QCoro::Task<PasteboardSnapshot> NoPasteboard::snapshot(TaskScope /*scope*/) {
    PasteboardSnapshot nothing;
    nothing.readable = false;
    co_return nothing;
}

QCoro::Task<std::optional<QString>> NoPasteboard::string(TaskScope /*scope*/) { co_return std::nullopt; }

void NoPasteboard::setString(const QString& /*text*/) {
    log_.diagLog(QStringLiteral(
        "[tirra-paste] this session has no clipboard for us: the text is in the history only"));
}

void NoPasteboard::lend(PasteboardLoan loan) { setString(loan.text); }

void NoPasteboard::restore(const PasteboardSnapshot& /*snapshot*/) {}

} // namespace lorvane
