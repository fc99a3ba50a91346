// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/setup/SetupCommand.h"

#include "app/Stores.h"
#include "app/setup/DiskSetupWorld.h"
#include "app/setup/SetupProbe.h"

#include <QDir>
#include <QTextStream>

#include <cstdio>

namespace lorvane {

namespace {

QString journalOf(SetupTopic topic) {
    const QString state =
        qEnvironmentVariable("XDG_STATE_HOME", QDir::homePath() + QStringLiteral("/.local/state"));
    return state + QStringLiteral("/Tirra/setup-") +
           (topic == SetupTopic::hold ? QStringLiteral("hold.json") : QStringLiteral("typing.json"));
}

void print(const QString& text) { std::puts(qUtf8Printable(text)); }

QString ask(const QString& question) {
    std::fputs(qUtf8Printable(question), stdout);
    std::fflush(stdout);
    QTextStream input(stdin);
    return input.readLine();
}

} // namespace

int runSetup(const SetupRequest& request, bool keyDevices) {
    Stores stores;
    const QDBusConnection session = QDBusConnection::sessionBus();
    SetupFacts facts = probeSetup(session);
    facts.keyDevices = keyDevices;
    DiskSetupWorld world(stores.foundation(), session);
    SetupRunner runner(world, journalOf(request.topic));
    return runSetupDialogue(request, facts, runner, {print, ask}, stores.foundation().words);
}

} // namespace lorvane
