// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/session/XWaylandPasteboard.h"

namespace lorvane {

std::unique_ptr<XWaylandPasteboard> XWaylandPasteboard::open(Clock& clock, const Workspace& ofX) {
    auto inner = X11Pasteboard::open(clock);
    return inner ? std::unique_ptr<XWaylandPasteboard>(new XWaylandPasteboard(std::move(inner), ofX))
                 : nullptr;
}

void XWaylandPasteboard::lend(PasteboardLoan loan) {
    const auto front = ofX_.frontmostApplication();
    if (front && front->processId == loan.target) {
        inner_->lend(std::move(loan));
    } else {
        inner_->lendToAll(std::move(loan));
    }
}

} // namespace lorvane
