// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/atspi/AtspiInsertion.h"

namespace lorvane {

AtspiInsertion::AtspiInsertion(AtspiBus& bus, AtspiFieldAccess& fields, Clock& clock)
    : bus_(bus), fields_(fields), clock_(clock) {}

QCoro::Task<bool> AtspiInsertion::canPost(PostingTarget target, TaskScope scope) {
    const AccessibleRef field = accessibleOf(target.element);
    if (isAside(field)) {
        co_return false;
    }
    const auto askState = bus_.call(field, atspi::accessibleInterface, QStringLiteral("GetState"));
    const auto askRole = bus_.call(field, atspi::accessibleInterface, QStringLiteral("GetRole"));
    const auto askNames = bus_.call(field, atspi::accessibleInterface, QStringLiteral("GetInterfaces"));
    const auto stateReply = co_await askState.wait(scope);
    const auto roleReply = co_await askRole.wait(scope);
    const auto namesReply = co_await askNames.wait(scope);
    if (stateReply.timedOut()) {
        fields_.patience().putAside(field.bus, clock_.now());
    }
    const auto states = stateReply.states();
    const auto role = roleReply.number();
    const auto names = namesReply.names();
    if (!states || !role || !names || !states->has(atspi::stateEditable)) {
        co_return false;
    }
    const bool isPlain = *role != atspi::rolePassword && *role != atspi::roleTerminal;
    co_return isPlain && names->contains(atspi::editableTextInterface);
}

QCoro::Task<PostOutcome> AtspiInsertion::post(PostingTarget target, QString text, TaskScope scope) {
    const AccessibleRef field = accessibleOf(target.element);
    if (isAside(field)) {
        co_return PostOutcome::refused;
    }
    const Instant deadline = clock_.now() + AtspiBus::callBound;
    const auto place = co_await fields_.reader().placeOf(field, target.caret, deadline, scope);
    if (!place) {
        co_return PostOutcome::refused;
    }
    const auto outcome = co_await insert(target, *place, text, scope);
    co_return outcome;
}

QCoro::Task<PostOutcome> AtspiInsertion::insert(PostingTarget target, FieldReader::Place place, QString text,
                                                TaskScope scope) {
    const AccessibleRef field = accessibleOf(target.element);
    const QString toolkit = fields_.reader().toolkitName(field.bus);
    const QVariantList arguments{static_cast<int>(place.position), text,
                                 static_cast<int>(insertionLength(toolkit, text))};
    const auto inserting =
        bus_.call(field, atspi::editableTextInterface, QStringLiteral("InsertText"), arguments);
    const auto askCount = bus_.property(field, atspi::textInterface, QStringLiteral("CharacterCount"));
    const auto askCaret = bus_.property(field, atspi::textInterface, QStringLiteral("CaretOffset"));
    fields_.reader().expectBehind(field, place, target.caret, text);
    const auto inserted = co_await inserting.wait(scope);
    const auto count = co_await askCount.wait(scope);
    const auto caret = co_await askCaret.wait(scope);
    if (!inserted.timedOut() && inserted.number() != 1) {
        co_return PostOutcome::refused;
    }
    // GTK 4's single line leaves its caret where it was, in front of the text. An application that is too
    // slow to tell carries this out behind the insertion; where the caret follows by itself it changes
    // nothing.
    const bool isKnown = count.number() && caret.number();
    if (!isKnown || (*count.number() > place.count && *caret.number() == place.position)) {
        const QVariantList behind{static_cast<int>(place.position + lengthIn(place.unit, text))};
        const auto moving = bus_.call(field, atspi::textInterface, QStringLiteral("SetCaretOffset"), behind);
        Q_UNUSED(moving)
    }
    if (inserted.timedOut()) {
        fields_.patience().putAside(field.bus, clock_.now());
        co_return PostOutcome::unknown;
    }
    co_return PostOutcome::posted;
}

bool AtspiInsertion::isAside(const AccessibleRef& field) {
    return field.isNull() || fields_.patience().isAside(field.bus, clock_.now());
}

} // namespace lorvane
