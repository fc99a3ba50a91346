// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/CommandLine.h"
#include "app/ControlClient.h"
#include "app/DoctorCommand.h"
#include "app/Program.h"

#include <QCoreApplication>

#include <cstdio>

namespace {

constexpr int wrongCall = 2;

int perform(const lorvane::Command& command) {
    using Verb = lorvane::Command::Verb;
    switch (command.verb) {
    case Verb::help:
        std::fputs(qUtf8Printable(lorvane::usageText()), stdout);
        return 0;
    case Verb::version:
        std::printf("lorvane %s\n", LORVANE_VERSION);
        return 0;
    case Verb::run:
        return lorvane::runProgram();
    case Verb::doctor:
        return lorvane::runDoctor(command.json);
    default:
        return lorvane::sendCommand(command);
    }
}

} // namespace

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("lorvane"));
    QCoreApplication::setApplicationVersion(QStringLiteral(LORVANE_VERSION));
    QString problem;
    const auto command = lorvane::parseCommand(QCoreApplication::arguments().mid(1), problem);
    if (!command) {
        std::fprintf(stderr, "lorvane: %s\n\n%s", qUtf8Printable(problem),
                     qUtf8Printable(lorvane::usageText()));
        return wrongCall;
    }
    return perform(*command);
}
