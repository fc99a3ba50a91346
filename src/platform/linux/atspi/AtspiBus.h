// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Clock.h"
#include "base/Signal.h"
#include "base/Task.h"
#include "input/Workspace.h"
#include "platform/linux/atspi/AtspiReply.h"
#include "platform/linux/atspi/FocusTracker.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QObject>

namespace lorvane {

/// The text of a watched application changed.
struct TextChange {
    AccessibleRef source;
    bool inserted = false;
    qint64 characters = 0;
    QString text;
};

/// The connection to the accessibility bus: calls to applications, each with its own bound, and their events.
/// Nothing here ever waits: a call is sent and its answer comes as a Completion, so that a hung application
/// holds up nobody and our own windows may be asked like any others. Answers and events come in the order in
/// which an application sent them. Connects again by itself when the bus goes away. Main thread.
class AtspiBus : public QObject {
    Q_OBJECT

 public:
    /// What a call may take at most where nothing else is said.
    static constexpr Duration callBound = std::chrono::milliseconds(150);

    /// `session`: where the accessibility bus's address is asked for. Connecting begins at once.
    AtspiBus(Clock& clock, QDBusConnection session);
    ~AtspiBus() override;

    [[nodiscard]] bool isConnected() const { return connected_; }
    /// Told after the bus was reached or lost.
    [[nodiscard]] Handle subscribeConnection(std::function<void()> changed) {
        return connectionChanged_.subscribe(std::move(changed));
    }
    [[nodiscard]] Handle subscribeFocus(std::function<void(const FocusEvent&)> observer) {
        return focusEvents_.subscribe(std::move(observer));
    }
    /// Told the bus name of each application that has left.
    [[nodiscard]] Handle subscribeGone(std::function<void(const QString&)> observer) {
        return gone_.subscribe(std::move(observer));
    }
    /// The text events of one application (they cost it work, so no others are asked for). One at a time: end
    /// the previous watch first, and each before the bus.
    [[nodiscard]] Handle watchText(const QString& bus, std::function<void(const TextChange&)> observer);

    [[nodiscard]] Completion<AtspiReply> call(const AccessibleRef& object, const QString& interface,
                                              const QString& member, const QVariantList& arguments = {},
                                              Duration bound = callBound);
    [[nodiscard]] Completion<AtspiReply> property(const AccessibleRef& object, const QString& interface,
                                                  const QString& name, Duration bound = callBound);
    /// The process behind a bus name, answered by the bus itself; 0 when there is none.
    QCoro::Task<ProcessId> processOf(QString bus, TaskScope scope);
    /// The same, as far as it is known already; 0 otherwise.
    [[nodiscard]] ProcessId knownProcessOf(const QString& bus) const { return processes_.value(bus); }
    /// The root object of every application that shows itself.
    QCoro::Task<std::vector<AccessibleRef>> applications(TaskScope scope);

 private Q_SLOTS:
    void stateChanged(const QDBusMessage& message);
    void windowChanged(const QDBusMessage& message);
    void textChanged(const QDBusMessage& message);
    void nameOwnerChanged(const QDBusMessage& message);
    void disconnected();

 private:
    void askForAddress();
    void open(const QString& address);
    void close();
    void retryLater();
    void follow(const QString& interface, const QString& member, const QStringList& match, const char* slot);
    void registerEvents();
    void registerEvent(const QString& event, const QString& bus);
    void learnProcess(const QString& bus);
    [[nodiscard]] Completion<AtspiReply> send(const QDBusMessage& message, Duration bound);

    Clock& clock_;
    QDBusConnection session_;
    QString connectionName_;
    QDBusConnection connection_;
    bool connected_ = false;
    Duration retryDelay_;
    Handle retry_;
    QHash<QString, ProcessId> processes_;
    Signal<> connectionChanged_;
    Signal<FocusEvent> focusEvents_;
    Signal<TextChange> textEvents_;
    Signal<QString> gone_;
};

} // namespace lorvane
