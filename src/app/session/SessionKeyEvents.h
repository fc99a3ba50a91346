// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "input/HoldRoadKeyEvents.h"

#include <QObject>

namespace lorvane {

/// The keys of a session whose window system shows none: the watched keys by the hold roads, wherever the
/// keyboard is; every key that goes to the program's own windows by those windows. Main thread.
class SessionKeyEvents final : public QObject, public KeyEvents {
 public:
    SessionKeyEvents(const Foundation& foundation, std::vector<HoldRoad*> roads);

    [[nodiscard]] Handle addGlobalMonitor(KeyEventKind kind,
                                          std::function<void(const KeyEvent&)> observer) override;
    /// A key that is seen both ways may be told twice.
    [[nodiscard]] Handle addLocalMonitor(KeyEventKind kind,
                                         std::function<bool(const KeyEvent&)> observer) override;

    [[nodiscard]] HoldRoadKeyEvents& roads() { return roads_; }
    bool eventFilter(QObject* watched, QEvent* event) override;

 private:
    Clock& clock_;
    HoldRoadKeyEvents roads_;
    KeyMonitorList own_;
};

} // namespace lorvane
