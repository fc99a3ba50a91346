// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/DiagnosticLog.h"
#include "base/Signal.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QList>
#include <QMap>
#include <QObject>
#include <QString>

#include <cstdint>
#include <optional>

namespace lorvane {

/// A shortcut of ours, wherever the keyboard is.
struct GlobalShortcut {
    /// Unlike any other of ours.
    QString name;
    /// As the user sees it in the settings.
    QString label;
    /// Qt::Key values with modifiers; the first must be free, the others are taken when they are.
    QList<int> keys;
};

/// The global shortcuts of a KDE session (org.kde.KGlobalAccel on the session bus), where the compositor
/// itself serves them: on X11 a service of the same name does, which sees no modifier alone. A shortcut that
/// is taken by another is left to it. The service keeps shortcuts when their program dies: what an earlier
/// run left is let go when the first is taken, what this one leaves by the guard (ShortcutGuard). Main
/// thread; nothing waits for the bus, and the service is never started by a question.
class GlobalShortcuts final : public QObject {
    Q_OBJECT

 public:
    /// `ours`: the names of all shortcuts that any run may take.
    GlobalShortcuts(QDBusConnection session, DiagnosticLog& log, QStringList ours);
    ~GlobalShortcuts() override;
    GlobalShortcuts(const GlobalShortcuts&) = delete;
    GlobalShortcuts& operator=(const GlobalShortcuts&) = delete;

    /// The name under which our shortcuts stand in the user's settings.
    static const QString component;

    [[nodiscard]] bool isThere() const { return isThere_; }
    /// From now on until `letGo`; again by itself when the service comes back.
    void take(const GlobalShortcut& shortcut);
    void letGo(const QString& name);
    /// Who has the key of a shortcut that was refused ("KWin: Walk Through Windows"; empty when it did not
    /// say); absent when it was not refused.
    [[nodiscard]] std::optional<QString> refusalOf(const QString& name) const;

    /// The service has taken it.
    [[nodiscard]] bool isInForce(const QString& name) const;

    /// A shortcut's name, and whether its key went down. A held key is told again and again.
    [[nodiscard]] Handle onEdge(std::function<void(const QString& name, bool isDown)> observer) {
        return edge_.subscribe(std::move(observer));
    }
    /// Told when `isThere`, a refusal or what is in force has changed.
    [[nodiscard]] Handle onChange(std::function<void()> observer) {
        return changed_.subscribe(std::move(observer));
    }

 private Q_SLOTS:
    void onPressed(const QString& component, const QString& action, qlonglong time);
    void onReleased(const QString& component, const QString& action, qlonglong time);

 private:
    struct Taken {
        GlobalShortcut shortcut;
        /// Answers to earlier questions do not count.
        std::uint64_t serial = 0;
        std::optional<QString> refusedFor;
        bool isInForce = false;
    };
    using Answer = std::function<void(const QDBusMessage&)>;

    void followOwner(const QString& service);
    void askOwner(const QString& service);
    void ownerIs(const QString& service, const QString& owner);
    void request(const QString& name);
    void answered(const QString& name, std::uint64_t serial, const QDBusMessage& answer);
    void confirm(const QString& name);
    void refuse(const QString& name, const QString& holder);
    void unregister(const QString& name);
    void tidy();
    void ask(const QDBusMessage& question, Answer answer);
    [[nodiscard]] static QDBusMessage call(const QString& method);

    QDBusConnection session_;
    DiagnosticLog& log_;
    QStringList ours_;
    QMap<QString, QString> owners_;
    QMap<QString, std::uint64_t> ownerQuestions_;
    bool isThere_ = false;
    bool isTidy_ = false;
    std::uint64_t lastSerial_ = 0;
    QMap<QString, Taken> taken_;
    Signal<QString, bool> edge_;
    Signal<> changed_;
};

} // namespace lorvane
