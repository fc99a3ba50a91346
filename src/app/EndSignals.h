// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QSocketNotifier>

#include <functional>
#include <memory>

namespace lorvane {

/// Turns SIGTERM, SIGINT and SIGHUP into a call on the main thread. One at a time in a process.
class EndSignals {
 public:
    explicit EndSignals(std::function<void()> end);
    ~EndSignals();
    EndSignals(const EndSignals&) = delete;
    EndSignals& operator=(const EndSignals&) = delete;

 private:
    int readEnd_ = -1;
    int writeEnd_ = -1;
    std::unique_ptr<QSocketNotifier> notifier_;
};

} // namespace lorvane
