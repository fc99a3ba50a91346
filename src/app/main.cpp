// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/Application.h"
#include "app/CommandLine.h"
#include "app/ControlClient.h"
#include "app/DoctorCommand.h"
#include "app/Program.h"
#include "app/setup/SetupCommand.h"

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
    case Verb::setup:
        return lorvane::runSetup(command.setup, command.keyDevices);
    default:
        return lorvane::sendCommand(command);
    }
}

} // namespace

int main(int argc, char** argv) {
    QString problem;
    const auto command = lorvane::parseCommand(lorvane::argumentsOf(argc, argv), problem);
    // Only the program that stays needs windows; the commands stay light.
    const auto application = command && command->verb == lorvane::Command::Verb::run
                                 ? lorvane::makeProgramApplication(argc, argv)
                                 : std::make_unique<QCoreApplication>(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("lorvane"));
    QCoreApplication::setApplicationVersion(QStringLiteral(LORVANE_VERSION));
    if (!command) {
        std::fprintf(stderr, "lorvane: %s\n\n%s", qUtf8Printable(problem),
                     qUtf8Printable(lorvane::usageText()));
        return wrongCall;
    }
    return perform(*command);
}
