// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/linux/ibus/IbusLink.h"

#include <QDBusMessage>
#include <QObject>
#include <QSet>

namespace lorvane {

/// Whether the user is composing with an input method, as the daemon tells the applications. Of the text
/// nothing is kept. Main thread.
class PreeditWatch final : public QObject {
    Q_OBJECT

 public:
    /// Begins anew, on a connection that is there.
    void start(IbusLink& link);
    [[nodiscard]] bool isComposingIn(const QString& context) const { return composing_.contains(context); }

 private Q_SLOTS:
    void updated(const QDBusMessage& message);
    void shown(const QDBusMessage& message);
    void hidden(const QDBusMessage& message);

 private:
    void set(QSet<QString>& contexts, const QString& context, bool isIn);

    /// Paths of input contexts.
    QSet<QString> composing_;
    QSet<QString> withText_;
};

} // namespace lorvane
