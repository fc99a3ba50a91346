// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/atspi/AtspiSurvey.h"

#include <QCoreApplication>

namespace lorvane {

namespace {
/// A report may wait longer for an answer than a take.
constexpr Duration bound = std::chrono::milliseconds(400);

void enter(ShownApplication& into, AccessibleStates states, const QStringList& interfaces, qint64 role) {
    const bool isText = interfaces.contains(atspi::textInterface);
    into.hasWebContent = into.hasWebContent || role == static_cast<qint64>(atspi::roleDocumentWeb);
    if (role == static_cast<qint64>(atspi::roleTerminal)) {
        ++into.terminals;
    } else if (isText && states.has(atspi::stateEditable) && states.isSeen() &&
               role != static_cast<qint64>(atspi::rolePassword)) {
        ++into.readableFields;
        into.writableFields += interfaces.contains(atspi::editableTextInterface) ? 1 : 0;
    }
}
} // namespace

QCoro::Task<std::vector<ShownApplication>> AtspiSurvey::run(TaskScope scope) {
    std::vector<ShownApplication> found;
    const Objects applications = co_await bus_.applications(scope);
    for (const auto& application : applications) {
        const ProcessId process = co_await bus_.processOf(application.bus, scope);
        if (process == 0 || process == QCoreApplication::applicationPid()) {
            continue;
        }
        ShownApplication shown = co_await examine(application, scope);
        shown.process = process;
        found.push_back(std::move(shown));
    }
    co_return found;
}

QCoro::Task<ShownApplication> AtspiSurvey::examine(AccessibleRef application, TaskScope scope) {
    ShownApplication shown;
    const auto askName =
        bus_.property(application, atspi::accessibleInterface, QStringLiteral("Name"), bound);
    const auto askToolkit =
        bus_.property(application, atspi::applicationInterface, QStringLiteral("ToolkitName"), bound);
    const auto name = co_await askName.wait(scope);
    const auto toolkit = co_await askToolkit.wait(scope);
    shown.name = name.text().value_or(QString());
    shown.toolkit = toolkit.text().value_or(QString());
    shown.silent = name.timedOut();
    Objects level;
    level.push_back(application);
    int seen = 0;
    while (!level.empty() && !shown.silent && seen < mostObjects) {
        level = co_await childrenOf(std::move(level), &shown, scope);
        seen += static_cast<int>(level.size());
        co_await count(level, &shown, scope);
    }
    co_return shown;
}

QCoro::Task<void> AtspiSurvey::count(Objects objects, ShownApplication* into, TaskScope scope) {
    struct Asked {
        Completion<AtspiReply> states;
        Completion<AtspiReply> interfaces;
        Completion<AtspiReply> role;
    };
    std::vector<Asked> asked;
    for (const auto& object : objects) {
        Asked one;
        one.states = bus_.call(object, atspi::accessibleInterface, QStringLiteral("GetState"), {}, bound);
        one.interfaces =
            bus_.call(object, atspi::accessibleInterface, QStringLiteral("GetInterfaces"), {}, bound);
        one.role = bus_.call(object, atspi::accessibleInterface, QStringLiteral("GetRole"), {}, bound);
        asked.push_back(std::move(one));
    }
    for (const auto& one : asked) {
        const auto states = co_await one.states.wait(scope);
        const auto interfaces = co_await one.interfaces.wait(scope);
        const auto role = co_await one.role.wait(scope);
        into->silent = into->silent || states.timedOut();
        if (states.answered() && interfaces.answered() && role.answered()) {
            enter(*into, states.states().value_or(AccessibleStates()),
                  interfaces.names().value_or(QStringList()), role.number().value_or(0));
        }
    }
}

QCoro::Task<AtspiSurvey::Objects> AtspiSurvey::childrenOf(Objects parents, ShownApplication* into,
                                                          TaskScope scope) {
    std::vector<Completion<AtspiReply>> asked;
    for (const auto& parent : parents) {
        asked.push_back(
            bus_.call(parent, atspi::accessibleInterface, QStringLiteral("GetChildren"), {}, bound));
    }
    Objects children;
    for (const auto& one : asked) {
        const auto reply = co_await one.wait(scope);
        into->silent = into->silent || reply.timedOut();
        const auto found = reply.objects();
        if (found && children.size() < static_cast<std::size_t>(mostObjects)) {
            children.insert(children.end(), found->begin(), found->end());
        }
    }
    co_return children;
}

} // namespace lorvane
