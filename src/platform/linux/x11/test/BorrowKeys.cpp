// SPDX-License-Identifier: GPL-3.0-or-later
// Borrows keys for the text that it is given, says so and waits to be killed.
#include "platform/linux/desktop/QtClock.h"
#include "platform/linux/x11/X11KeyPoster.h"

#include <QCoreApplication>

#include <cstdio>

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    lorvane::QtClock clock;
    lorvane::DiagnosticLog log(clock, std::nullopt, [](const QString&) {});
    lorvane::X11Connection connection(log);
    lorvane::TypingLayout layout(connection);
    lorvane::X11KeyPoster poster(connection, clock, layout, [](const lorvane::RunningApplication&) {
        return lorvane::Duration::zero();
    });
    const lorvane::PostingTarget target{{}, lorvane::FieldElement(QString()), 0};
    const auto text = QString::fromUtf8(argv[1]);
    const auto task = lorvane::startTask([&](lorvane::TaskScope scope) -> QCoro::Task<void> {
        (void)co_await poster.post(target, text, scope);
        connection.sync();
        std::puts("borrowed");
        std::fflush(stdout);
    });
    return QCoreApplication::exec();
}
