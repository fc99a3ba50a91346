// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/doctor/AccessibilityProbes.h"

#include "platform/linux/atspi/AtspiSurvey.h"
#include "platform/linux/atspi/ProgramKind.h"

#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusVariant>

namespace lorvane {

namespace {

constexpr Duration connectBound = std::chrono::seconds(2);
constexpr int answerMilliseconds = 2000;
constexpr Duration connectStep = std::chrono::milliseconds(10);

/// A boolean property of a service on the session bus; false when it cannot be had.
QCoro::Task<bool> flagOf(QDBusConnection session, QString service, QString path, QString interface,
                         QString name, TaskScope scope) {
    if (!session.isConnected()) {
        co_return false; // a call on it would never be answered, not even by an error
    }
    auto get = QDBusMessage::createMethodCall(
        service, path, QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Get"));
    get.setArguments({interface, name});
    const Completion<bool> answer;
    QDBusPendingCallWatcher watcher(session.asyncCall(get, answerMilliseconds));
    QObject::connect(&watcher, &QDBusPendingCallWatcher::finished, &watcher, [&watcher, answer] {
        const QDBusPendingReply<QDBusVariant> value = watcher;
        answer.complete(!value.isError() && value.value().variant().toBool());
    });
    const bool flag = co_await answer.wait(scope);
    co_return flag;
}

QCoro::Task<AccessibilityFacts> accessibilityFacts(AtspiBus* bus, Clock* clock, QDBusConnection session,
                                                   TaskScope scope) {
    const Instant end = clock->now() + connectBound;
    while (!bus->isConnected() && clock->now() < end) {
        co_await sleep(*clock, connectStep, scope);
    }
    AccessibilityFacts facts;
    facts.busAnswers = bus->isConnected();
    facts.isSwitchedOn =
        co_await flagOf(session, QStringLiteral("org.a11y.Bus"), QStringLiteral("/org/a11y/bus"),
                        QStringLiteral("org.a11y.Status"), QStringLiteral("IsEnabled"), scope);
    co_return facts;
}

QCoro::Task<std::vector<WindowFields>> windowFields(AtspiBus* bus, TaskScope scope) {
    AtspiSurvey survey(*bus);
    const auto shown = co_await survey.run(scope);
    std::vector<WindowFields> fields;
    for (const auto& application : shown) {
        WindowFields one;
        one.process = application.process;
        one.isSilent = application.silent;
        one.hasWebContent = application.hasWebContent;
        one.readable = application.readableFields;
        one.writable = application.writableFields;
        one.terminals = application.terminals;
        fields.push_back(one);
    }
    co_return fields;
}

WindowProgram programOf(ProcessId process) {
    switch (programKind(process)) {
    case ProgramKind::qt:
        return WindowProgram::qt;
    case ProgramKind::chromium:
        return WindowProgram::chromium;
    case ProgramKind::unknown:
        break;
    }
    return WindowProgram::unknown;
}

} // namespace

void addAccessibilityProbes(DoctorProbes& probes, AtspiBus& bus, Clock& clock,
                            const QDBusConnection& session) {
    probes.accessibility = [&bus, &clock, session](TaskScope scope) {
        return accessibilityFacts(&bus, &clock, session, scope);
    };
    probes.windowFields = [&bus](TaskScope scope) { return windowFields(&bus, scope); };
    probes.programOf = programOf;
}

void addTrayProbe(DoctorProbes& probes, const QDBusConnection& session) {
    probes.tray = [session](TaskScope scope) {
        return flagOf(session, QStringLiteral("org.kde.StatusNotifierWatcher"),
                      QStringLiteral("/StatusNotifierWatcher"),
                      QStringLiteral("org.kde.StatusNotifierWatcher"),
                      QStringLiteral("IsStatusNotifierHostRegistered"), scope);
    };
}

SessionKind sessionKind(const QString& type, const QString& display, const QString& waylandDisplay) {
    if (type == QLatin1String("wayland") || (type.isEmpty() && !waylandDisplay.isEmpty())) {
        return SessionKind::wayland;
    }
    return display.isEmpty() ? SessionKind::none : SessionKind::x11;
}

} // namespace lorvane
