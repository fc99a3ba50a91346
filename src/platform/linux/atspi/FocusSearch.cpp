// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/atspi/FocusSearch.h"

#include <algorithm>

namespace lorvane {

FocusSearch::FocusSearch(AtspiBus& bus, Clock& clock, PatienceList& patience)
    : bus_(bus), clock_(clock), patience_(patience) {}

QCoro::Task<std::optional<FoundFocus>> FocusSearch::find(ProcessId process, Instant deadline,
                                                         TaskScope scope) {
    const Objects applications = co_await bus_.applications(scope);
    for (const auto& application : applications) {
        const ProcessId owner = co_await bus_.processOf(application.bus, scope);
        if (owner != process || patience_.isAside(application.bus, clock_.now())) {
            continue;
        }
        const auto found = co_await findWithin(application, deadline, scope);
        if (found) {
            co_return found;
        }
    }
    co_return std::nullopt;
}

QCoro::Task<std::optional<FoundFocus>> FocusSearch::findWithin(AccessibleRef application, Instant deadline,
                                                               TaskScope scope) {
    std::optional<FoundFocus> focused;
    std::size_t seen = 0;
    bool areWindows = true;
    Objects level;
    level.push_back(application);
    while (!level.empty() && seen < mostObjects && clock_.now() < deadline) {
        Objects children = co_await childrenOf(std::move(level), deadline, scope);
        seen += children.size();
        Level found = co_await examine(std::move(children), areWindows, deadline, scope);
        areWindows = false;
        if (found.focused) {
            focused = found.focused;
            // Inside a field Qt says "focused" of the field's own parts too. What is no text is no proof: Qt
            // says it of the tab in front, beside the field that has the keyboard.
            if (focused->isEditable) {
                break;
            }
        }
        level = std::move(found.showing);
    }
    co_return focused;
}

QCoro::Task<FocusSearch::Objects> FocusSearch::childrenOf(Objects parents, Instant deadline,
                                                          TaskScope scope) {
    std::vector<Completion<AtspiReply>> asked;
    for (const auto& parent : parents) {
        asked.push_back(
            bus_.call(parent, atspi::accessibleInterface, QStringLiteral("GetChildren"), {}, left(deadline)));
    }
    Objects children;
    for (std::size_t i = 0; i < asked.size(); ++i) {
        const auto reply = co_await asked[i].wait(scope);
        if (reply.timedOut()) {
            patience_.putAside(parents[i].bus, clock_.now());
        }
        const auto found = reply.objects();
        if (found && children.size() < mostObjects) {
            children.insert(children.end(), found->begin(), found->end());
        }
    }
    co_return children;
}

QCoro::Task<FocusSearch::Level> FocusSearch::examine(Objects objects, bool areWindows, Instant deadline,
                                                     TaskScope scope) {
    std::vector<Completion<AtspiReply>> asked;
    for (const auto& object : objects) {
        asked.push_back(
            bus_.call(object, atspi::accessibleInterface, QStringLiteral("GetState"), {}, left(deadline)));
    }
    Level level;
    for (std::size_t i = 0; i < asked.size(); ++i) {
        const auto reply = co_await asked[i].wait(scope);
        const auto states = reply.states();
        if (!states || !(areWindows ? states->has(atspi::stateActive) : states->isSeen())) {
            continue;
        }
        level.showing.push_back(objects[i]);
        const bool isSure = level.focused && level.focused->isEditable;
        if (states->has(atspi::stateFocused) && !isSure) {
            level.focused = FoundFocus{objects[i], states->has(atspi::stateEditable)};
        }
    }
    co_return level;
}

Duration FocusSearch::left(Instant deadline) const {
    return std::clamp(deadline - clock_.now(), Duration::zero(), AtspiBus::callBound);
}

} // namespace lorvane
