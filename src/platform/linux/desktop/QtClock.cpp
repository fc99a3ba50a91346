// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/desktop/QtClock.h"

#include <QCoreApplication>
#include <QTimer>

#include <memory>

namespace lorvane {

namespace {

Handle startTimer(Duration interval, bool once, std::function<void()> work) {
    const auto timer = std::make_shared<QTimer>();
    timer->setTimerType(Qt::PreciseTimer);
    timer->setSingleShot(once);
    QObject::connect(timer.get(), &QTimer::timeout, timer.get(), std::move(work));
    timer->start(std::chrono::ceil<std::chrono::milliseconds>(interval));
    return Handle([timer] {
        timer->stop();
        // The work may be what ends the handle: the timer and its closure live until it has returned.
        if (auto* const application = QCoreApplication::instance()) {
            QMetaObject::invokeMethod(
                application, [timer] {}, Qt::QueuedConnection);
        }
    });
}

} // namespace

Instant QtClock::now() const { return std::chrono::steady_clock::now(); }

WallTime QtClock::wallNow() const { return std::chrono::system_clock::now(); }

Handle QtClock::after(Duration delay, std::function<void()> work) {
    return startTimer(delay, true, std::move(work));
}

Handle QtClock::every(Duration period, std::function<void()> work) {
    return startTimer(period, false, std::move(work));
}

} // namespace lorvane
