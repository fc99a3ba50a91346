// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/ibus/PreeditWatch.h"

#include "platform/linux/ibus/IbusValues.h"

namespace lorvane {

void PreeditWatch::start(IbusLink& link) {
    composing_.clear();
    withText_.clear();
    for (const auto& member :
         {QStringLiteral("UpdatePreeditText"), QStringLiteral("UpdatePreeditTextWithMode")}) {
        link.follow(ibus::contextInterface, member, this, SLOT(updated(QDBusMessage)));
    }
    link.follow(ibus::contextInterface, QStringLiteral("ShowPreeditText"), this, SLOT(shown(QDBusMessage)));
    link.follow(ibus::contextInterface, QStringLiteral("HidePreeditText"), this, SLOT(hidden(QDBusMessage)));
}

// Text, caret, whether it is shown; and how it is committed, which does not matter here.
void PreeditWatch::updated(const QDBusMessage& message) {
    const QVariantList arguments = message.arguments();
    const auto text = ibus::textOf(arguments.value(0));
    const bool hasText = text && !text->isEmpty();
    set(withText_, message.path(), hasText);
    set(composing_, message.path(), hasText && arguments.value(2).toBool());
}

void PreeditWatch::shown(const QDBusMessage& message) {
    set(composing_, message.path(), withText_.contains(message.path()));
}

void PreeditWatch::hidden(const QDBusMessage& message) { set(composing_, message.path(), false); }

void PreeditWatch::set(QSet<QString>& contexts, const QString& context, bool isIn) {
    if (isIn) {
        contexts.insert(context);
    } else {
        contexts.remove(context);
    }
}

} // namespace lorvane
